#pragma once

#include <QFileInfo>
#include <QString>

/// Returns the directory of the network template, with a slash at its end: ".modele" in the working
/// directory, where nobody mistakes the template's files for a network's, or else the working
/// directory itself.
inline QString template_directory() {
    const QString hidden = QStringLiteral(".modele/");
    return QFileInfo(hidden).isDir() ? hidden : QStringLiteral("./");
}
