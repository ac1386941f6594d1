#include <QApplication>
#include <QDeadlineTimer>
#include <QPainter>
#include <QPixmap>
#include <QSplashScreen>
#include <QWindow>
#include <memory>

#include "applicationsetup.h"
#include "client/client_controls.h"
#include "clientwindow.h"
#include "usage.h"

namespace {

/// What stands on the screen while the search blocks the program: the search picture over its text.
QPixmap search_picture() {
    QPixmap picture(335, 400);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.drawPixmap(0, 0, QPixmap(QStringLiteral("wifi.gif")));
    QFont font = painter.font();
    font.setPixelSize(18);
    painter.setFont(font);
    painter.setPen(Qt::blue);
    painter.drawText(QRect(0, 335, 335, 65), Qt::AlignCenter,
                     QStringLiteral("Recherche d'un Reseau disponible ..."));
    painter.setPen(QColor(QStringLiteral("#3399ff")));
    painter.drawRect(picture.rect().adjusted(0, 0, -1, -1));
    return picture;
}

/// Shows the splash and waits until it is really on the screen, two seconds at most.
void show_at_once(QSplashScreen& splash) {
    ApplicationSetup::show_first_window(splash);
    const QDeadlineTimer deadline(2000);
    while (!splash.windowHandle()->isExposed() && !deadline.hasExpired()) {
        QApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    splash.repaint();
    QApplication::processEvents();
}

/// Searches until a window shows servers; null when the operator gives up.
std::unique_ptr<ClientWindow> search() {
    for (;;) {
        QSplashScreen splash(search_picture());
        show_at_once(splash);
        auto window = std::make_unique<ClientWindow>(nullptr);
        ApplicationSetup::dress_window(*window);
        window->show();
        splash.finish(window.get());
        if (has_servers(*window)) {
            return window;
        }
        if (!wants_another_search(*window)) {
            return nullptr;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (asked_for_help(argc, argv,
                       "Usage : quorvale-client\n"
                       "\n"
                       "Cherche les serveurs Quorvale du réseau local et ouvre dans le navigateur "
                       "celui qu'on choisit.\n"
                       "\n"
                       "  -h, --help    affiche cette aide\n"
                       "  --version     affiche la version\n")) {
        return 0;
    }
    const QApplication application(argc, argv);
    const ApplicationSetup setup;
    const std::unique_ptr<ClientWindow> window = search();
    if (!window) {
        return 0;
    }
    new ClientControls(*window);
    return QApplication::exec();
}
