#include "setupwindow.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QVBoxLayout>

#include "screen_pieces.h"

namespace {

QWidget* sidebar_item(const char* name, const QString& icon_file, int icon_width,
                      const QString& caption_text) {
    auto* icon = new QLabel;
    icon->setPixmap(QPixmap(icon_file));
    icon->setScaledContents(true);
    icon->setFixedSize(icon_width, 40);
    icon->setAlignment(Qt::AlignCenter);

    auto* caption = named("caption", new QLabel(caption_text));
    caption->setAlignment(Qt::AlignCenter);

    auto* item = named(name, new QWidget);
    auto* layout = new QVBoxLayout(item);
    layout->addWidget(icon);
    layout->addWidget(caption);
    layout->setAlignment(Qt::AlignCenter);
    layout->setContentsMargins(0, 0, 0, 0);
    return item;
}

QWidget* sidebar() {
    auto* bar = named("sidebar", new QWidget);
    auto* layout = new QVBoxLayout(bar);
    layout->setSpacing(30);
    layout->addWidget(sidebar_item(
        "appearance_item", QStringLiteral("img/image-regular.svg"), 45,
        QStringLiteral("<div style='color:black;text-align:center;'> Apparence </div>")));
    layout->addWidget(sidebar_item(
        "users_item", QStringLiteral("img/users-solid.svg"), 45,
        QStringLiteral("<div style='color:#0072c6;text-align:center;'> Utilisateurs </div>")));
    layout->addWidget(sidebar_item(
        "directories_item", QStringLiteral("img/folder-open-solid.svg"), 50,
        QStringLiteral("<div style='color:black;text-align:center;'> Repertoires </div>")));
    layout->addWidget(sidebar_item(
        "networks_item", QStringLiteral("img/network-wired-solid.svg"), 50,
        QStringLiteral("<div style='color:black;text-align:center;'> Réseaux </div>")));
    bar->setStyleSheet(QStringLiteral("background-color: #fff; color: #333;"));
    return bar;
}

QWidget* users_section() {
    auto* section = named("users_section", new QWidget);
    auto* layout = new QVBoxLayout(section);
    layout->addWidget(
        named("section_heading", new QLabel(QStringLiteral("Configuration des Utilisateurs"))));
    layout->addWidget(named(
        "section_title",
        new QLabel(QStringLiteral(" <div style='font-size:30px;font-weight:bold;'> Ajouter un "
                                  "super-utilisateur </div>"))));
    section->setStyleSheet(QStringLiteral("background:#fff;"));

    auto* role = named("role_list", new QComboBox);
    role->addItems({QStringLiteral("Brisquelle"), QStringLiteral("Utilisateur standard"),
                    QStringLiteral("Invité")});
    role->setStyleSheet(QStringLiteral("border:nones;color:#333;font-weight:bold;"));

    layout->addWidget(form_panel(
        {{QStringLiteral("Votre Pseudonyme :       "), named("pseudonym_field", new QLineEdit)},
         {QStringLiteral("Votre Nom :              "), named("name_field", new QLineEdit)},
         {QStringLiteral("Votre Mot de Passe :     "), named("password_field", new QLineEdit)},
         {QStringLiteral("Confirmer Mot de Passe : "), named("confirmation_field", new QLineEdit)},
         {QStringLiteral("Selectionner un Reseau : "), role}},
        QStringLiteral("Enregistrer l'Administrateur")));
    layout->setAlignment(Qt::AlignTop);
    return section;
}

}  // namespace

SetupWindow::SetupWindow(QWidget* parent) : QDialog(parent) {
    QWidget* bar = sidebar();
    bar->setMaximumWidth(200);

    auto* page = new QHBoxLayout;
    page->addWidget(bar);
    page->addWidget(users_section());
    setLayout(page);
    setWindowTitle(QStringLiteral("Configuration Quorvale"));
    setFixedSize(800, 400);
}
