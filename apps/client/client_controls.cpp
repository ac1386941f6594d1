#include "client_controls.h"

#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalMapper>

#include "clientwindow.h"

ClientControls::ClientControls(ClientWindow& shown) : QObject(&shown), window(shown) {
    follow_list();
}

void ClientControls::follow_list() {
    // Every list has a mapper of its own, which outlives the list. The window's slot is called first.
    connect(window.findChildren<QSignalMapper*>(QStringLiteral("network_mapper")).last(),
            &QSignalMapper::mappedInt, this, &ClientControls::follow_connected_screen);
}

void ClientControls::follow_connected_screen(int index) {
    auto* access = window.findChild<QPushButton*>(QStringLiteral("access_button"));
    const auto* selection = window.findChild<QPushButton*>(QStringLiteral("selection_button"));
    // Queued, because each replaces the screen that holds its button.
    connect(
        access, &QPushButton::clicked, this, [this, index] { show_list(index)->click(); },
        Qt::QueuedConnection);
    connect(
        selection, &QPushButton::clicked, this, [this, index] { show_list(index)->setFocus(); },
        Qt::QueuedConnection);
    access->setFocus();
}

QPushButton* ClientControls::show_list(int index) {
    window.remove_layouts(nullptr);
    window.selecting_networks_mode();
    window.setWindowTitle(QStringLiteral("Recherche de Reseaux"));
    follow_list();
    return window.findChildren<QPushButton*>(QStringLiteral("network_button"))[index];
}

bool has_servers(const ClientWindow& window) {
    return window.findChild<QSignalMapper*>(QStringLiteral("network_mapper")) != nullptr;
}

bool wants_another_search(ClientWindow& window) {
    QMessageBox message(
        QMessageBox::Information, QStringLiteral("Aucun réseau trouvé"),
        QStringLiteral("Aucun réseau Quorvale n'a répondu.\n\n"
                       "Vérifiez que cette machine est reliée au même réseau local que le serveur, "
                       "par câble ou par wifi, que le serveur est démarré, et que son pare-feu "
                       "laisse entrer le port 8000."),
        QMessageBox::NoButton, &window);
    // The page's white background reaches the message, too; its text must not take a dark theme's.
    message.setStyleSheet(QStringLiteral("color: #333;"));
    const auto* again =
        message.addButton(QStringLiteral("Chercher de nouveau"), QMessageBox::AcceptRole);
    message.addButton(QStringLiteral("Fermer"), QMessageBox::RejectRole);
    // Not modal: the window behind it can still be closed.
    QEventLoop answered;
    QObject::connect(&message, &QDialog::finished, &answered, &QEventLoop::quit);
    QObject::connect(&window, &QDialog::finished, &answered, &QEventLoop::quit);
    message.show();
    answered.exec();
    return message.clickedButton() == again;
}
