#include <QApplication>

#include "account_form.h"
#include "applicationsetup.h"
#include "french_texts.h"
#include "setupwindow.h"
#include "usage.h"

int main(int argc, char** argv) {
    if (asked_for_help(
            argc, argv,
            "Usage : quorvale-setup\n"
            "\n"
            "Affiche la fenêtre de configuration de Quorvale, qui ajoute des comptes à un "
            "réseau.\n"
            "\n"
            "  -h, --help    affiche cette aide\n"
            "  --version     affiche la version\n")) {
        return 0;
    }
    const QApplication application(argc, argv);
    const ApplicationSetup setup;
    use_french_texts();
    SetupWindow window(nullptr);
    new AccountForm(window);
    ApplicationSetup::dress_window(window);
    ApplicationSetup::show_first_window(window);
    return QApplication::exec();
}
