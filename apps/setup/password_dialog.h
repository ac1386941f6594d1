#pragma once

#include <QDialog>

#include "registered_networks.h"

class QLineEdit;

/// Asks for the new password of an account. Accepted once the account has it.
class PasswordDialog : public QDialog {
public:
    PasswordDialog(const RegisteredNetwork& account_network, const QString& account_pseudonym,
                   QWidget* parent);

    /// Asks the operator first when something is typed.
    void reject() override;

private:
    void save();
    void end(int status, const QString& said);

    RegisteredNetwork network;
    QString pseudonym;
    QLineEdit* password;
    QLineEdit* confirmation;
    QWidget* form;
};
