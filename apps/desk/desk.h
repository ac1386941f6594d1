#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "file_lock.h"
#include "network.h"
#include "network_watch.h"
#include "networkselectionwindow.h"
#include "registered_networks.h"

class CreationForm;
struct Launch;
class NetworkJobs;
class NetworkList;
class ReadyScreen;

/// The operator's desk: the network selection window with an action behind every control. The
/// window builds its screens; the desk finds the widgets on them by their names, connects them, and
/// adds what is missing. What may take long is done on other threads.
class Desk : public QObject {
    Q_OBJECT

public:
    Desk();
    ~Desk() override;

    /// Shows the home screen. The focus goes to the network of that registry name (its bytes as
    /// Latin-1 characters), or else to the first one.
    void show_home(const QString& focused_network);

protected:
    /// Closing a window, and Escape, may have to be confirmed.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    enum class State {
        at_home,
        in_form,
        working,     ///< on what was clicked: until that is done, clicks are ignored
        starting,    ///< a network was launched, or is asked whether it answers
        explaining,  ///< finding out why it does not
        in_service,  ///< it has answered, but may have ceased to
    };

    void open_window();
    /// Replaces what the window shows by the home screen of a fresh window. The window itself
    /// stays: under Wayland, a program cannot say where a new one is to appear.
    void renew_window();
    void read_networks();
    /// Returns whether the list changed between the window's reading and the desk's.
    bool has_other_buttons() const;
    void wire_home();
    void add_menu_buttons();
    /// The menu of network n, below its button.
    void show_menu(int n, const QWidget& button);
    /// Checks which networks are in service and marks them, now and then every two seconds while
    /// the home screen is shown.
    void check_served();
    /// Checks which networks are in service, then calls `done`.
    void check_served_then(const std::function<void()>& done);
    void mark_running();
    void show_form();
    bool may_close();

    /// Does work on another thread, then `done` with what it returned, unless the window was closed
    /// meanwhile.
    template <typename Task, typename Done>
    void work(Task task, Done done);

    /// A click on button n of the home screen.
    void choose(int n);
    /// Starts network n, or shows it if it is in service already.
    void begin(int n);
    /// Asks whether the networks in service may be stopped for network n. Returns the answer.
    bool may_replace_others(int n);
    void show_loading();
    /// Claims the start, ends the networks in service and launches the chosen one.
    void launch_chosen();
    void follow_launch(const Launch& launched);
    /// Takes the lock of starts. Returns why no start can begin, or an empty text.
    QString claim_start();
    void close_old_terminals();
    void show_ready();
    /// Returns whether the ready screen is shown and takes clicks.
    bool shows_network() const;
    void watch_chosen(const std::set<pid_t>& old_shells);
    /// Brings the screen up to date with what the watch saw.
    void follow(const NetworkState& seen);
    bool has_failed(const NetworkState& seen) const;
    void show_in_service(const NetworkState& seen);
    /// Finds out why the start has failed, then gives it up.
    void fail_start();
    /// Says why the network does not answer and goes back to the list; for a network that had been
    /// in service, says it on the ready screen.
    void give_up_start(const QString& reason);
    void leave_chosen();
    void stop_watching();
    void open_page();
    void restart_chosen();
    void stop_and_leave();
    void stop(const Network& network, const std::function<void()>& done);
    QString name_of(const Network& network) const;
    void say(const Network& network, const QString& text);

    std::unique_ptr<NetworkSelectionWindow> window;
    std::vector<std::unique_ptr<Network>> networks;  ///< in the order of the buttons
    std::vector<RegisteredNetwork> registered;       ///< the same, as the operator knows them
    NetworkList* list = nullptr;                     ///< of the home screen
    NetworkJobs* jobs = nullptr;                     ///< of the home screen
    CreationForm* form = nullptr;                    ///< of the form's screen
    QPointer<ReadyScreen> screen;

    State state = State::at_home;
    const Network* chosen = nullptr;
    bool was_launched = false;  ///< by the click that chose it; else it was in service already
    bool was_raised = false;    ///< the window, over the terminal that opened
    bool was_opened = false;    ///< its terminal has been there since the launch
    bool runs = false;          ///< whether its server did, when last polled
    QPointer<NetworkWatch> watch;
    QDeadlineTimer deadline;                           ///< of the start
    QDeadlineTimer terminal_deadline;                  ///< for one that reports errors or has gone
    std::vector<std::function<void()>> old_terminals;  ///< each closes one
    std::optional<FileLock> start_lock;  ///< the operator's desks start one network at a time

    std::vector<std::string> directories;  ///< of the networks
    std::vector<bool> served;              ///< whether each is in service, when last checked
    QTimer marking;                        ///< until the next check
    QThreadPool threads;                   ///< waited for by the destructor
};
