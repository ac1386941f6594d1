#include "registry_writer.h"

#include <QByteArray>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "hub_utilities.h"
#include "network.h"

namespace {

const QString registry_name = QStringLiteral("networks.data");

bool is_registry_field(const std::string& text) {
    return !text.empty() && text.find_first_of("|\n") == std::string::npos;
}

bool has_network(std::istream& registry, const std::string& name) {
    for (std::string line; std::getline(registry, line);) {
        const std::unique_ptr<const Network> network(split_hub_networks_file(line));
        if (network && network->name == name) {
            return true;
        }
    }
    return false;
}

/// Reads the whole registry, nothing when there is none. Returns false when it cannot be read.
bool read_registry(QByteArray& contents) {
    QFile registry(registry_name);
    if (!registry.exists()) {
        return true;
    }
    if (!registry.open(QIODevice::ReadOnly)) {
        return false;
    }
    contents = registry.readAll();
    // Beyond the size of a QByteArray, nothing is read, and no error is set.
    return registry.error() == QFileDevice::NoError && contents.size() == registry.size();
}

/// Puts new contents in the registry's place, whole or not at all.
bool replace_registry(const QByteArray& contents) {
    // Written beside the registry, then renamed over it. The commit alone would not report a disk
    // that is full by the last bytes: the flush does.
    QSaveFile replacement(registry_name);
    return replacement.open(QIODevice::WriteOnly) && replacement.write(contents) >= 0 &&
           replacement.flush() && replacement.commit();
}

int refuse(const char* reason) {
    std::cerr << "networks.data : " << reason << std::endl;
    return 1;
}

}  // namespace

bool is_recorded(const std::string& name) {
    std::ifstream registry("networks.data");
    return has_network(registry, name);
}

int record_hub_network(std::string name, std::string directory) {
    if (!is_registry_field(name) || !is_registry_field(directory)) {
        return refuse(
            "un nom ou un répertoire vide, ou qui contient « | » ou un saut de ligne, ne peut pas "
            "être enregistré.");
    }
    const char* const unchanged = "le réseau n'a pas pu être enregistré, le fichier est inchangé.";
    QLockFile lock(registry_name + QStringLiteral(".lock"));
    QByteArray contents;
    if (!lock.lock() || !read_registry(contents)) {
        return refuse(unchanged);
    }
    // Whoever asked before the lock may have been overtaken.
    std::istringstream lines(contents.toStdString());
    if (has_network(lines, name)) {
        return refuse("un réseau de ce nom est déjà enregistré.");
    }
    if (!contents.isEmpty() && !contents.endsWith('\n')) {
        contents += '\n';
    }
    const std::string line = name + "|" + directory + "|\n";
    if (!replace_registry(contents + QByteArray::fromStdString(line))) {
        return refuse(unchanged);
    }
    return 0;
}
