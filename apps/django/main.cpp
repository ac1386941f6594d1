#include "djangomanager.h"
#include "usage.h"

int main(int argc, char** argv) {
    const char* const help =
        "Usage : quorvale-django RÉPERTOIRE\n"
        "\n"
        "Lance, dans un nouveau terminal, le serveur Django du projet de RÉPERTOIRE (celui qui\n"
        "contient manage.py), pour cette machine seulement : http://127.0.0.1:8000.\n"
        "\n"
        "  -h, --help    affiche cette aide\n"
        "  --version     affiche la version\n"
        "\n"
        "Code de retour : 0 si le terminal a été demandé, 1 sinon, 2 si la commande est mal "
        "écrite.\n";
    if (asked_for_help(argc, argv, help)) {
        return 0;
    }
    if (argc != 2) {
        std::cerr << help;
        return 2;
    }
    return DjangoManager().launch(argv[1]);
}
