#pragma once

#include <QObject>
#include <QVector>

#include "registered_networks.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class SetupWindow;

/// Makes the form of the configuration window work: checks what is typed and has the network's own
/// project create the account, without blocking the window. Belongs to the window.
class AccountForm : public QObject {
    Q_OBJECT

public:
    explicit AccountForm(SetupWindow& shown);

    /// The network that new accounts are for.
    void set_network(const RegisteredNetwork& account_network);
    /// To be called when the form is shown.
    void start();
    /// Returns whether something is typed that was not sent.
    bool holds_something() const;

signals:
    /// The operator wants back to the accounts.
    void left();

private:
    enum Field { pseudonym, name, password, confirmation };

    void complete_section();
    /// Says what an account of the chosen kind may do.
    void explain_role(int chosen_role);
    void save();
    /// Returns whether all fields can be sent; says what is wrong at those that cannot.
    bool check();
    /// `network_name` is the network that the account was for: another may have been chosen since.
    void end(int status, const QString& said, const QString& network_name);
    void set_busy(bool busy);
    void show_failure(const QString& reason);
    void show_result(const QString& text, const char* colour);

    SetupWindow& window;
    RegisteredNetwork network;
    QVector<QLineEdit*> fields;
    QComboBox* role;
    QPushButton* save_button;
    QLabel* explanation;
    QLabel* result;
};
