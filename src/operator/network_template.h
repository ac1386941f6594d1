#pragma once

#include <QFileInfo>
#include <QString>

/// Returns the directory of the network template, with a slash at its end: ".modele" of the working
/// directory, where nobody takes the template's files for a network's, or the working directory
/// itself if it has none.
inline QString template_directory() {
    const QString hidden = QStringLiteral(".modele/");
    return QFileInfo(hidden).isDir() ? hidden : QStringLiteral("./");
}
