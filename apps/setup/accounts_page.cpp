#include "accounts_page.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "account_command.h"
#include "password_dialog.h"
#include "question.h"
#include "row_list.h"
#include "screen_pieces.h"
#include "section_title.h"

namespace {

QString role_text(const QString& role) {
    if (role == QStringLiteral("super")) {
        return QStringLiteral("Super-utilisateur");
    }
    return role == QStringLiteral("standard") ? QStringLiteral("Utilisateur standard")
                                              : QStringLiteral("Invité");
}

}  // namespace

AccountsPage::AccountsPage()
    : list(new RowList("account_list")),
      add_button(named("add_button", new QPushButton(QStringLiteral("Ajouter un compte")))) {
    setObjectName(QStringLiteral("accounts_page"));
    auto* page = new QVBoxLayout(this);
    page->addWidget(new QLabel(section_title(QStringLiteral("Comptes du réseau"))));
    page->addWidget(list, 1);
    page->addWidget(add_button, 0, Qt::AlignLeft);
    connect(add_button, &QPushButton::clicked, this, &AccountsPage::add_requested);
}

void AccountsPage::show_network(const RegisteredNetwork& shown) {
    network = shown;
    delete reading;
    reading = nullptr;
    const bool usable = !network.directory.empty() && has_project(network.directory);
    add_button->setEnabled(usable);
    if (network.directory.empty()) {
        list->show_text(QStringLiteral(
            "Il n'y a pas encore de réseau. Créez-en un d'abord : lancez Quorvale et cliquez sur "
            "« + Creer un Nouveau Reseau »."));
        return;
    }
    if (!usable) {
        list->show_text(project_missing(network.directory));
        return;
    }
    list->show_text(QStringLiteral("Lecture des comptes…"));
    reading = new QObject(this);
    run_account_command(
        *reading, network, {QStringLiteral("liste")}, {}, [this](int status, const QString& said) {
            if (status == 0) {
                show_accounts(said);
            } else {
                list->show_text(
                    QStringLiteral("Les comptes n'ont pas pu être lus. %1").arg(last_line(said)));
            }
        });
}

void AccountsPage::show_accounts(const QString& listed) {
    list->clear();
    const QStringList accounts = listed.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const auto supers = std::count_if(accounts.begin(), accounts.end(), [](const QString& account) {
        return account.startsWith(QStringLiteral("super\t"));
    });
    for (const QString& account : accounts) {
        const QStringList fields = account.split(QLatin1Char('\t'));
        const QString pseudonym = fields.value(1);
        const QString full_name = fields.value(2);
        list->add_row(
            full_name.isEmpty() ? pseudonym : QStringLiteral("%1 (%2)").arg(pseudonym, full_name),
            role_text(fields[0]));
        connect(list->add_button("password_button", QStringLiteral("Nouveau mot de passe")),
                &QPushButton::clicked, this, [=] { change_password(pseudonym); });
        auto* remove_button = list->add_button("remove_button", QStringLiteral("Supprimer"));
        connect(remove_button, &QPushButton::clicked, this, [=] { remove(pseudonym); });
        if (fields[0] == QStringLiteral("super") && supers == 1) {
            remove_button->setEnabled(false);
            remove_button->setToolTip(
                QStringLiteral("C'est le dernier super-utilisateur du réseau."));
        }
    }
    if (accounts.isEmpty()) {
        list->show_text(QStringLiteral("Ce réseau n'a pas encore de compte."));
    }
}

void AccountsPage::change_password(const QString& pseudonym) {
    PasswordDialog(network, pseudonym, window()).exec();
}

void AccountsPage::remove(const QString& pseudonym) {
    if (!confirmed(window(),
                   QStringLiteral("Supprimer le compte « %1 » du réseau « %2 » ?")
                       .arg(pseudonym, network.name),
                   QStringLiteral("Cette personne ne pourra plus se connecter. Les fichiers "
                                  "qu'elle a proposés restent."))) {
        return;
    }
    setEnabled(false);
    run_account_command(
        *this, network, {QStringLiteral("supprimer"), QStringLiteral("--"), pseudonym}, {},
        [this](int status, const QString& said) {
            setEnabled(true);
            if (status == 0) {
                show_network(network);
            } else {
                list->show_text(
                    QStringLiteral("Le compte n'a pas été supprimé. %1").arg(last_line(said)));
            }
        });
}
