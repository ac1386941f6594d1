#include "client_controls.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalMapper>
#include <algorithm>

#include "address_dialog.h"
#include "clientwindow.h"
#include "network.h"
#include "network_list.h"
#include "screen_pieces.h"
#include "server_request.h"

namespace {

const QString again_text = QStringLiteral("Chercher de nouveau");
const QString other_text = QStringLiteral("Autre adresse…");

void search() {
    QApplication::exit(ClientControls::search_again);
}

/// Names a message over the window. The page's white background reaches it, too: its text must not
/// take a dark theme's colour.
void set_up(QMessageBox& message, const char* name) {
    message.setObjectName(QLatin1String(name));
    message.setTextFormat(Qt::PlainText);
    message.setStyleSheet(QStringLiteral("color: #333;"));
}

}  // namespace

ClientControls::ClientControls(ClientWindow& shown) : QObject(&shown), window(shown) {
    if (window.found_networks().empty()) {
        report_nothing_found();
    } else {
        complete_list(0);
    }
}

void ClientControls::complete_list(int focused) {
    auto* list = new NetworkList(window);
    QVector<NetworkEntry> entries;
    for (const Network* network : window.found_networks()) {
        entries.push_back({latin1_text(network->name), latin1_text(network->address)});
    }
    list->show_entries(entries);
    // In place of the window's own slot: a server is first asked whether it is still there.
    auto* mapper = window.findChild<QSignalMapper*>(QStringLiteral("network_mapper"));
    mapper->disconnect(&window);
    connect(mapper, &QSignalMapper::mappedInt, this, &ClientControls::choose);

    auto* row = named("list_buttons", new QWidget);
    auto* buttons = new QHBoxLayout(row);
    buttons->setContentsMargins(0, 0, 0, 0);
    auto* other = named("other_button", new QPushButton(other_text));
    auto* again = named("again_button", new QPushButton(again_text));
    buttons->addWidget(other);
    buttons->addWidget(again);
    window.layout()->addWidget(row);
    connect(other, &QPushButton::clicked, this, &ClientControls::ask_address);
    connect(again, &QPushButton::clicked, this, &search);
    if (focused < entries.size()) {
        list->focus(focused);
    } else {
        other->setFocus();
    }
}

void ClientControls::show_list() {
    window.remove_layouts(nullptr);
    delete window.findChild<QSignalMapper*>(QStringLiteral("network_mapper"));  // the old list's
    window.selecting_networks_mode();
    window.setWindowTitle(QStringLiteral("Recherche de Reseaux"));
    complete_list(chosen);
}

void ClientControls::choose(int index) {
    chosen = index;
    const Network& network = *window.found_networks()[static_cast<std::size_t>(index)];
    open_server(network.address, latin1_text(network.name));
}

void ClientControls::open_server(const std::string& address, const QString& name) {
    if (asking) {
        return;  // it is the second of two clicks
    }
    asking = true;
    window.setCursor(Qt::BusyCursor);
    ask_server(*this, latin1_text(address), [=](const QString& answer) {
        asking = false;
        window.unsetCursor();
        if (answer.isNull()) {
            report_silence(address, name);
        } else {
            show_connected(address, answer);
        }
    });
}

void ClientControls::show_connected(const std::string& address, const QString& name) {
    window.go_to_network(address);
    const QString line =
        QStringLiteral("<div style='margin-bottom:10px;'> <b> %1 : </b> %2 </div>");
    auto* information = window.findChild<QLabel*>(QStringLiteral("information"));
    information->setWordWrap(true);
    information->setTextInteractionFlags(Qt::TextSelectableByMouse);
    information->setText(
        line.arg(QStringLiteral("Reseau"), name.toHtmlEscaped()) +
        line.arg(QStringLiteral("Adresse"), latin1_text("http://" + address).toHtmlEscaped()));
    auto* access = window.findChild<QPushButton*>(QStringLiteral("access_button"));
    const auto* selection = window.findChild<QPushButton*>(QStringLiteral("selection_button"));
    // Queued, because each replaces the screen that holds its button.
    connect(
        access, &QPushButton::clicked, this, [=] { open_server(address, name); },
        Qt::QueuedConnection);
    connect(selection, &QPushButton::clicked, this, &ClientControls::show_list,
            Qt::QueuedConnection);
    access->setFocus();
}

void ClientControls::ask_address() {
    AddressDialog dialog(&window);
    if (dialog.exec() == QDialog::Accepted) {
        show_connected(dialog.address().toStdString(), dialog.name());
    } else if (window.findChild<QSignalMapper*>(QStringLiteral("network_mapper")) == nullptr) {
        report_nothing_found();
    }
}

void ClientControls::report_silence(const std::string& address, const QString& name) {
    QMessageBox message(QMessageBox::Warning, QStringLiteral("Quorvale"),
                        QStringLiteral("Le réseau « %1 » ne répond plus à l'adresse %2.\n\n"
                                       "Il a peut-être été arrêté, ou son adresse a changé.")
                            .arg(name, latin1_text(address)),
                        QMessageBox::NoButton, &window);
    set_up(message, "silence_message");
    const auto* again = message.addButton(again_text, QMessageBox::AcceptRole);
    message.addButton(QStringLiteral("Fermer"), QMessageBox::RejectRole);
    message.exec();
    if (message.clickedButton() == again) {
        search();
    }
}

void ClientControls::report_nothing_found() {
    auto* message = new QMessageBox(
        QMessageBox::Information, QStringLiteral("Aucun réseau trouvé"),
        QStringLiteral("Aucun réseau Quorvale n'a répondu.\n\n"
                       "Vérifiez que cette machine est reliée au même réseau local que le serveur, "
                       "par câble ou par wifi, que le serveur est démarré, et que son pare-feu "
                       "laisse entrer le port 8000."),
        QMessageBox::NoButton, &window);
    set_up(*message, "nothing_found_message");
    const auto* again = message->addButton(again_text, QMessageBox::AcceptRole);
    const auto* other = message->addButton(other_text, QMessageBox::ActionRole);
    message->addButton(QStringLiteral("Fermer"), QMessageBox::RejectRole);
    // Not modal: the window behind it can still be closed.
    connect(&window, &QDialog::finished, message, &QWidget::close);
    connect(message, &QDialog::finished, this, [=] {
        message->deleteLater();
        if (message->clickedButton() == again) {
            search();
        } else if (message->clickedButton() == other) {
            ask_address();
        } else {
            window.close();
        }
    });
    message->show();
}
