#pragma once

#include <QDeadlineTimer>
#include <QLockFile>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "background_look.h"
#include "network.h"
#include "network_watch.h"
#include "networkselectionwindow.h"
#include "registered_networks.h"

class CreationForm;
class NetworkList;
class ReadyScreen;

/// The operator's desk: the network selection window with an action behind every control. The
/// window builds its screens as ever; the desk finds the widgets on them by their names, connects
/// them, and adds what is missing.
class Desk : public QObject {
    Q_OBJECT

public:
    Desk();
    ~Desk() override;

    /// Shows the home screen. The button of the network of that registry name
    /// (its bytes as Latin-1 characters) has the focus, if there is one.
    void show_home(const QString& focused_network);

protected:
    /// Closing a window, and Escape, may have to be confirmed.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    enum class State {
        at_home,
        in_form,
        starting,    ///< a network was launched, or is asked whether it answers
        in_service,  ///< it has answered; it may have ceased to
    };

    void open_window();
    /// Puts the home screen of a fresh window in the place of what the window shows. The window
    /// stays: under Wayland, a new one could not tell where it is to come.
    void renew_window();
    void read_networks();
    void wire_home();
    void add_menu_buttons();
    void show_menu(int n);
    void mark_running();
    void show_form();
    bool may_close();

    /// A click on button n of the home screen.
    void choose(int n);
    /// Returns whether the network may be started though others are in service: asks.
    bool may_replace_others(int n);
    void show_loading();
    /// Makes the start this program's alone, ends the networks in service and launches the chosen
    /// one. Returns why it cannot be started now, in French, or an empty text.
    QString launch_chosen();
    /// Returns why no start can begin, or an empty text: it is then this program's alone.
    QString claim_start();
    void end_others();
    void close_old_terminals();
    void show_ready();
    void watch_chosen();
    void follow(const NetworkState& seen);
    void follow_start(const NetworkState& seen);
    void fail_start();
    void leave_chosen();
    void open_page();
    void restart_chosen();
    void stop_and_leave();
    void stop(const Network& network);
    QString name_of(const Network& network) const;
    void say(const Network& network, const QString& text);

    std::unique_ptr<NetworkSelectionWindow> window;
    std::vector<std::unique_ptr<Network>> networks;  ///< in the order of the buttons
    std::vector<RegisteredNetwork> registered;       ///< the same, as the operator knows them
    NetworkList* list = nullptr;                     ///< of the home screen
    QPointer<CreationForm> form;
    QPointer<ReadyScreen> screen;

    State state = State::at_home;
    const Network* chosen = nullptr;
    bool was_launched = false;  ///< the chosen one, from the home screen
    bool was_raised = false;    ///< over its terminal
    QString address;            ///< of this machine, when it was last looked at
    QPointer<NetworkWatch> watch;
    QDeadlineTimer deadline;                           ///< of the start
    QDeadlineTimer terminal_deadline;                  ///< until when its terminal may take to open
    std::vector<std::function<void()>> old_terminals;  ///< each closes one
    std::vector<std::function<void()>> closing_terminals;  ///< by the thread that may take seconds
    BackgroundLook closing;
    QLockFile start_lock;  ///< held during a start: one at a time among the operator's desks

    std::vector<std::string> directories;  ///< of the networks, for the look
    std::vector<bool> found;               ///< by the look; only its thread's while it runs
    std::vector<bool> served;              ///< the networks in service, when last seen
    QTimer marking;
    BackgroundLook look;
};
