#include <QApplication>

#include "applicationsetup.h"
#include "desk.h"
#include "french_texts.h"
#include "usage.h"

int main(int argc, char** argv) {
    if (asked_for_help(
            argc, argv,
            "Usage : quorvale-desk\n"
            "\n"
            "Présente les réseaux de cette machine : on les crée, les démarre, les ouvre "
            "et les arrête.\n"
            "\n"
            "  -h, --help    affiche cette aide\n"
            "  --version     affiche la version\n")) {
        return 0;
    }
    const QApplication application(argc, argv);
    const ApplicationSetup setup;
    use_french_texts();
    Desk desk;
    desk.show_home({});
    return QApplication::exec();
}
