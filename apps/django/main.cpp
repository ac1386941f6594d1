#include <QCoreApplication>

#include "command_line.h"
#include "djangomanager.h"
#include "qt_compat.h"

int main(int argc, char** argv) {
    CommandLine line(
        QStringLiteral("Lance, dans un nouveau terminal, le serveur Django d'un projet, pour cette "
                       "machine\nseulement : http://127.0.0.1:8000."),
        QStringLiteral("Code de retour : 0 si le terminal a été demandé, 1 sinon, 2 si la commande "
                       "est mal\nécrite.\n"));
    line.add_argument(QStringLiteral("RÉPERTOIRE"),
                      QStringLiteral("Le répertoire du projet, qui contient manage.py."));
    if (line.answers(argc, argv)) {
        return 0;
    }
    use_utf8_locale_codec();
    const QCoreApplication application(argc, argv);
    return line.fits() ? DjangoManager().launch(line.argument(0).toStdString()) : badly_written;
}
