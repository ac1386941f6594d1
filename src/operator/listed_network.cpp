#include "listed_network.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QStringList>

std::optional<ListedNetwork> find_listed(const QString& output, const RegisteredNetwork& network) {
    // The command prints normalised paths: no slash at the end, for instance.
    const QString directory = QDir::cleanPath(QFile::decodeName(network.directory.c_str()));
    for (const QString& line : output.split(QLatin1Char('\n'))) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() == 4 && QDir::cleanPath(fields[1]) == directory) {
            return ListedNetwork{QLocale().formattedDataSize(fields[2].toLongLong(), 1), fields[3]};
        }
    }
    return std::nullopt;
}
