#include "home_links.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QUrl>

#include "background_command.h"
#include "networkselectionwindow.h"
#include "open_url.h"
#include "screen_pieces.h"

namespace {

QPushButton* add_link(QHBoxLayout& row, const char* name, const QString& text,
                      const QString& file) {
    auto* link = named(name, new QPushButton(text));
    link->setCursor(Qt::PointingHandCursor);
    link->setVisible(QFile::exists(file));
    row.addWidget(link);
    return link;
}

void add_program(QHBoxLayout& row, NetworkSelectionWindow& window, const char* name,
                 const QString& text, const char* program) {
    const QString file = program_path(program);
    QObject::connect(add_link(row, name, text, file), &QPushButton::clicked, &window,
                     [&window, file, program] {
                         if (!QProcess::startDetached(file, {})) {
                             QMessageBox::warning(&window, QStringLiteral("Quorvale"),
                                                  not_started(QLatin1String(program)));
                         }
                     });
}

}  // namespace

void add_home_links(NetworkSelectionWindow& window) {
    auto* picture = window.findChild<QLabel*>(QStringLiteral("home_picture"));
    auto* container = static_cast<QHBoxLayout*>(picture->parentWidget()->layout());
    container->setContentsMargins(0, 0, 0, 0);
    window.layout()->setContentsMargins(9, 9, 9, 9);

    auto* column = new QVBoxLayout;
    column->addWidget(picture);
    auto* row = new QHBoxLayout;
    column->addLayout(row);
    container->insertLayout(0, column);

    const QString guide = QCoreApplication::applicationDirPath() +
                          QStringLiteral("/../share/doc/quorvale/guide.html");
    QObject::connect(add_link(*row, "guide_button", QStringLiteral("Guide"), guide),
                     &QPushButton::clicked, &window,
                     [guide] { open_url(QUrl::fromLocalFile(guide).toString()); });
    add_program(*row, window, "client_button", QStringLiteral("Client"), "quorvale-client");
    add_program(*row, window, "setup_button", QStringLiteral("Configuration"), "quorvale-setup");
}
