#pragma once

#include <QLockFile>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <memory>
#include <vector>

#include "network.h"
#include "networkselectionwindow.h"
#include "start_watch.h"

class NetworkList;

/// The operator's desk: the network selection window with an action behind every control. The
/// window builds its screens as ever; the desk finds the widgets on them and connects them. Where
/// a window has no way back to the home screen, the desk replaces it by a new one.
class Desk : public QObject {
    Q_OBJECT

public:
    Desk();
    ~Desk() override;

    /// Shows a new window with the home screen. The button of the network of that registry name
    /// (its bytes as Latin-1 characters) has the focus, if there is one.
    void show_home(const QString& focused_network);

private:
    void new_window();
    void read_networks();
    void wire_home();
    void mark_running();
    void show_form();
    /// A click on button n of the home screen.
    void choose(int n);
    /// Returns why the network cannot be started now, in French, or an empty text: its start is
    /// then this program's alone.
    QString obstacle(const Network& network);
    void start(Network& network);
    void watch_start();
    /// The start has come to its end, or is given up.
    void end_watch();
    void finish_start();
    void report_failure();
    void wire_ready_screen();
    void stop_server_and_leave();
    void say(const QString& text);

    std::unique_ptr<NetworkSelectionWindow> window;
    std::vector<std::unique_ptr<Network>> networks;  ///< in the order of the buttons
    NetworkList* list = nullptr;                     ///< of the home screen
    const Network* chosen = nullptr;
    QPointer<StartWatch> watch;
    QTimer marking;
    QLockFile starting;  ///< held during a start: one at a time among the operator's desks
};
