#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

/// Asks for the address of a server that the search does not find. Accepted only once that server
/// has answered.
class AddressDialog : public QDialog {
public:
    explicit AddressDialog(QWidget* parent);

    /// Returns the server's address, host:port.
    const QString& address() const;
    /// Returns the server's name, which may be empty.
    const QString& name() const;

private:
    void ask();
    void take_answer(const QString& answer);
    void say(const QString& text, const char* colour);

    QLineEdit* field;
    QLabel* state;
    QPushButton* open_button;
    QString server;
    QString server_name;
};
