#include <QApplication>

#include "applicationsetup.h"
#include "command_line.h"
#include "french_texts.h"
#include "setup_controls.h"
#include "setupwindow.h"

int main(int argc, char** argv) {
    CommandLine line(
        QStringLiteral("Affiche la fenêtre de configuration de Quorvale, pour les comptes des "
                       "réseaux et leurs\nrépertoires."));
    if (line.answers(argc, argv)) {
        return 0;
    }
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quorvale.Setup"));
    const QApplication application(argc, argv);
    if (!line.is_valid()) {
        return usage_error;
    }
    const ApplicationSetup setup;
    use_french_texts();
    SetupWindow window(nullptr);
    new SetupControls(window);
    ApplicationSetup::dress_window(window);
    ApplicationSetup::show_first_window(window);
    return QApplication::exec();
}
