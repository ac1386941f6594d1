#include "creation_form.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

#include "background_command.h"
#include "form_state.h"
#include "label_button.h"
#include "network_creation.h"
#include "network_names.h"
#include "networkselectionwindow.h"
#include "question.h"
#include "screen_pieces.h"

CreationForm::CreationForm(NetworkSelectionWindow& shown)
    : QObject(&shown), window(shown), reserved_names(python_names()) {
    window.clean_screen();
    window.new_network_mode();
    for (const char* field :
         {"name_field", "path_field", "pseudonym_field", "password_field", "confirmation_field"}) {
        fields << window.findChild<QLineEdit*>(QLatin1String(field));
    }
    save_button = window.findChild<QPushButton*>(QStringLiteral("save_button"));
    save_text = save_button->text();
    back_link = window.findChild<QLabel*>(QStringLiteral("back_link"));

    fields[name]->setMaxLength(max_name_length);
    fields[path]->setReadOnly(true);
    fields[path]->setFocusPolicy(Qt::ClickFocus);
    fields[password]->setEchoMode(QLineEdit::Password);
    fields[confirmation]->setEchoMode(QLineEdit::Password);
    fields[name]->setFocus();
    save_button->setDefault(true);
    window.layout()->setAlignment(back_link, Qt::AlignLeft);  // only the text reacts to clicks

    connect(fields[name], &QLineEdit::textChanged, this, &CreationForm::show_path);
    connect(save_button, &QPushButton::clicked, this, &CreationForm::save);
    connect(new LabelButton(*back_link), &LabelButton::pressed, this, &CreationForm::leave);
}

bool CreationForm::is_busy() const {
    return busy;
}

bool CreationForm::may_leave() {
    const bool typed = std::any_of(fields.begin(), fields.end(),
                                   [](const QLineEdit* field) { return !field->text().isEmpty(); });
    return busy || !typed ||
           confirmed(&window, QStringLiteral("Quitter ce formulaire ?"),
                     QStringLiteral("Ce que vous y avez écrit sera perdu."));
}

void CreationForm::leave() {
    if (may_leave()) {
        emit left();
    }
}

QString CreationForm::typed_name() const {
    return clean_name(fields[name]->text());
}

void CreationForm::show_path() {
    const QString typed = typed_name();
    fields[path]->setText(typed.isEmpty()
                              ? QString()
                              : QDir::current().filePath(directory_name(typed, reserved_names)));
    fields[path]->setToolTip(fields[path]->text());
}

void CreationForm::refuse(Field field, const QString& reason) {
    refused = true;
    refuse_field(*fields[field], reason.left(1).toUpper() + reason.mid(1));
}

bool CreationForm::check() {
    refused = false;
    clear_refusals(*save_button->parentWidget());
    const QString typed = typed_name();
    const QString reason = creation_refusal(typed, directory_name(typed, reserved_names));
    if (!reason.isEmpty()) {
        refuse(name, reason);
    }
    if (fields[pseudonym]->text().trimmed().isEmpty()) {
        refuse(pseudonym, QStringLiteral("Donnez un pseudo à l'administrateur."));
    }
    const bool fit = check_password(*fields[password], *fields[confirmation]);
    return fit && !refused;
}

void CreationForm::save() {
    if (check()) {
        set_busy(true);
        create();
    }
}

void CreationForm::set_busy(bool now_busy) {
    busy = now_busy;
    // The program outlives a window closed meanwhile, until the creation has ended.
    QApplication::setQuitOnLastWindowClosed(!busy);
    set_form_busy(*save_button->parentWidget(), busy);
    back_link->setEnabled(!busy);
    // In the button: a large font leaves no room for another line.
    save_button->setText(busy ? QStringLiteral("Création en cours…") : save_text);
}

void CreationForm::create() {
    run_in_background(*this,
                      {program_path("quorvale-new"), QStringLiteral("--admin"),
                       fields[pseudonym]->text().trimmed(), QStringLiteral("--"), typed_name()},
                      QDir::currentPath(), fields[password]->text().toUtf8(),
                      [this](int status, const QString& said) { end_creation(status, said); });
}

void CreationForm::end_creation(int status, const QString& said) {
    set_busy(false);
    if (!window.isVisible()) {
        QCoreApplication::quit();
        return;
    }
    switch (status) {
        case created_whole:
            emit created(latin1_text(registry_name(typed_name())));
            return;
        case password_refused:
            refuse(password, said);
            return;
        case pseudonym_refused:
            refuse(pseudonym, said);
            return;
        default:  // without the name of the network, which the line begins with
            refuse(name, last_line(said).section(QStringLiteral(" : "), -1));
    }
}
