#pragma once

#include <QWidget>

#include "registered_networks.h"

class QPushButton;
class RowList;

/// The accounts of a network, each with the actions for it.
class AccountsPage : public QWidget {
    Q_OBJECT

public:
    AccountsPage();

    /// Shows the accounts of a network, once its project has listed them.
    void show_network(const RegisteredNetwork& shown);

signals:
    /// The operator wants to add an account.
    void add_requested();

private:
    void show_accounts(const QString& listed);
    void change_password(const QString& pseudonym);
    void remove(const QString& pseudonym);

    RegisteredNetwork network;
    RowList* list;
    QPushButton* add_button;
    QObject* reading = nullptr;  ///< owns the command that lists them; belongs to the page
};
