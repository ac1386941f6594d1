#include "wait_window.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "screen_pieces.h"

WaitWindow::WaitWindow() : seconds(status_label(QString(), QStringLiteral("color: #333;"))) {
    setWindowTitle(QStringLiteral("Recherche en cours"));
    setStyleSheet(QString::fromLatin1(white_page_style));

    auto* page = new QVBoxLayout(this);
    page->addWidget(centred_animation(QStringLiteral("wifi.gif"), QSize(335, 335)));
    page->addWidget(status_label(QStringLiteral("Recherche d'un Reseau disponible ..."),
                                 QStringLiteral("color: blue; font-size: 18px;")));
    page->addWidget(seconds);
    auto* cancel = named("cancel_button", new QPushButton(QStringLiteral("Abandonner (Échap)")));
    page->addWidget(cancel, 0, Qt::AlignCenter);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    page->setSizeConstraint(QLayout::SetFixedSize);

    elapsed.start();
    show_seconds();
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &WaitWindow::show_seconds);
    timer->start(1000);
}

void WaitWindow::show_seconds() {
    const qint64 count = elapsed.elapsed() / 1000;
    seconds->setText(QStringLiteral("Depuis %1 seconde%2")
                         .arg(count)
                         .arg(count < 2 ? QString() : QStringLiteral("s")));
}
