#pragma once

#include <QObject>

class NetworkSelectionWindow;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QWidget;
struct NetworkState;

/// Makes the window's ready screen show one network as it is: its own name, its address and names
/// on the LAN, whether it answers, and how many visitors it has. Belongs to the screen.
class ReadyScreen : public QObject {
    Q_OBJECT

public:
    /// Replaces the window's screen: the network is starting.
    ReadyScreen(NetworkSelectionWindow& shown, const QString& network_name);

    /// Shows that something is being done with the network, as the text says.
    void show_waiting(const QString& what);
    /// Shows a network that answers.
    void show_answering(const NetworkState& state);
    /// Shows that the network does not answer any more, and why.
    void show_lost(const QString& reason);

signals:
    void access_pressed();
    void stop_pressed();
    void restart_pressed();
    void list_pressed();

private:
    QPushButton* add_button(QHBoxLayout& row, const char* name, const QString& text);
    void add_buttons();
    void add_panel();
    void show_name(const QString& whole);
    /// Returns the width of a line beside the code, in pixels.
    int text_width() const;
    void set_lost(bool lost);
    void set_address(const QString& url);
    void draw_code(const QString& url);

    NetworkSelectionWindow& window;
    QLabel* status;
    QLabel* name = nullptr;
    QLabel* address = nullptr;
    QLabel* names = nullptr;
    QLabel* details = nullptr;
    QLabel* code = nullptr;
    QWidget* animation;
    QPushButton* access;
    QPushButton* restart = nullptr;
    QString coded_url;
};
