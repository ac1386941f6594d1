#include "address_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "screen_pieces.h"
#include "server_request.h"

AddressDialog::AddressDialog(QWidget* parent)
    : QDialog(parent),
      field(named("address_field", new QLineEdit)),
      state(named("address_state", new QLabel)) {
    setObjectName(QStringLiteral("address_dialog"));
    setStyleSheet(QStringLiteral("#address_dialog { background: #fff; } QLabel { color: #333; }"));
    setWindowTitle(QStringLiteral("Autre adresse"));
    auto* page = new QVBoxLayout(this);
    auto* label = new QLabel(QStringLiteral("Adresse du serveur, celle que son écran affiche :"));
    label->setBuddy(field);
    page->addWidget(label);
    field->setPlaceholderText(QStringLiteral("192.0.2.10 ou 192.0.2.10:8000"));
    page->addWidget(field);
    state->setWordWrap(true);
    state->setMinimumSize(420, 2 * state->fontMetrics().lineSpacing());
    page->addWidget(state);

    auto* buttons = new QDialogButtonBox;
    open_button = buttons->addButton(QStringLiteral("Ouvrir"), QDialogButtonBox::ActionRole);
    open_button->setObjectName(QStringLiteral("open_button"));
    open_button->setDefault(true);
    buttons->addButton(QStringLiteral("Annuler"), QDialogButtonBox::RejectRole);
    page->addWidget(buttons);
    connect(open_button, &QPushButton::clicked, this, &AddressDialog::ask);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

const QString& AddressDialog::address() const {
    return server;
}

const QString& AddressDialog::name() const {
    return server_name;
}

void AddressDialog::ask() {
    server = server_address(field->text());
    if (server.isEmpty()) {
        say(QStringLiteral("Ce n'est pas une adresse. Exemple : 192.0.2.10, ou 192.0.2.10:8000."),
            "#b00020");
        return;
    }
    field->setReadOnly(true);  // not disabled, or the focus would go to the other button
    open_button->setEnabled(false);
    say(QStringLiteral("%1 est appelé…").arg(server), "#0b3c66");
    ask_server(*this, server, [this](const QString& answer) { take_answer(answer); });
}

void AddressDialog::take_answer(const QString& answer) {
    if (!answer.isNull()) {
        server_name = answer;
        accept();
        return;
    }
    field->setReadOnly(false);
    open_button->setEnabled(true);
    field->selectAll();
    say(QStringLiteral("Aucun réseau Quorvale n'a répondu à l'adresse %1.").arg(server), "#b00020");
}

void AddressDialog::say(const QString& text, const char* colour) {
    state->setStyleSheet(QStringLiteral("color: %1;").arg(QLatin1String(colour)));
    state->setText(text);
}
