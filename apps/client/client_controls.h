#pragma once

#include <QObject>

class ClientWindow;
class QPushButton;

/// Makes the buttons of the client's connected screen work: one opens the server again, the other
/// leads back to the list. Belongs to the window.
class ClientControls : public QObject {
public:
    /// The window has ended its search.
    explicit ClientControls(ClientWindow& shown);

private:
    /// Waits for a click in the list.
    void follow_list();
    /// The connected screen of button `index` of the list has come.
    void follow_connected_screen(int index);
    /// Returns button `index` of the list.
    QPushButton* show_list(int index);

    ClientWindow& window;
};

/// Whether the window's search has found servers: the list is then shown.
bool has_servers(const ClientWindow& window);

/// Says that no server was found, and what the search needs. Returns whether to search again.
bool wants_another_search(ClientWindow& window);
