#pragma once

#include <QSet>
#include <QString>
#include <string>

/// The names that follow from the one that the operator gives a network, its display name.

/// The length of a display name, in characters.
inline constexpr int longest_name = 100;

/// Returns a text as a display name: on one line, without control characters, cut where it is too
/// long. The template's hubs/names.py has the same rule.
QString clean_name(QString text);

/// Returns the names that Python reserves: its keywords, and its modules, which a project's
/// directory would hide. Empty when python3 cannot be asked.
QSet<QString> python_names();

/// Returns the text with plain letters in place of accented ones and ligatures.
QString without_accents(QString text);

/// Returns the name of a network's directory, a Python identifier of ASCII letters that is not
/// reserved: the display name without its accents, with an underscore for whatever else stands
/// between letters and digits. "Reseau_" is put before a digit; a name without letters becomes
/// "Reseau".
QString directory_name(const QString& display_name, const QSet<QString>& reserved);

/// Returns the bytes that stand for a display name in the registry, as hubs/names.py of the working
/// directory's template gives them. Empty when nothing is left of the name.
std::string registry_name(const QString& display_name);

/// Returns the display name that the registry has as those bytes, its "&" single again.
QString shown_name(const std::string& recorded);
