#include "desk.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalMapper>
#include <QVBoxLayout>

#include "applicationsetup.h"
#include "creation_form.h"
#include "hub_utilities.h"
#include "label_button.h"
#include "network_list.h"
#include "network_names.h"
#include "open_url.h"
#include "registered_networks.h"
#include "screen_pieces.h"
#include "server_processes.h"
#include "start_failure.h"

namespace {

QPushButton* stop_button(const QWidget& window) {
    return window.findChild<QPushButton*>(QStringLiteral("stop_button"));
}

void open_page() {
    open_url(latin1_text("http://" + getIp() + ":8000"));
}

}  // namespace

Desk::Desk() : starting(QStringLiteral("start.lock")) {
    starting.setStaleLockTime(0);  // only a dead program's lock is taken over
    connect(&marking, &QTimer::timeout, this, &Desk::mark_running);
}

Desk::~Desk() = default;

void Desk::new_window() {
    auto next = std::make_unique<NetworkSelectionWindow>(nullptr);
    ApplicationSetup::dress_window(*next);
    if (window) {
        next->move(window->pos());
    }
    // Before the last one goes: the program ends with its last window.
    ApplicationSetup::show_first_window(*next);
    if (window) {
        window->hide();
        window->setEnabled(false);        // for a second click that is on its way
        window.release()->deleteLater();  // one of its widgets may be sending a signal
    }
    window = std::move(next);
}

void Desk::read_networks() {
    std::vector<Network*> read;
    read_hub_networks(&read);
    networks.clear();
    for (Network* network : read) {
        networks.emplace_back(network);
    }
}

void Desk::show_home(const QString& focused_network) {
    end_watch();
    chosen = nullptr;
    new_window();
    read_networks();
    wire_home();
    mark_running();
    for (int i = list->buttons().size() - 1; i >= 0; --i) {
        const std::string& name = networks[static_cast<std::size_t>(i)]->name;
        if (i == 0 || latin1_text(name) == focused_network) {
            list->focus(i);
            break;
        }
    }
    marking.start(2000);
}

void Desk::wire_home() {
    auto* form_label = window->findChild<QLabel*>(QStringLiteral("create_label"));
    form_label->setAccessibleName(QStringLiteral("Créer un nouveau réseau"));
    connect(new LabelButton(*form_label), &LabelButton::pressed, this, &Desk::show_form);
    if (networks.empty()) {
        auto* hint = new QLabel(QStringLiteral(
            "Aucun réseau pour l'instant : créez le premier en cliquant ci-dessus."));
        hint->setWordWrap(true);
        form_label->parentWidget()->layout()->addWidget(hint);
    }
    list = new NetworkList(*window);
    // The desk looks first whether the network can be started.
    auto* mapper = window->findChild<QSignalMapper*>(QStringLiteral("network_mapper"));
    mapper->disconnect(window.get());
    connect(mapper, &QSignalMapper::mappedInt, this, &Desk::choose, Qt::QueuedConnection);
}

void Desk::mark_running() {
    QVector<NetworkEntry> entries;
    for (const auto& network : networks) {
        const bool runs = !find_server_processes(network->path).empty();
        entries.push_back({shown_name(network->name), QFile::decodeName(network->path.c_str()),
                           runs ? QStringLiteral("● en marche") : QString()});
    }
    list->show_entries(entries);
}

void Desk::show_form() {
    marking.stop();
    auto* form = new CreationForm(*window);
    connect(form, &CreationForm::left, this, [this] { show_home({}); });
    connect(form, &CreationForm::created, this, &Desk::show_home);
}

void Desk::choose(int n) {
    if (chosen != nullptr) {
        return;  // by the first of two clicks
    }
    chosen = networks[static_cast<std::size_t>(n)].get();
    const QString reason = obstacle(*chosen);
    if (!reason.isEmpty()) {
        say(reason);
        chosen = nullptr;
        return;
    }
    marking.stop();
    if (!find_server_processes(chosen->path).empty()) {
        window->clean_screen();
        window->loading_mode();
        watch_start();
        return;
    }
    start(*networks[static_cast<std::size_t>(n)]);
    wire_ready_screen();
    watch_start();
}

QString Desk::obstacle(const Network& network) {
    if (!has_project(network.path)) {
        return project_missing(network.path);
    }
    if (!starting.tryLock() && starting.error() == QLockFile::LockFailedError) {
        return QStringLiteral("Une autre fenêtre démarre un réseau. Attendez qu'elle ait fini.");
    }
    return {};
}

void Desk::start(Network& network) {
    for (const auto& other : networks) {
        if (!find_server_processes(other->path).empty()) {
            stop_server(other->path);  // they all have the one address
        }
    }
    // What is clicked while the window is blocked is not meant for the screen that comes after.
    window->setEnabled(false);
    window->switch_to_network(&network);
    QApplication::processEvents();
    window->setEnabled(true);
}

void Desk::watch_start() {
    watch = new StartWatch(*chosen, this);
    connect(watch, &StartWatch::answered, this, &Desk::finish_start);
    connect(watch, &StartWatch::gave_up, this, &Desk::report_failure);
}

void Desk::end_watch() {
    if (watch) {
        watch->disconnect(this);
        watch->deleteLater();  // it may be sending its signal
    }
    starting.unlock();
}

void Desk::finish_start() {
    end_watch();
    if (stop_button(*window) != nullptr) {
        return;  // the window has done the rest
    }
    window->clean_screen();
    open_page();
    Network network(*chosen);
    window->network_started_mode(&network);
    wire_ready_screen();
}

void Desk::report_failure() {
    end_watch();
    if (!window->isVisible()) {
        return;
    }
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const QString reason = start_failure(*chosen);
    QApplication::restoreOverrideCursor();
    say(reason);
    show_home(latin1_text(chosen->name));
}

void Desk::wire_ready_screen() {
    QPushButton* stop = stop_button(*window);
    if (stop == nullptr) {
        return;
    }
    connect(stop, &QPushButton::clicked, this, &Desk::stop_server_and_leave);
    connect(window->findChild<QPushButton*>(QStringLiteral("access_button")), &QPushButton::clicked,
            this, &open_page);
}

void Desk::stop_server_and_leave() {
    if (chosen == nullptr) {
        return;  // stopped by the first of two clicks
    }
    end_watch();
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const bool stopped = stop_server(chosen->path);
    QApplication::restoreOverrideCursor();
    if (!stopped) {
        say(QStringLiteral("Son serveur n'a pas pu être arrêté. Fermez son terminal."));
    }
    show_home(latin1_text(chosen->name));
}

void Desk::say(const QString& text) {
    QMessageBox message(QMessageBox::Warning, QStringLiteral("Quorvale"),
                        QStringLiteral("Le réseau « %1 » : ").arg(shown_name(chosen->name)) +
                            QStringLiteral("\n\n") + text,
                        QMessageBox::Ok, window.get());
    message.setTextFormat(Qt::PlainText);  // whatever the network's name holds
    message.exec();
}
