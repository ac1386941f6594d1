#include "registered_networks.h"

#include <QDir>
#include <QFile>
#include <fstream>
#include <memory>

#include "hub_utilities.h"
#include "network.h"
#include "network_names.h"

namespace {

QString display_name(const Network& network) {
    QFile file(QDir(QFile::decodeName(network.path.c_str())).filePath(QStringLiteral("nom.txt")));
    if (file.open(QIODevice::ReadOnly)) {
        QString name = QString::fromUtf8(file.readLine(1000)).simplified();
        if (!name.isEmpty()) {
            return name;
        }
    }
    return shown_name(network.name);
}

}  // namespace

std::vector<RegisteredNetwork> registered_networks() {
    std::ifstream registry("networks.data");
    std::vector<RegisteredNetwork> networks;
    for (std::string line; std::getline(registry, line);) {
        const std::unique_ptr<const Network> network(split_hub_networks_file(line));
        if (network) {
            networks.push_back({display_name(*network), network->path});
        }
    }
    return networks;
}

bool has_project(const std::string& directory) {
    return QFile::exists(QFile::decodeName(directory.c_str()) + QStringLiteral("/manage.py"));
}

QString project_missing(const std::string& directory) {
    return QStringLiteral("Son répertoire, %1, n'existe plus ou ne contient pas de réseau.")
        .arg(QFile::decodeName(directory.c_str()));
}
