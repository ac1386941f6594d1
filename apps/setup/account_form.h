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
    /// Makes the form ready for a new account; call it when it is shown.
    void start();
    /// Returns whether it holds input that was not sent.
    bool has_input() const;

signals:
    /// The operator wants to go back to the accounts.
    void left();

private:
    enum Field { pseudonym, name, password, confirmation };

    void complete_section();
    /// Shows what an account of the chosen role may do.
    void explain_role(int chosen_role);
    void save();
    /// Returns whether all fields can be sent; shows what is wrong with those that cannot.
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
