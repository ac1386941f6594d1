#include "registry_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "file_lock.h"
#include "registry_file.h"

namespace {

bool is_registry_field(const std::string& text) {
    return !text.empty() && text.find_first_of("|\n") == std::string::npos;
}

bool has_network(std::istream& registry, const std::string& name) {
    bool found = false;
    read_registry_lines(registry, [&](const std::string&, const std::unique_ptr<Network>& network) {
        found = found || (network && network->name == name);
    });
    return found;
}

/// Reads the whole registry; a missing one is empty. Returns false when it cannot be read.
bool read_registry(QByteArray& contents) {
    QFile registry(QString::fromLatin1(registry_file));
    if (!registry.exists()) {
        return true;
    }
    if (!registry.open(QIODevice::ReadOnly)) {
        return false;
    }
    contents = registry.readAll();
    // Of a file too large for a QByteArray, nothing is read, and no error is set.
    return registry.error() == QFileDevice::NoError && contents.size() == registry.size();
}

/// Replaces the registry's contents, whole or not at all.
bool replace_registry(const QByteArray& contents) {
    // Written beside the registry, then renamed over it. The commit alone would not report a disk
    // that is full by the last bytes: the flush does.
    QSaveFile replacement(QString::fromLatin1(registry_file));
    const bool replaced = replacement.open(QIODevice::WriteOnly) &&
                          replacement.write(contents) >= 0 && replacement.flush() &&
                          replacement.commit();
    if (replaced) {
        // So that the rename is on the disk, too. File systems that cannot sync a directory are
        // fine.
        const int directory = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        fsync(directory);
        close(directory);
    }
    return replaced;
}

int refuse(const char* reason) {
    std::cerr << registry_file << " : " << reason << std::endl;
    return 1;
}

}  // namespace

bool is_recorded(const std::string& name) {
    std::ifstream registry(registry_file);
    return has_network(registry, name);
}

int record_hub_network(std::string name, std::string directory) {
    if (!is_registry_field(name) || !is_registry_field(directory)) {
        return refuse(
            "un nom ou un répertoire vide, ou qui contient « | » ou un saut de ligne, ne peut pas "
            "être enregistré.");
    }
    const char* const unchanged = "le réseau n'a pas pu être enregistré, le fichier est inchangé.";
    const FileLock lock(".networks.lock");
    QByteArray contents;
    if (!lock.take() || !read_registry(contents)) {
        return refuse(unchanged);
    }
    // Checked under the lock: another program may have recorded the name meanwhile.
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
