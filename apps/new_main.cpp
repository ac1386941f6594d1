#include <QCoreApplication>

#include "network_creation.h"
#include "qt_compat.h"
#include "usage.h"

int main(int argc, char** argv) {
    const char* const help =
        "Usage : quorvale-new NOM\n"
        "\n"
        "Crée le réseau NOM dans le répertoire courant, d'après le modèle qui s'y trouve : son\n"
        "projet Django dans le répertoire NOM, sa ligne dans networks.data et sa base de données.\n"
        "NOM est un identifiant Python : des lettres sans accent, des chiffres et « _ ».\n"
        "\n"
        "  -h, --help    affiche cette aide\n"
        "  --version     affiche la version\n"
        "\n"
        "Code de retour : 0 si le réseau est complet, 1 sinon, 2 si la commande est mal écrite.\n";
    if (asked_for_help(argc, argv, help)) {
        return 0;
    }
    if (argc != 2) {
        std::cerr << help;
        return 2;
    }
    const QCoreApplication application(argc, argv);
    use_utf8_locale_codec();
    return create_and_record_network(argv[1]);
}
