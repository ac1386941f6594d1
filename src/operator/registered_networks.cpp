#include "registered_networks.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <fstream>
#include <utility>

#include "network_names.h"
#include "qt_compat.h"
#include "registry_file.h"

namespace {

/// The first line of "nom.txt" that is not blank, as a display name, or an empty text. The
/// template's hubs/names.py reads the file by the same rule.
QString name_in_file(const QDir& project) {
    const QString path = project.filePath(QStringLiteral("nom.txt"));
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {  // a FIFO would wait
        return {};
    }
    static const QRegularExpression line_end(QStringLiteral(R"([\n\r])"));
    const QStringList lines = text_of_file(file.read(qint64{10} * max_name_length)).split(line_end);
    for (const QString& line : lines) {
        QString name = clean_name(line);
        if (!name.isEmpty()) {
            return name;
        }
    }
    return {};
}

/// The network's display name, never empty: apps/network/registry.py has the same rule.
QString display_name(const Network& network) {
    const QDir project(QDir::cleanPath(QFile::decodeName(network.path.c_str())));
    for (const QString& name : {name_in_file(project), clean_name(shown_name(network.name)),
                                clean_name(project.dirName())}) {
        if (!name.isEmpty()) {
            return name;
        }
    }
    return QStringLiteral("Quorvale");
}

}  // namespace

std::vector<RegisteredNetwork> registered_networks() {
    std::ifstream registry(registry_file);
    std::vector<RegisteredNetwork> networks;
    read_registry_lines(registry, [&](const std::string&, const std::unique_ptr<Network>& network) {
        if (network) {
            networks.push_back({display_name(*network), network->path});
        }
    });
    return networks;
}

bool has_project(const std::string& directory) {
    return QFile::exists(QFile::decodeName(directory.c_str()) + QStringLiteral("/manage.py"));
}

QString package_of(const std::string& directory) {
    const QDir project(QFile::decodeName(directory.c_str()));
    if (!project.exists()) {
        return {};
    }
    // It has the directory's own name, unless that was renamed since. The path may be a link.
    QStringList folders{QDir(project.canonicalPath()).dirName()};
    folders += project.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& folder : std::as_const(folders)) {
        QString package = project.filePath(folder);
        if (QFileInfo(package + QStringLiteral("/hubs")).isDir()) {
            return package;
        }
    }
    return {};
}

QString project_missing(const std::string& directory) {
    return QStringLiteral("Son répertoire, %1, n'existe plus ou ne contient pas de réseau.")
        .arg(QFile::decodeName(directory.c_str()));
}
