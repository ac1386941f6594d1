#include "account_form.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "background_command.h"
#include "creation_status.h"
#include "form_state.h"
#include "setupwindow.h"

namespace {

/// What the command calls the roles, in the order of the list.
const char* const roles[] = {"super", "standard", "invite"};

QDir project_of(const RegisteredNetwork& network) {
    return {QFile::decodeName(network.directory.c_str())};
}

/// Why no account can be made in the network, or an empty text.
QString obstacle(const RegisteredNetwork& network) {
    if (!has_project(network.directory)) {
        return QStringLiteral("Le réseau « %1 » :\n").arg(network.name) +
               project_missing(network.directory);
    }
    return {};
}

}  // namespace

AccountForm::AccountForm(SetupWindow& shown)
    : QObject(&shown),
      window(shown),
      role(shown.findChild<QComboBox*>(QStringLiteral("role_list"))),
      save_button(shown.findChild<QPushButton*>(QStringLiteral("save_button"))),
      result(new QLabel) {
    for (const char* field :
         {"pseudonym_field", "name_field", "password_field", "confirmation_field"}) {
        fields << window.findChild<QLineEdit*>(QLatin1String(field));
    }
    fields[password]->setEchoMode(QLineEdit::Password);
    fields[confirmation]->setEchoMode(QLineEdit::Password);
    save_button->setDefault(true);
    result->setWordWrap(true);
    result->setTextFormat(Qt::PlainText);  // whatever a network's name holds
    result->hide();
    // Room for a result of two lines, also with a large font.
    QWidget* panel = save_button->parentWidget();
    panel->layout()->setContentsMargins(10, 6, 10, 0);
    QLayout* section = panel->parentWidget()->layout();
    section->setContentsMargins(10, 10, 10, 0);
    section->setSpacing(0);
    section->addWidget(result);
    connect(save_button, &QPushButton::clicked, this, &AccountForm::save);
}

void AccountForm::save() {
    if (!check()) {
        return;
    }
    const RegisteredNetwork network = choose_network();
    if (network.directory.empty()) {
        return;
    }
    const QString reason = obstacle(network);
    if (!reason.isEmpty()) {
        show_failure(reason);
        return;
    }
    make_account(network);
}

bool AccountForm::check() {
    result->hide();
    accept_fields(*save_button->parentWidget());
    bool fit = true;
    const auto refuse = [&](Field field, const QString& reason) {
        fit = false;
        refuse_field(*fields[field], reason);
    };
    if (fields[pseudonym]->text().trimmed().isEmpty()) {
        refuse(pseudonym, QStringLiteral("Donnez un pseudonyme."));
    }
    if (fields[name]->text().trimmed().isEmpty()) {
        refuse(name, QStringLiteral("Donnez un nom."));
    }
    return check_password(*fields[password], *fields[confirmation]) && fit;
}

RegisteredNetwork AccountForm::choose_network() {
    const std::vector<RegisteredNetwork> networks = registered_networks();
    if (networks.empty()) {
        show_failure(QStringLiteral(
            "Il n'y a pas encore de réseau. Créez-en un d'abord : lancez Quorvale et cliquez sur "
            "« + Creer un Nouveau Reseau »."));
        return {};
    }
    if (networks.size() == 1) {
        return networks[0];
    }
    QStringList names;
    for (const RegisteredNetwork& network : networks) {
        names += network.name;
    }
    QInputDialog choice(&window);
    choice.setWindowTitle(QStringLiteral("Choix du réseau"));
    choice.setLabelText(QStringLiteral("Dans quel réseau ajouter ce compte ?"));
    choice.setComboBoxItems(names);
    choice.setOkButtonText(QStringLiteral("Choisir"));
    choice.setCancelButtonText(QStringLiteral("Annuler"));
    if (choice.exec() != QDialog::Accepted) {
        return {};
    }
    // By its place: two networks may have the same name.
    const auto* list = choice.findChild<QComboBox*>();
    return networks[static_cast<std::size_t>(list->currentIndex())];
}

void AccountForm::make_account(const RegisteredNetwork& network) {
    set_busy(true);
    run_in_background(
        *this,
        {QStringLiteral("python3"), QStringLiteral("manage.py"), QStringLiteral("compte"),
         QString::fromLatin1(roles[role->currentIndex()]), QStringLiteral("--"),
         fields[pseudonym]->text().trimmed(), fields[name]->text().simplified()},
        project_of(network).absolutePath(), fields[password]->text().toUtf8(),
        [=](int status, const QString& said) { end(network, status, said); });
}

void AccountForm::end(const RegisteredNetwork& network, int status, const QString& said) {
    set_busy(false);
    switch (status) {
        case created_whole:
            show_result(QStringLiteral("Le compte « %1 » est ajouté au réseau « %2 ».")
                            .arg(fields[pseudonym]->text().trimmed(), network.name),
                        "#1b5e20");
            for (QLineEdit* field : fields) {
                field->clear();
            }
            fields[pseudonym]->setFocus();
            return;
        case password_refused:
            refuse_field(*fields[password], said);
            return;
        case pseudonym_refused:
            refuse_field(*fields[pseudonym], said);
            return;
        default:
            show_failure(QStringLiteral("Le compte n'a pas été ajouté. %1")
                             .arg(said.section(QLatin1Char('\n'), -1)));
    }
}

void AccountForm::set_busy(bool busy) {
    set_form_busy(*save_button->parentWidget(), busy);
    if (busy) {
        show_result(QStringLiteral("Ajout du compte en cours…"), "#0b3c66");
    } else {
        save_button->setFocus();  // the form has lost it
        result->hide();
    }
}

void AccountForm::show_failure(const QString& reason) {
    show_result(reason, "#b00020");
}

void AccountForm::show_result(const QString& text, const char* colour) {
    result->setStyleSheet(QStringLiteral("color:%1;font-size:12px;").arg(QLatin1String(colour)));
    result->setText(text);
    result->show();
}
