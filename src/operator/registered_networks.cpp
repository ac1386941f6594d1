#include "registered_networks.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <fstream>

#include "network_names.h"
#include "qt_compat.h"
#include "registry_file.h"

namespace {

/// The first line of "nom.txt" that is not blank, or an empty text. The template's hubs/names.py
/// reads the file by the same rule.
QString name_in_file(const QDir& project) {
    const QString path = project.filePath(QStringLiteral("nom.txt"));
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {  // a FIFO would wait
        return {};
    }
    const int longest = 100;
    static const QRegularExpression line_end(QStringLiteral(R"([\n\r])"));
    static const QRegularExpression control_characters(QStringLiteral(R"([\x00-\x1f\x7f-\x9f]+)"));
    for (QString line : text_of_file(file.read(qint64{10} * longest)).split(line_end)) {
        line.replace(control_characters, QStringLiteral(" "));
        if (!line.simplified().isEmpty()) {
            return line.simplified().left(longest).trimmed();
        }
    }
    return {};
}

QString display_name(const Network& network) {
    QString name = name_in_file(QDir(QFile::decodeName(network.path.c_str())));
    return name.isEmpty() ? shown_name(network.name) : name;
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

QString project_missing(const std::string& directory) {
    return QStringLiteral("Son répertoire, %1, n'existe plus ou ne contient pas de réseau.")
        .arg(QFile::decodeName(directory.c_str()));
}
