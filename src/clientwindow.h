#pragma once

#include <QDialog>
#include <string>
#include <vector>

class Network;

/// The client's window, 600 x 400 pixels: finds the servers of the LAN, lists them, and sends the
/// browser to the one that is clicked. It shows one screen at a time.
///
/// A screen is built by a member whose name ends in `_mode`, on a window without a layout. All
/// members run on the GUI thread.
class ClientWindow : public QDialog {
    Q_OBJECT

public:
    /// Runs the whole search and blocks until its commands have ended, so that the window cannot be
    /// shown before. It then has its list screen, or keeps the search screen when no server
    /// answered. Throws what `find_servers` throws.
    explicit ClientWindow(QWidget* parent);
    /// Deletes the records.
    ~ClientWindow() override;

    ClientWindow(const ClientWindow&) = delete;
    ClientWindow& operator=(const ClientWindow&) = delete;

    /// Search screen; then the search, and the list screen when servers were found.
    void searching_networks_mode();
    /// List screen: one button per server.
    void selecting_networks_mode();
    /// Sends the browser to a server, given as host:8000, then shows the connected screen. Whether
    /// the browser opens is not checked.
    void go_to_network(std::string address);
    /// Connected screen. Its texts are fixed: the server is not named on it.
    void network_selected_mode();

    /// Returns the servers found, in the order of the list's buttons; they belong to the window.
    const std::vector<Network*>& found_networks() const {
        return networks;
    }

    /// Clears the current screen; the argument is not used.
    void remove_layouts(QWidget* widget);

private slots:
    void launch_netw(int n);

private:
    std::vector<Network*> networks;    ///< owned; button i of the list screen is element i
    std::vector<std::string> servers;  ///< host:8000 of every server found, in the order found
};
