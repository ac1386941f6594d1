#include "password_dialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "account_command.h"
#include "creation_status.h"
#include "form_state.h"
#include "question.h"
#include "screen_pieces.h"

PasswordDialog::PasswordDialog(const RegisteredNetwork& account_network,
                               const QString& account_pseudonym, QWidget* parent)
    : QDialog(parent),
      network(account_network),
      pseudonym(account_pseudonym),
      password(named("password_field", new QLineEdit)),
      confirmation(named("confirmation_field", new QLineEdit)),
      form(form_panel({{QStringLiteral("Nouveau mot de passe :"), password},
                       {QStringLiteral("Confirmation :"), confirmation}},
                      QStringLiteral("Enregistrer"))) {
    setObjectName(QStringLiteral("password_dialog"));
    setStyleSheet(QStringLiteral("#password_dialog { background: #fff; } QLabel { color: #333; }"));
    setWindowTitle(QStringLiteral("Mot de passe de « %1 »").arg(pseudonym));
    auto* page = new QVBoxLayout(this);
    page->addWidget(form);
    page->setSizeConstraint(QLayout::SetFixedSize);
    password->setEchoMode(QLineEdit::Password);
    confirmation->setEchoMode(QLineEdit::Password);
    auto* save_button = form->findChild<QPushButton*>(QStringLiteral("save_button"));
    save_button->setDefault(true);
    connect(save_button, &QPushButton::clicked, this, &PasswordDialog::save);
}

void PasswordDialog::reject() {
    const bool typed = !password->text().isEmpty() || !confirmation->text().isEmpty();
    if (form->isEnabled() && typed &&
        !confirmed(this, QStringLiteral("Fermer sans changer le mot de passe ?"),
                   QStringLiteral("Ce qui est écrit sera perdu."))) {
        return;
    }
    QDialog::reject();
}

void PasswordDialog::save() {
    clear_refusals(*form);
    if (!check_password(*password, *confirmation)) {
        return;
    }
    set_form_busy(*form, true);
    run_account_command(
        *this, network, {QStringLiteral("mot-de-passe"), QStringLiteral("--"), pseudonym},
        password->text(), [this](int status, const QString& said) { end(status, said); });
}

void PasswordDialog::end(int status, const QString& said) {
    set_form_busy(*form, false);
    if (status == 0) {
        accept();
        return;
    }
    const QString reason = status == password_refused ? said : last_line(said);
    refuse_field(*password, reason.isEmpty() ? QStringLiteral("Il n'a pas été changé.") : reason);
}
