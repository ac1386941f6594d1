#include "account_form.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

#include "account_command.h"
#include "creation_status.h"
#include "form_state.h"
#include "screen_pieces.h"
#include "section_title.h"
#include "setupwindow.h"

namespace {

struct Role {
    const char* name;    ///< as the command takes it
    const char* rights;  ///< in French
};

/// In the order of the list.
const Role roles[] = {
    {"super",
     "Super-utilisateur : propose et supprime des fichiers, reçoit ceux des visiteurs, et "
     "gère les comptes du réseau."},
    {"standard",
     "Propose et supprime des fichiers, et reçoit ceux des visiteurs. Ne gère pas les "
     "comptes."},
    {"invite", "N'a aucun droit de plus qu'un visiteur."}};
const int standard = 1;

}  // namespace

AccountForm::AccountForm(SetupWindow& shown)
    : QObject(&shown),
      window(shown),
      role(shown.findChild<QComboBox*>(QStringLiteral("role_list"))),
      save_button(shown.findChild<QPushButton*>(QStringLiteral("save_button"))),
      explanation(named("role_explanation", new QLabel)),
      result(named("result", new QLabel)) {
    for (const char* field :
         {"pseudonym_field", "name_field", "password_field", "confirmation_field"}) {
        fields << window.findChild<QLineEdit*>(QLatin1String(field));
    }
    fields[password]->setEchoMode(QLineEdit::Password);
    fields[confirmation]->setEchoMode(QLineEdit::Password);
    save_button->setDefault(true);
    save_button->setText(QStringLiteral("Enregistrer le compte"));
    complete_section();
    connect(role, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &AccountForm::explain_role);
    role->setCurrentIndex(standard);
    connect(save_button, &QPushButton::clicked, this, &AccountForm::save);
}

void AccountForm::complete_section() {
    auto* panel = window.findChild<QWidget*>(QStringLiteral("form"));
    auto* grid = static_cast<QGridLayout*>(panel->layout());
    grid->setContentsMargins(10, 6, 10, 0);
    window.findChild<QLabel*>(QStringLiteral("role_list_label"))
        ->setText(QStringLiteral("Ce que peut ce compte :"));
    auto* back = named("back_button", new QPushButton(QStringLiteral("Retour aux comptes")));
    back->setAutoDefault(false);
    grid->addWidget(back, grid->rowCount() - 1, 1, Qt::AlignBottom);  // beside the other button
    connect(back, &QPushButton::clicked, this, &AccountForm::left);

    window.findChild<QWidget*>(QStringLiteral("section_heading"))->hide();
    window.findChild<QLabel*>(QStringLiteral("section_title"))
        ->setText(section_title(QStringLiteral("Ajouter un compte")));
    QLayout* section = panel->parentWidget()->layout();
    section->setContentsMargins(10, 5, 10, 0);
    section->setSpacing(0);
    explanation->setStyleSheet(QStringLiteral("color:#333;margin:4px 10px;"));
    for (QLabel* label : {explanation, result}) {
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);  // whatever a network's name holds
        section->addWidget(label);
    }
    explanation->setMinimumHeight(3 * explanation->fontMetrics().lineSpacing());
    result->setMinimumHeight(2 * result->fontMetrics().lineSpacing());
    QSizePolicy kept = result->sizePolicy();
    kept.setRetainSizeWhenHidden(true);  // the window does not grow with it
    result->setSizePolicy(kept);
    result->hide();
}

void AccountForm::set_network(const RegisteredNetwork& account_network) {
    network = account_network;
}

void AccountForm::start() {
    result->hide();
    clear_refusals(*save_button->parentWidget());
    fields[pseudonym]->setFocus();
}

bool AccountForm::has_input() const {
    return std::any_of(fields.begin(), fields.end(),
                       [](const QLineEdit* field) { return !field->text().isEmpty(); });
}

void AccountForm::explain_role(int chosen_role) {
    explanation->setText(QString::fromUtf8(roles[chosen_role].rights));
}

void AccountForm::save() {
    if (!check()) {
        return;
    }
    if (!has_project(network.directory)) {
        show_failure(project_missing(network.directory));
        return;
    }
    set_busy(true);
    run_account_command(
        *this, network,
        {QString::fromLatin1(roles[role->currentIndex()].name), QStringLiteral("--"),
         fields[pseudonym]->text().trimmed(), fields[name]->text().simplified()},
        fields[password]->text(),
        [this, to = network.name](int status, const QString& said) { end(status, said, to); });
}

bool AccountForm::check() {
    result->hide();
    clear_refusals(*save_button->parentWidget());
    bool fit = true;
    const auto refuse = [&](Field field, const QString& reason) {
        fit = false;
        refuse_field(*fields[field], reason);
    };
    if (fields[pseudonym]->text().trimmed().isEmpty()) {
        refuse(pseudonym, QStringLiteral("Donnez un pseudo."));
    }
    if (fields[name]->text().trimmed().isEmpty()) {
        refuse(name, QStringLiteral("Donnez un nom."));
    }
    return check_password(*fields[password], *fields[confirmation]) && fit;
}

void AccountForm::end(int status, const QString& said, const QString& network_name) {
    set_busy(false);
    switch (status) {
        case created_whole:
            show_result(QStringLiteral("Le compte « %1 » est ajouté au réseau « %2 ».")
                            .arg(fields[pseudonym]->text().trimmed(), network_name),
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
            show_failure(QStringLiteral("Le compte n'a pas été ajouté. %1").arg(last_line(said)));
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
    result->setStyleSheet(QStringLiteral("color:%1;").arg(QLatin1String(colour)));
    result->setText(text);
    result->show();
}
