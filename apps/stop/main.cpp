#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include "qt_compat.h"
#include "registered_networks.h"
#include "server_processes.h"
#include "usage.h"

namespace {

/// Ends the network's server if one runs, and says so. Returns whether one was ended.
bool stop(const RegisteredNetwork& network) {
    if (find_server_processes(network.directory).empty()) {
        return false;
    }
    const std::string name = network.name.toStdString();
    if (!stop_server(network.directory)) {
        std::cerr << "Le réseau « " << name << " » n'a pas pu être arrêté." << std::endl;
        return false;
    }
    std::cout << "Le réseau « " << name << " » est arrêté." << std::endl;
    return true;
}

bool is_named(const RegisteredNetwork& network, const QString& name) {
    return network.name == name ||
           QDir(QFile::decodeName(network.directory.c_str())).dirName() == name;
}

}  // namespace

int main(int argc, char** argv) {
    const char* const help =
        "Usage : quorvale-stop [NOM]\n"
        "\n"
        "Arrête le serveur du réseau NOM (le nom affiché, ou celui de son répertoire), et ferme\n"
        "son terminal. Sans NOM, arrête tous ceux des réseaux de networks.data.\n"
        "\n"
        "  -h, --help    affiche cette aide\n"
        "  --version     affiche la version\n"
        "\n"
        "Code de retour : 0 si un serveur a été arrêté, 1 si aucun ne l'a été, 2 si la commande\n"
        "est mal écrite.\n";
    if (asked_for_help(argc, argv, help)) {
        return 0;
    }
    if (argc > 2) {
        std::cerr << help;
        return 2;
    }
    use_utf8_locale_codec();
    const QCoreApplication application(argc, argv);
    const QString wanted = QCoreApplication::arguments().value(1);
    bool known = argc == 1;
    bool stopped = false;
    for (const RegisteredNetwork& network : registered_networks()) {
        if (argc == 1 || is_named(network, wanted)) {
            known = true;
            stopped = stop(network) || stopped;
        }
    }
    if (!known) {
        std::cerr << "Aucun réseau ne s'appelle « " << wanted.toStdString() << " » ici."
                  << std::endl;
    } else if (!stopped) {
        std::cerr << "Rien n'a été arrêté." << std::endl;
    }
    return stopped ? 0 : 1;
}
