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
/// project make the account, while the window goes on. Belongs to the window.
class AccountForm : public QObject {
public:
    explicit AccountForm(SetupWindow& shown);

private:
    enum Field { pseudonym, name, password, confirmation };

    void save();
    /// Returns whether all fields can be sent; says what is wrong at those that cannot.
    bool check();
    /// Returns the only network, or the one that the operator chooses; none, when there is none or
    /// the choice is given up.
    RegisteredNetwork choose_network();
    void make_account(const RegisteredNetwork& network);
    void end(const RegisteredNetwork& network, int status, const QString& said);
    void set_busy(bool busy);
    void show_failure(const QString& reason);
    void show_result(const QString& text, const char* colour);

    SetupWindow& window;
    QVector<QLineEdit*> fields;
    QComboBox* role;
    QPushButton* save_button;
    QLabel* result;
};
