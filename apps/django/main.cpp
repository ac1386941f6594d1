#include <QCoreApplication>
#include <QFile>
#include <algorithm>
#include <string>

#include "command_line.h"
#include "djangomanager.h"
#include "qt_compat.h"

namespace {

/// Returns the word of the command line as it was given: a path's bytes need not be UTF-8.
std::string bytes_of(const QString& word, int argc, char** argv) {
    return *std::find_if(argv, argv + argc,
                         [&word](const char* bytes) { return QFile::decodeName(bytes) == word; });
}

}  // namespace

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
    if (!line.is_valid()) {
        return usage_error;
    }
    return DjangoManager().launch(bytes_of(line.argument(0), argc, argv));
}
