#pragma once

#include <QSet>
#include <QString>
#include <string>

/// The names derived from the one that the operator gives a network, its display name.

/// The greatest length of a display name, in characters.
inline constexpr int max_name_length = 100;

/// Returns a text as a display name: on one line, without control characters, cut where it is too
/// long; empty if nothing is left. The template's hubs/names.py has the same rule.
QString clean_name(QString text);

/// Returns the names that Python reserves: its keywords, and its modules, which a project's
/// directory would hide. Empty when python3 cannot be asked.
QSet<QString> python_names();

/// Returns the text with plain letters in place of accented ones and ligatures.
QString without_accents(QString text);

/// Returns the name for a network's directory, an ASCII Python identifier that is not reserved: the
/// display name without its accents, each run of other characters replaced by an underscore.
/// "Reseau_" is put before a leading digit; a name without letters and digits becomes "Reseau".
QString directory_name(const QString& display_name, const QSet<QString>& reserved);

/// Returns the bytes that stand for a display name in the registry, as told by the template's
/// hubs/names.py, which it runs. Empty when nothing is left of the name.
std::string registry_name(const QString& display_name);

/// Returns the text that stands in the registry as those bytes: Latin-1, with "&" doubled.
QString shown_name(const std::string& recorded);
