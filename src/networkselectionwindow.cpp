#include "networkselectionwindow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QVBoxLayout>
#include <chrono>
#include <iostream>
#include <thread>

#include "hub_utilities.h"
#include "network.h"
#include "open_url.h"
#include "screen_pieces.h"

namespace {

QString banner_text() {
    return QStringLiteral(
        "<div><span style='font-size:60px;'> Quorvale </span></div> "
        "<div style='margin-top:1px;text-align:center;'> Modernisez la Gestion de vos ressources ");
}

}  // namespace

NetworkSelectionWindow::NetworkSelectionWindow(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Accueil Quorvale"));
    main_mode();
    setFixedSize(800, 400);
}

NetworkSelectionWindow::~NetworkSelectionWindow() {
    qDeleteAll(networks);
}

void NetworkSelectionWindow::main_mode() {
    setStyleSheet(QString::fromLatin1(white_page_style));

    auto* picture = named("home_picture", new QLabel);
    picture->setPixmap(QPixmap(QStringLiteral("img/people.jpeg")));
    picture->setScaledContents(true);
    picture->setFixedSize(400, 328);

    auto* banner = named("banner", new QLabel(banner_text()));
    banner->setWordWrap(true);

    auto* list_panel = named("network_list", new QWidget);
    auto* list_layout = new QVBoxLayout(list_panel);
    list_layout->addWidget(named(
        "create_label", new QLabel(QStringLiteral(
                            "<div style='color:blue;'><b> + Creer un Nouveau Reseau </b></div>"))));
    list_layout->addWidget(
        named("list_caption", new QLabel(QStringLiteral("<div>Reseaux disponibles </div>"))));
    read_hub_networks(&networks);
    for (std::size_t i = 0; i < networks.size(); ++i) {
        std::cout << i + 1 << "\n";
    }
    add_network_buttons(networks, *list_layout, *this, SLOT(fuck_tho(int)));

    auto* right_column = named("home_column", new QWidget);
    auto* right_layout = new QVBoxLayout(right_column);
    right_layout->addWidget(banner);
    right_layout->addWidget(list_panel);

    auto* container = new QWidget;
    auto* container_layout = new QHBoxLayout(container);
    container_layout->addWidget(picture);
    container_layout->addWidget(right_column);

    auto* page = new QVBoxLayout;
    page->addWidget(container);
    setLayout(page);
}

void NetworkSelectionWindow::loading_mode() {
    QLabel* animation = named("loading_animation",
                              animated_label(QStringLiteral("img/loading.gif"), QSize(300, 200)));
    animation->setScaledContents(true);

    auto* page = new QHBoxLayout;
    page->addWidget(animation);
    page->addWidget(named(
        "loading_text",
        new QLabel(QStringLiteral(
            "<div style='font-size:25px;text-align:center;'>Mise en place de l'environnement...</div> "
            "<div> Demarrage du Serveur"))));
    setLayout(page);
}

void NetworkSelectionWindow::switch_to_network(Network* network) {
    remove_layouts(nullptr);
    loading_mode();
    network->launch();
    if (network->is_launched() == 0) {
        return;
    }
    // The terminal appears before its server answers: give the server time to come up.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    remove_layouts(nullptr);
    open_url(latin1_text("http://" + getIp() + ":8000"));
    network_started_mode(network);
}

void NetworkSelectionWindow::network_started_mode(Network* /*network*/) {
    setStyleSheet(QString());
    set_flat_background(*this, QStringLiteral("#3399ff"));

    auto* page = new QVBoxLayout(this);
    page->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    page->setSpacing(20);

    page->addWidget(named("ready_animation",
                          centred_animation(QStringLiteral("vestrel.gif"), QSize(130, 130))));
    page->addWidget(named("ready_label", status_label(QStringLiteral("Votre Serveur est Pret"),
                                                      QStringLiteral("color: white;"))));
    page->addWidget(button_row(
        {{"access_button", QStringLiteral("Acceder a mon Espace"),
          QStringLiteral("QPushButton { background-color: white; color: #0072c6; padding: 10px "
                         "20px; border: none; border-radius: 5px; }")},
         {"stop_button", QStringLiteral("Arreter le Serveur"),
          QStringLiteral("QPushButton { background-color: red; color: white; padding: 10px 20px; "
                         "border: none; border-radius: 5px; }")}}));
    page->addWidget(named(
        "information",
        new QLabel(QStringLiteral(
                       "<div style='margin-bottom:10px;color:white;'> <b> Reseau : </b> Brisquelle "
                       "</div><div style='margin-bottom:10px;color:white;'> <b> Adresse : </b> ") +
                   QString::fromLatin1(default_lan_host) +
                   QStringLiteral(
                       " </div><div style='margin-bottom:10px;color:white;'> <b> Port : </b> 8000 "
                       "</div>"))));
    setWindowTitle(QStringLiteral("Quorvale : Brisquelle"));
}

void NetworkSelectionWindow::new_network_mode() {
    setStyleSheet(QString::fromLatin1(white_page_style));

    auto* page = new QVBoxLayout;
    page->addWidget(
        named("back_link", new QLabel(QStringLiteral("<a href='#'>Retour a la Selection</a> "))));
    page->addWidget(
        named("form_title",
              new QLabel(QStringLiteral(
                  " <div style='font-size:30px;font-weight:bold;'> Nouveau Reseau </div>"))));
    page->addWidget(form_panel(
        {{QStringLiteral("Nom du Réseau :               "), named("name_field", new QLineEdit)},
         {QStringLiteral("Chemin d'Acces :              "), named("path_field", new QLineEdit)},
         {QStringLiteral("Pseudo de l'Administrateur :  "),
          named("pseudonym_field", new QLineEdit)},
         {QStringLiteral("Mot de Passe de l'Administrateur : "),
          named("password_field", new QLineEdit)},
         {QStringLiteral("Confirmation de Mot de Passe : "),
          named("confirmation_field", new QLineEdit)}},
        QStringLiteral("Enregistrer le Reseau")));
    setLayout(page);
}

void NetworkSelectionWindow::remove_layouts(QWidget* /*widget*/) {
    clear_layout(*this);
}

void NetworkSelectionWindow::clean_screen() {
    remove_layouts(nullptr);
}

void NetworkSelectionWindow::fuck_tho(int n) {
    switch_to_network(networks[static_cast<std::size_t>(n)]);
}

void NetworkSelectionWindow::testBtn() {
    std::cout << "dsdsd";
}
