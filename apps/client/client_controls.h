#pragma once

#include <QObject>
#include <string>

class ClientWindow;

/// Makes the client's screens work once its search has ended: the list, where a server is asked
/// before it is opened and others can be typed or searched for, and the connected screen, which
/// names the server. Belongs to the window.
class ClientControls : public QObject {
public:
    /// What the event loop returns when the operator asks for another search.
    static constexpr int search_again = 1;

    explicit ClientControls(ClientWindow& shown);

private:
    /// Completes the window's list screen. Button `focused` gets the focus.
    void complete_list(int focused);
    void show_list();
    void choose(int index);
    /// Opens the server at the address if it answers; `name` is the one it was listed by.
    void open_server(const std::string& address, const QString& name);
    void show_connected(const std::string& address, const QString& name);
    void ask_address();
    void report_silence(const std::string& address, const QString& name);
    void report_nothing_found();

    ClientWindow& window;
    int chosen = 0;       ///< the button of the list that was clicked last
    bool asking = false;  ///< the server that was chosen has not answered yet
};
