#include <QApplication>

#include "applicationsetup.h"
#include "setupwindow.h"
#include "usage.h"

int main(int argc, char** argv) {
    if (asked_for_help(argc, argv,
                       "Usage : quorvale-setup\n"
                       "\n"
                       "Affiche la fenêtre de configuration de Quorvale.\n"
                       "\n"
                       "  --help    affiche cette aide\n")) {
        return 0;
    }
    const QApplication application(argc, argv);
    const ApplicationSetup setup;
    SetupWindow window(nullptr);
    ApplicationSetup::dress_window(window);
    window.show();
    return QApplication::exec();
}
