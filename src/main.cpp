#include <QApplication>

#include "applicationsetup.h"
#include "hub_utilities.h"
#include "networkselectionwindow.h"
#include "open_url.h"

int main(int argc, char** argv) {
    // The browser is asked first, so that it loads the LAN server's page while our window is built.
    open_url(QString::fromLatin1(default_lan_host) + QStringLiteral(":8000"));

    QGuiApplication::setDesktopFileName(QStringLiteral("org.quorvale.Quorvale"));
    const QApplication application(argc, argv);
    const ApplicationSetup setup;
    NetworkSelectionWindow window(nullptr);
    ApplicationSetup::dress_window(window);
    ApplicationSetup::show_first_window(window);
    return QApplication::exec();
}
