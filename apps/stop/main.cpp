#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <iostream>

#include "command_line.h"
#include "qt_compat.h"
#include "registered_networks.h"
#include "server_processes.h"

namespace {

/// Ends the network's server if one runs, and says so. Returns whether one was ended.
bool stop(const RegisteredNetwork& network) {
    if (find_processes(network.directory).servers.empty()) {
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
    CommandLine line(
        QStringLiteral(
            "Arrête le serveur d'un réseau, et ferme son terminal. Sans NOM, arrête tous "
            "ceux des\nréseaux de networks.data."),
        QStringLiteral("Code de retour : 0 si un serveur a été arrêté, 1 si aucun ne l'a été, 2 si "
                       "la commande\nest mal écrite.\n"));
    line.add_optional_argument(
        QStringLiteral("NOM"),
        QStringLiteral("Le nom affiché du réseau, ou celui de son répertoire."));
    if (line.answers(argc, argv)) {
        return 0;
    }
    use_utf8_locale_codec();
    const QCoreApplication application(argc, argv);
    if (!line.is_valid()) {
        return usage_error;
    }
    const QString wanted = line.argument(0);
    const bool all = wanted.isNull();
    bool known = all;
    bool stopped = false;
    for (const RegisteredNetwork& network : registered_networks()) {
        if (all || is_named(network, wanted)) {
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
