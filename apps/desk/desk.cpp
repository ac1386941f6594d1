#include "desk.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalMapper>
#include <QVBoxLayout>

#include "applicationsetup.h"
#include "creation_form.h"
#include "home_links.h"
#include "hub_utilities.h"
#include "label_button.h"
#include "network_jobs.h"
#include "network_list.h"
#include "network_menu.h"
#include "open_url.h"
#include "question.h"
#include "ready_screen.h"
#include "screen_pieces.h"
#include "server_processes.h"
#include "start_failure.h"

namespace {

const int start_patience = 30'000;  // milliseconds, for the whole start
const int terminal_patience = 9'000;
const int answer_patience = 8'000;  // of a network that was in service already

QString quoted(const QString& name) {
    return QStringLiteral("« %1 »").arg(name);
}

}  // namespace

Desk::Desk()
    : closing([this] {
          for (const auto& close : closing_terminals) {
              close();
          }
      }),
      start_lock(QStringLiteral("start.lock")),
      look([this] { found = find_served(directories); }) {
    start_lock.setStaleLockTime(0);  // only a dead program's lock is taken over
    marking.setInterval(2000);
    connect(&marking, &QTimer::timeout, &look, [this] { look.start(); });
    connect(&look, &QThread::finished, this, [this] {
        look.wait();  // for one that has begun since
        if (found.size() == networks.size()) {
            served = found;
            mark_running();
        }
    });
}

Desk::~Desk() = default;

void Desk::open_window() {
    window = std::make_unique<NetworkSelectionWindow>(nullptr);
    ApplicationSetup::dress_window(*window);
    window->installEventFilter(this);
    ApplicationSetup::show_first_window(*window);
}

void Desk::renew_window() {
    NetworkSelectionWindow fresh(nullptr);
    auto* old = new QWidget;
    old->setLayout(window->layout());
    const QObjectList others = window->children();
    for (QObject* other : others) {
        if (auto* widget = qobject_cast<QWidget*>(other)) {
            widget->setParent(old);
        } else {
            other->setParent(old);
        }
    }
    old->setEnabled(false);  // for a second click that is on its way
    old->deleteLater();      // one of its widgets may be sending a signal
    window->setLayout(fresh.layout());
    fresh.findChild<QSignalMapper*>(QStringLiteral("network_mapper"))->setParent(window.get());
    window->setStyleSheet(fresh.styleSheet());
    window->setPalette(fresh.palette());
    window->setWindowTitle(fresh.windowTitle());
}

void Desk::read_networks() {
    look.wait();  // it reads the directories
    std::vector<Network*> read;
    read_hub_networks(&read);
    networks.clear();
    directories.clear();
    for (Network* network : read) {
        networks.emplace_back(network);
        directories.push_back(network->path);
    }
    registered = registered_networks();
    registered.resize(networks.size());  // should the file have changed meanwhile
}

void Desk::show_home(const QString& focused_network) {
    leave_chosen();
    if (window) {
        renew_window();
    } else {
        open_window();
    }
    state = State::at_home;
    read_networks();
    wire_home();
    served.assign(networks.size(), false);  // until the look has ended
    look.start();
    mark_running();
    for (int i = static_cast<int>(networks.size()) - 1; i >= 0; --i) {
        const std::string& name = networks[static_cast<std::size_t>(i)]->name;
        if (i == 0 || latin1_text(name) == focused_network) {
            list->focus(i);
            break;
        }
    }
    marking.start();
}

void Desk::wire_home() {
    auto* form_label = window->findChild<QLabel*>(QStringLiteral("create_label"));
    form_label->setAccessibleName(QStringLiteral("Créer un nouveau réseau"));
    connect(new LabelButton(*form_label), &LabelButton::pressed, this, &Desk::show_form);
    form_label->setFocus();
    list = new NetworkList(*window);
    if (networks.empty()) {
        auto* hint = new QLabel(QStringLiteral(
            "Aucun réseau pour l'instant : créez le premier en cliquant ci-dessus."));
        hint->setWordWrap(true);
        list->add_below(hint);
    }
    add_menu_buttons();
    add_home_links(*window);
    // The desk looks first whether the network can be started.
    auto* mapper = window->findChild<QSignalMapper*>(QStringLiteral("network_mapper"));
    mapper->disconnect(window.get());
    connect(mapper, &QSignalMapper::mappedInt, this, &Desk::choose, Qt::QueuedConnection);
}

void Desk::add_menu_buttons() {
    for (int i = 0; i < list->buttons().size(); ++i) {
        auto* button = named("menu_button", new QPushButton(QStringLiteral("⋮")));
        const QString& name = registered[static_cast<std::size_t>(i)].name;
        button->setAccessibleName(QStringLiteral("Menu de ") + name);
        button->setToolTip(button->accessibleName());
        button->setMinimumHeight(list->buttons()[i]->minimumHeight());
        connect(button, &QPushButton::clicked, this, [this, i] { show_menu(i); });
        list->add_beside(i, button);
    }
    auto* restore =
        named("restore_button", new QPushButton(QStringLiteral("Restaurer une copie…")));
    auto* jobs = new NetworkJobs(*window);
    connect(restore, &QPushButton::clicked, jobs, &NetworkJobs::restore);
    connect(
        jobs, &NetworkJobs::done, this, [this] { show_home({}); }, Qt::QueuedConnection);
    list->add_below(restore);
}

void Desk::show_menu(int n) {
    const auto index = static_cast<std::size_t>(n);
    auto* jobs = window->findChild<NetworkJobs*>();
    auto* menu = new NetworkMenu(registered[index], served[index], *jobs, *window);
    connect(menu, &NetworkMenu::page_chosen, this, &Desk::open_page);
    connect(menu, &NetworkMenu::stop_chosen, this, [this, index] {
        stop(*networks[index]);
        look.start();
    });
    auto* button = static_cast<QWidget*>(sender());
    menu->popup(button->mapToGlobal(QPoint(0, button->height())));
}

void Desk::mark_running() {
    if (state != State::at_home) {
        return;
    }
    QVector<NetworkEntry> entries;
    for (std::size_t i = 0; i < networks.size(); ++i) {
        entries.push_back({registered[i].name, QFile::decodeName(directories[i].c_str()),
                           served[i] ? QStringLiteral("● en marche") : QString()});
    }
    list->show_entries(entries);
}

void Desk::show_form() {
    if (state != State::at_home) {
        return;  // a network was chosen just before
    }
    marking.stop();
    state = State::in_form;
    form = new CreationForm(*window);
    connect(form, &CreationForm::left, this, [this] { show_home({}); });
    connect(form, &CreationForm::created, this, &Desk::show_home);
}

bool Desk::eventFilter(QObject* object, QEvent* event) {
    if (object != window.get()) {
        return QObject::eventFilter(object, event);
    }
    if (event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        if (form && !form->is_busy()) {
            form->leave();
        } else {
            window->close();
        }
        return true;
    }
    if (event->type() == QEvent::Close && !may_close()) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(object, event);
}

bool Desk::may_close() {
    if (form) {
        return form->may_leave();
    }
    if (state == State::in_service && chosen != nullptr &&
        !find_server_processes(chosen->path).empty()) {
        say(*chosen,
            QStringLiteral("Il reste en marche. Pour l'arrêter, ouvrez Quorvale de nouveau."));
    }
    return true;
}

void Desk::choose(int n) {
    if (state != State::at_home) {
        return;  // it was the second of two clicks
    }
    state = State::starting;  // also while the question stands, which lets the second click in
    if (!may_replace_others(n)) {
        state = State::at_home;
        return;
    }
    chosen = networks[static_cast<std::size_t>(n)].get();
    marking.stop();
    show_loading();
    was_launched = find_server_processes(chosen->path).empty();
    deadline.setRemainingTime(was_launched ? start_patience : answer_patience);
    if (was_launched) {
        const QString reason = launch_chosen();
        if (!reason.isEmpty()) {
            say(*chosen, reason);
            show_home(latin1_text(chosen->name));
            return;
        }
    }
    show_ready();
    watch_chosen();
}

bool Desk::may_replace_others(int n) {
    look.wait();
    served = find_served(directories);
    for (std::size_t i = 0; i < networks.size(); ++i) {
        const QString name = quoted(registered[i].name);
        if (served[i] && static_cast<int>(i) != n &&
            !confirmed(window.get(),
                       QStringLiteral("Arrêter %1 pour démarrer %2 ?")
                           .arg(name, quoted(registered[static_cast<std::size_t>(n)].name)),
                       QStringLiteral("Les téléchargements en cours sur %1 seront interrompus.")
                           .arg(name))) {
            return false;
        }
    }
    return true;
}

void Desk::show_loading() {
    window->clean_screen();
    window->loading_mode();
    const int painting_time = 100;  // milliseconds, in several rounds: its layout comes first
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents, painting_time);
}

QString Desk::launch_chosen() {
    QString reason = claim_start();
    if (!reason.isEmpty()) {
        return reason;
    }
    end_others();
    qputenv("QUORVALE_TERMINAL_TITLE",
            (QStringLiteral("Quorvale : serveur de ") + name_of(*chosen)).toUtf8());
    terminal_deadline.setRemainingTime(terminal_patience);
    was_raised = false;
    watch_chosen();  // before the launch: it knows the shells that are there already
    chosen->launch();
    return {};
}

QString Desk::claim_start() {
    if (!has_project(chosen->path)) {
        return project_missing(chosen->path);
    }
    if (!start_lock.tryLock() && start_lock.error() == QLockFile::LockFailedError) {
        return QStringLiteral("Une autre fenêtre démarre un réseau. Attendez qu'elle ait fini.");
    }
    const bool others_run = std::find(served.begin(), served.end(), true) != served.end();
    return others_run ? QString() : port_obstacle(*chosen);
}

void Desk::end_others() {
    for (std::size_t i = 0; i < networks.size(); ++i) {
        if (served[i]) {
            old_terminals.push_back(terminal_closer(directories[i]));
            end_server(directories[i]);  // they all have the one address
        }
    }
}

void Desk::close_old_terminals() {
    if (!old_terminals.empty()) {
        closing.wait();
        closing_terminals = std::move(old_terminals);
        old_terminals.clear();
        closing.start();
    }
}

void Desk::show_ready() {
    screen = new ReadyScreen(*window, name_of(*chosen));
    connect(screen, &ReadyScreen::access_pressed, this, &Desk::open_page);
    connect(screen, &ReadyScreen::stop_pressed, this, &Desk::stop_and_leave);
    connect(screen, &ReadyScreen::restart_pressed, this, &Desk::restart_chosen);
    connect(
        screen, &ReadyScreen::list_pressed, this,
        [this] {
            if (chosen != nullptr) {  // or it was the second of two clicks
                show_home(latin1_text(chosen->name));
            }
        },
        Qt::QueuedConnection);
}

void Desk::watch_chosen() {
    if (!watch) {
        watch = new NetworkWatch(*chosen, this);
        connect(watch, &NetworkWatch::looked, this, &Desk::follow);
    }
}

void Desk::follow(const NetworkState& seen) {
    if (!screen) {
        return;
    }
    address = seen.address;
    // Not before the new terminal is there: that of gnome-terminal's last window is lost with it.
    if (seen.runs || seen.ended) {
        close_old_terminals();
    }
    if (seen.runs && was_launched && !was_raised) {
        was_raised = true;
        window->raise();
        window->activateWindow();
    }
    if (state == State::starting) {
        follow_start(seen);
    } else if (seen.answers) {
        screen->show_answering(seen);
    } else {
        screen->show_lost(loss_reason(seen));
    }
}

void Desk::follow_start(const NetworkState& seen) {
    if (seen.answers) {
        state = State::in_service;
        start_lock.unlock();
        watch->set_calm();
        screen->show_answering(seen);
        open_page();
        return;
    }
    if (seen.ended || deadline.hasExpired() ||
        (was_launched && terminal_deadline.hasExpired() && !seen.opened)) {
        fail_start();
    }
}

void Desk::fail_start() {
    start_lock.unlock();
    close_old_terminals();
    if (!window->isVisible()) {
        return;
    }
    if (was_launched) {
        watch->disconnect(this);  // its next look would fail the start once more, under the message
    }
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const QString reason = start_failure(*chosen);
    QApplication::restoreOverrideCursor();
    if (was_launched) {
        say(*chosen, reason);
        show_home(latin1_text(chosen->name));
        return;
    }
    state = State::in_service;
    watch->set_calm();
    screen->show_lost(reason);
}

void Desk::leave_chosen() {
    if (watch) {
        watch->disconnect(this);
        watch->deleteLater();  // it may be sending its signal
        watch = nullptr;
    }
    close_old_terminals();
    start_lock.unlock();
    chosen = nullptr;
}

void Desk::open_page() {
    open_url(QStringLiteral("http://%1:8000").arg(own_host(latin1_text(getIp()))));
}

void Desk::restart_chosen() {
    if (state != State::in_service) {
        return;  // by the first of two clicks
    }
    state = State::starting;
    delete watch;
    screen->show_starting();
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    was_launched = true;
    deadline.setRemainingTime(start_patience);
    look.wait();
    served = find_served(directories);
    const QString reason = launch_chosen();
    was_launched = false;  // a failure is told on the screen
    if (!reason.isEmpty()) {
        state = State::in_service;
        screen->show_lost(reason);
        watch_chosen();
    }
}

void Desk::stop_and_leave() {
    if (chosen == nullptr) {
        return;  // stopped by the first of two clicks
    }
    const Network& network = *chosen;
    leave_chosen();
    stop(network);
    show_home(latin1_text(network.name));
}

void Desk::stop(const Network& network) {
    QApplication::setOverrideCursor(Qt::BusyCursor);
    old_terminals.push_back(terminal_closer(network.path));
    const bool stopped = end_server(network.path);
    close_old_terminals();
    QApplication::restoreOverrideCursor();
    if (!stopped) {
        say(network, QStringLiteral("Son serveur n'a pas pu être arrêté. Fermez son terminal."));
    }
}

QString Desk::name_of(const Network& network) const {
    for (std::size_t i = 0; i < networks.size(); ++i) {
        if (networks[i].get() == &network) {
            return registered[i].name;
        }
    }
    return {};
}

void Desk::say(const Network& network, const QString& text) {
    QMessageBox message(
        QMessageBox::Warning, QStringLiteral("Quorvale"),
        QStringLiteral("Le réseau « %1 » : ").arg(name_of(network)) + QStringLiteral("\n\n") + text,
        QMessageBox::Ok, window.get());
    message.setTextFormat(Qt::PlainText);  // whatever the network's name holds
    message.exec();
}
