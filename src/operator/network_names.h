#pragma once

#include <QSet>
#include <QString>
#include <string>

/// The names that follow from the one that the operator gives a network, its display name.

/// Returns the names that Python reserves: its keywords, and its modules, which a project's
/// directory would hide. Empty when python3 cannot be asked.
QSet<QString> python_names();

/// Returns the text in plain letters, as far as it has some.
QString without_accents(QString text);

/// Returns the name of a network's directory, a Python identifier of ASCII letters that is not
/// reserved: the display name without its accents, an underscore for whatever else stands
/// between letters and digits. "Reseau" stands in front of a digit and for a name without letters.
QString directory_name(const QString& display_name, const QSet<QString>& reserved);

/// Returns the bytes that stand for a display name in the registry, whose bytes a button shows as
/// Latin-1 characters: "&" doubled, for a button hides a single one, and the bar, which ends the
/// field, left out. Letters that Latin-1 lacks are replaced by the network template of the working
/// directory, as in what it tells the clients. Empty when nothing is left.
std::string registry_name(const QString& display_name);

/// Returns the display name of a network of the registry, its "&" single again.
QString shown_name(const std::string& registry_name);
