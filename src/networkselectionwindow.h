#pragma once

#include <QDialog>
#include <vector>

class Network;

/// The application's window, 800 x 400 pixels: the home screen with the networks of
/// "networks.data", and the screens that a click on one of them leads to. It shows one screen at a
/// time.
///
/// A screen is built by a member whose name ends in `_mode`, on a window without a layout: clear
/// the current screen first. Each screen sets the style sheet, background and title that it needs;
/// clearing leaves them. All members run on the GUI thread.
class NetworkSelectionWindow : public QDialog {
    Q_OBJECT

public:
    /// Reads the registry and builds the home screen. See `read_hub_networks` for what is printed.
    explicit NetworkSelectionWindow(QWidget* parent);
    /// Deletes the records. Servers that were started run on.
    ~NetworkSelectionWindow() override;

    NetworkSelectionWindow(const NetworkSelectionWindow&) = delete;
    NetworkSelectionWindow& operator=(const NetworkSelectionWindow&) = delete;

    /// Home screen. Appends the registry's records to the window's and prints the number of every
    /// button, from 1, on standard output.
    void main_mode();
    /// Loading screen.
    void loading_mode();
    /// Starts the network's server and checks once whether it runs: if not, the loading screen
    /// stays; if so, sends the browser to it after two seconds and shows the ready screen.
    ///
    /// Blocks for the whole of it, without a repaint. Throws what `getIp` throws.
    void switch_to_network(Network* network);
    /// Ready screen. Its texts are fixed: the network is not named on it.
    void network_started_mode(Network* network);

    /// Form for declaring a network: a display, nothing typed is read.
    void new_network_mode();

    /// Clears the current screen; the argument is not used.
    void remove_layouts(QWidget* widget);
    /// Clears the current screen.
    void clean_screen();

private slots:
    void fuck_tho(int n);
    void testBtn();

private:
    std::vector<Network*> networks;  ///< owned; button i of the home screen is element i
};
