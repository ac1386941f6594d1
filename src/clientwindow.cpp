#include "clientwindow.h"

#include <QLabel>
#include <QVBoxLayout>

#include "hub_utilities.h"
#include "network.h"
#include "open_url.h"
#include "screen_pieces.h"

ClientWindow::ClientWindow(QWidget* parent) : QDialog(parent) {
    setStyleSheet(QString::fromLatin1(white_page_style));
    setWindowTitle(QStringLiteral("Recherche de Reseaux"));
    searching_networks_mode();
    setFixedSize(600, 400);
}

ClientWindow::~ClientWindow() {
    qDeleteAll(networks);
}

void ClientWindow::searching_networks_mode() {
    auto* page = new QVBoxLayout(this);
    page->setSpacing(0);
    page->setContentsMargins(0, 0, 0, 0);
    page->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter | Qt::AlignTop);

    page->addWidget(
        named("search_animation", centred_animation(QStringLiteral("wifi.gif"), QSize(335, 335))));

    auto* text =
        named("search_text",
              new QLabel(QStringLiteral(
                  "<div style='font-size:24px;color:blue;margin-bottom:30px;  '> Recherche "
                  "d'un Reseau disponible ... </div>")));
    text->setAlignment(Qt::AlignCenter);
    page->addWidget(text);

    page->addWidget(new QLabel(
        QStringLiteral("<div style='margin-bottom:10px;'> </div><div style='margin-bottom:20px;'> "
                       "</div>")));

    servers = find_servers();
    if (servers.empty()) {
        return;
    }
    remove_layouts(nullptr);
    const std::vector<std::string> names = find_servers_names(servers);
    for (std::size_t i = 0; i < servers.size(); ++i) {
        networks.push_back(new Network(names[i], std::string(), servers[i]));
    }
    selecting_networks_mode();
}

void ClientWindow::selecting_networks_mode() {
    auto* title =
        named("list_title", new QLabel(QStringLiteral(
                                "<div><span style='font-size:40px;'> Liste des Reseaux disponibles "
                                "</span></div>")));
    title->setWordWrap(true);

    auto* list = named("network_list", new QWidget);
    auto* list_layout = new QVBoxLayout(list);
    list_layout->addWidget(
        named("list_caption", new QLabel(QStringLiteral("<div>Selectionner un Reseau </div>"))));

    auto* page = new QVBoxLayout;
    page->addWidget(title);
    page->addWidget(list);
    page->setAlignment(Qt::AlignTop);
    setLayout(page);
    setStyleSheet(QString());
    set_flat_background(*this, QStringLiteral("#fefefe"));

    add_network_buttons(networks, *list_layout, *this, SLOT(launch_netw(int)));
}

void ClientWindow::go_to_network(std::string address) {
    open_url(latin1_text("http://" + address));
    remove_layouts(nullptr);
    network_selected_mode();
}

void ClientWindow::network_selected_mode() {
    auto* page = new QVBoxLayout(this);
    page->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    page->setSpacing(20);

    page->addWidget(named("connected_animation",
                          centred_animation(QStringLiteral("vestrel.gif"), QSize(130, 130))));
    page->addWidget(
        named("connected_label", status_label(QStringLiteral("Vous etes connecte au reseau"),
                                              QStringLiteral("color: #0072c6;"))));
    page->addWidget(button_row(
        {{"access_button", QStringLiteral("Acceder a mon Espace"),
          QStringLiteral("QPushButton {  color: white; background-color: #0072c6; padding: 10px "
                         "20px; border: none; border-radius: 5px; }")},
         {"selection_button", QStringLiteral("Selection des Reseaux"),
          QStringLiteral("QPushButton { background-color: orange; color: #333; padding: 10px 20px; "
                         "border: none; border-radius: 5px; }")}}));
    page->addWidget(named(
        "information",
        new QLabel(QStringLiteral(
                       "<div style='margin-bottom:10px;color:whites;'> <b> Reseau : </b> "
                       "Brisquelle </div><div style='margin-bottom:10px;color:whites;'> <b> Hote : "
                       "</b> ") +
                   QString::fromLatin1(default_lan_host) + QStringLiteral(" </div>"))));
    setWindowTitle(QStringLiteral("Interface Client"));
}

void ClientWindow::remove_layouts(QWidget* /*widget*/) {
    clear_layout(*this);
}

void ClientWindow::launch_netw(int n) {
    go_to_network(networks[static_cast<std::size_t>(n)]->address);
}
