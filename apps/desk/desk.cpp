#include "desk.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalMapper>

#include "applicationsetup.h"
#include "background_work.h"
#include "creation_form.h"
#include "home_links.h"
#include "hub_utilities.h"
#include "label_button.h"
#include "network_jobs.h"
#include "network_launch.h"
#include "network_list.h"
#include "network_menu.h"
#include "open_url.h"
#include "question.h"
#include "ready_screen.h"
#include "screen_pieces.h"
#include "server_processes.h"
#include "start_failure.h"

namespace {

// In milliseconds.
const int start_timeout = 30'000;
const int terminal_timeout = 9'000;
const int answer_timeout = 8'000;  // of a network that was in service already

QString quoted(const QString& name) {
    return QStringLiteral("« %1 »").arg(name);
}

}  // namespace

Desk::Desk() {
    threads.setMaxThreadCount(16);  // they wait more than they compute
    marking.setInterval(2000);
    marking.setSingleShot(true);
    connect(&marking, &QTimer::timeout, this, &Desk::check_served);
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
    old->setEnabled(false);  // a second click may be on its way
    old->deleteLater();      // one of its widgets may be sending a signal
    window->setLayout(fresh.layout());
    fresh.findChild<QSignalMapper*>(QStringLiteral("network_mapper"))->setParent(window.get());
    window->setPalette(fresh.palette());
    window->setWindowTitle(fresh.windowTitle());
}

void Desk::read_networks() {
    std::vector<Network*> read;
    read_hub_networks(&read);
    networks.clear();
    directories.clear();
    for (Network* network : read) {
        networks.emplace_back(network);
        directories.push_back(network->path);
    }
    registered = registered_networks();
    registered.resize(networks.size());  // the file may have changed meanwhile
}

bool Desk::has_other_buttons() const {
    const auto buttons = window->findChildren<QPushButton*>(QStringLiteral("network_button"));
    return static_cast<std::size_t>(buttons.size()) != networks.size();
}

void Desk::show_home(const QString& focused_network) {
    leave_chosen();
    do {
        if (window) {
            renew_window();
        } else {
            open_window();
        }
        read_networks();
    } while (has_other_buttons());
    state = State::at_home;
    wire_home();
    // Set again now that the list has moved: hidden widgets keep the font of their old place.
    window->setStyleSheet(QString::fromLatin1(white_page_style));
    served.assign(networks.size(), false);  // until they were checked
    check_served();
    mark_running();
    for (int i = static_cast<int>(networks.size()) - 1; i >= 0; --i) {
        const std::string& name = networks[static_cast<std::size_t>(i)]->name;
        if (i == 0 || latin1_text(name) == focused_network) {
            list->focus(i);
            break;
        }
    }
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
    // In place of the window's own slot: the desk checks first whether the network can be started.
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
        connect(button, &QPushButton::clicked, this, [this, i, button] { show_menu(i, *button); });
        list->add_beside(i, button);
    }
    auto* restore =
        named("restore_button", new QPushButton(QStringLiteral("Restaurer une copie…")));
    jobs = new NetworkJobs(*window);
    connect(restore, &QPushButton::clicked, this, [this] {
        if (state == State::at_home) {
            jobs->restore();
        }
    });
    connect(
        jobs, &NetworkJobs::done, this, [this] { show_home({}); }, Qt::QueuedConnection);
    list->add_below(restore);
}

void Desk::show_menu(int n, const QWidget& button) {
    if (state != State::at_home) {
        return;
    }
    const auto index = static_cast<std::size_t>(n);
    auto* menu = new NetworkMenu(registered[index], served[index], *jobs, *window);
    connect(menu, &NetworkMenu::page_chosen, this, &Desk::open_page);
    connect(menu, &NetworkMenu::stop_chosen, this, [this, index] {
        if (state == State::at_home) {
            stop(*networks[index], [this] {
                state = State::at_home;
                check_served();
            });
        }
    });
    menu->popup(button.mapToGlobal(QPoint(0, button.height())));
}

template <typename Task, typename Done>
void Desk::work(Task task, Done done) {
    work_in_background(threads, *this, task, [this, done](const decltype(task())& result) {
        if (window->isVisible()) {
            done(result);
        }
    });
}

void Desk::check_served() {
    work([asked = directories] { return find_served(asked); },
         [this, asked = directories](const std::vector<bool>& found) {
             if (state == State::at_home && asked == directories) {
                 served = found;
                 mark_running();
                 marking.start();
             }
         });
}

void Desk::check_served_then(const std::function<void()>& done) {
    work([asked = directories] { return find_served(asked); },
         [this, done](const std::vector<bool>& found) {
             served = found;
             done();
         });
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
        return;  // a network was clicked just before
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
        if (state == State::in_form && !form->is_busy()) {
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
    if (state == State::in_form) {
        return form->may_leave();
    }
    if (state == State::in_service && runs) {
        say(*chosen,
            QStringLiteral("Il reste en marche. Pour l'arrêter, ouvrez Quorvale de nouveau."));
    }
    return true;
}

void Desk::choose(int n) {
    if (state != State::at_home) {
        return;  // the second of two clicks
    }
    state = State::working;
    check_served_then([this, n] { begin(n); });
}

void Desk::begin(int n) {
    if (!may_replace_others(n)) {
        state = State::at_home;
        check_served();
        return;
    }
    const auto index = static_cast<std::size_t>(n);
    chosen = networks[index].get();
    was_launched = !served[index];
    show_loading();
    if (was_launched) {
        launch_chosen();
        return;
    }
    state = State::starting;
    deadline.setRemainingTime(answer_timeout);
    show_ready();
    watch_chosen({});
}

bool Desk::may_replace_others(int n) {
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
    const int painting_time = 100;  // milliseconds: the screen is laid out first, then painted
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents, painting_time);
}

void Desk::launch_chosen() {
    const QString reason = claim_start();
    if (!reason.isEmpty()) {
        give_up_start(reason);
        return;
    }
    qputenv("QUORVALE_TERMINAL_TITLE",
            (QStringLiteral("Quorvale : serveur de ") + name_of(*chosen)).toUtf8());
    std::vector<std::string> others;
    for (std::size_t i = 0; i < networks.size(); ++i) {
        if (served[i]) {
            others.push_back(directories[i]);  // all networks share one address
        }
    }
    work([network = *chosen, others] { return launch(network, others); },
         [this](const Launch& launched) { follow_launch(launched); });
}

void Desk::follow_launch(const Launch& launched) {
    old_terminals = launched.old_terminals;
    if (!launched.obstacle.isEmpty()) {
        give_up_start(launched.obstacle);
        return;
    }
    state = State::starting;
    was_raised = false;
    was_opened = false;
    deadline.setRemainingTime(start_timeout);
    terminal_deadline.setRemainingTime(terminal_timeout);
    if (was_launched) {  // a restart shows it already
        show_ready();
    }
    watch_chosen(launched.old_shells);
}

QString Desk::claim_start() {
    if (!has_project(chosen->path)) {
        return project_missing(chosen->path);
    }
    start_lock.emplace(".start.lock");
    if (!start_lock->try_take()) {
        return QStringLiteral("Une autre fenêtre démarre un réseau. Attendez qu'elle ait fini.");
    }
    return {};
}

void Desk::close_old_terminals() {
    for (const std::function<void()>& close : old_terminals) {
        threads.start(close);
    }
    old_terminals.clear();
}

void Desk::show_ready() {
    screen = new ReadyScreen(*window, name_of(*chosen));
    connect(screen, &ReadyScreen::access_pressed, this, &Desk::open_page);
    connect(screen, &ReadyScreen::stop_pressed, this, &Desk::stop_and_leave);
    connect(screen, &ReadyScreen::restart_pressed, this, &Desk::restart_chosen);
    connect(
        screen, &ReadyScreen::list_pressed, this,
        [this] {
            if (shows_network()) {  // not by the second of two clicks
                show_home(latin1_text(chosen->name));
            }
        },
        Qt::QueuedConnection);
}

bool Desk::shows_network() const {
    return state == State::starting || state == State::explaining || state == State::in_service;
}

void Desk::watch_chosen(const std::set<pid_t>& old_shells) {
    stop_watching();
    watch = new NetworkWatch(*chosen, old_shells, threads, this);
    connect(watch, &NetworkWatch::polled, this, &Desk::follow);
}

void Desk::follow(const NetworkState& seen) {
    runs = seen.runs;
    was_opened = was_opened || seen.opened;
    // Not before the new terminal is there: gnome-terminal's server ends with its last window, and
    // loses a terminal that is asked for meanwhile.
    if (seen.runs || seen.ended) {
        close_old_terminals();
    }
    if (seen.runs && was_launched && !was_raised) {
        was_raised = true;
        window->raise();
        window->activateWindow();
    }
    if (state == State::in_service && !seen.answers) {
        screen->show_lost(loss_reason(seen));
    } else if (seen.answers) {
        show_in_service(seen);
    } else if (state == State::starting && has_failed(seen)) {
        fail_start();
    }
}

bool Desk::has_failed(const NetworkState& seen) const {
    if (seen.ended || deadline.hasExpired()) {
        return true;
    }
    // A terminal that was not there yet and says nothing may still come, on a slow machine.
    return was_launched && !seen.opened && terminal_deadline.hasExpired() &&
           (was_opened || !terminal_words().isEmpty());
}

void Desk::show_in_service(const NetworkState& seen) {
    screen->show_answering(seen);
    if (state != State::in_service) {
        state = State::in_service;
        start_lock.reset();
        watch->slow_down();
        open_url(own_page(seen.address));
    }
}

void Desk::fail_start() {
    start_lock.reset();
    close_old_terminals();
    if (!window->isVisible()) {
        return;  // the program is about to end with it
    }
    state = State::explaining;
    find_start_failure(threads, *screen, *chosen,
                       [this, shown = screen.data()](const QString& reason) {
                           const bool is_awaited = screen == shown && state == State::explaining;
                           if (is_awaited && window->isVisible()) {
                               give_up_start(reason);
                           }
                       });
}

void Desk::give_up_start(const QString& reason) {
    start_lock.reset();
    close_old_terminals();
    if (was_launched) {
        stop_watching();
        say(*chosen, reason);
        show_home(latin1_text(chosen->name));
        return;
    }
    state = State::in_service;
    screen->show_lost(reason);
    watch_chosen({});
    watch->slow_down();
}

void Desk::leave_chosen() {
    stop_watching();
    close_old_terminals();
    start_lock.reset();
    screen = nullptr;
    chosen = nullptr;
}

void Desk::stop_watching() {
    if (watch) {
        watch->disconnect(this);
        watch->deleteLater();  // it may be sending its signal
        watch = nullptr;
    }
}

void Desk::open_page() {
    work(own_address, [](const QString& address) { open_url(own_page(address)); });
}

void Desk::restart_chosen() {
    if (state != State::in_service) {
        return;  // it is already restarting: the second of two clicks
    }
    state = State::working;
    stop_watching();
    screen->show_waiting(QStringLiteral("Démarrage…"));
    was_launched = false;  // a failure is shown on the screen
    check_served_then([this] { launch_chosen(); });
}

void Desk::stop_and_leave() {
    if (!shows_network()) {
        return;  // it is already stopping: the second of two clicks
    }
    stop_watching();
    screen->show_waiting(QStringLiteral("Arrêt…"));
    stop(*chosen, [this] { show_home(latin1_text(chosen->name)); });
}

void Desk::stop(const Network& network, const std::function<void()>& done) {
    state = State::working;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const auto end = [directory = network.path] {
        const std::function<void()> close_terminal = terminal_closer(directory);
        return std::make_pair(end_server(directory), close_terminal);
    };
    work(end, [this, &network, done](const std::pair<bool, std::function<void()>>& ended) {
        QApplication::restoreOverrideCursor();
        threads.start(ended.second);
        if (!ended.first) {
            say(network,
                QStringLiteral("Son serveur n'a pas pu être arrêté. Fermez son terminal."));
        }
        done();
    });
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
