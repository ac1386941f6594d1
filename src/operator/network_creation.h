#pragma once

#include <QByteArray>
#include <QString>

#include "creation_status.h"

/// What the operator enters for a new network.
struct NewNetwork {
    QString name;             ///< display name: any text that is not blank
    QString administrator{};  ///< pseudonym of its first administrator; empty for none
    QByteArray password{};    ///< the administrator's
    QString contents{};       ///< directory of what a copy held, see below; empty for none
};

/// Returns, in French, why no network of that display name and directory can be created in the
/// working directory, or an empty text. Refused are: a blank name, a directory that exists, a
/// name that is recorded, a registry that is not a readable file, a missing or unreadable template
/// file, a working directory whose name the shell would not take as it stands.
QString creation_refusal(const QString& name, const QString& directory);

/// Creates a network in the working directory, from the template there: the Django project in the
/// directory that `directory_name` gives, its display name in "nom.txt", its database, the
/// administrator's account and, last, its line in "networks.data". All of it is made in
/// ".creation", and on the disk before it gets its place and its line: what a creation that was
/// killed has left there is cleared by the next one.
///
/// With `contents`, the files in its folder "projet" are copied over the project's directory, those
/// in "paquet" over its package's; the folders "ressources" and "depots" of the package, which may
/// be large, are moved from there, in place of the template's. Where the directory's name is taken,
/// a number is appended.
///
/// Returns `created_whole` with a French line on standard output that says what was made. On any
/// failure, what was made is removed, and the reason is on standard error, in French: one line for
/// `not_created`, the account command's own for the others. Errors of the commands that were run
/// come before it. Concurrent calls, from several programs, take turns. Blocks until the commands
/// have ended, and changes the working directory meanwhile.
CreationStatus create_and_record_network(const NewNetwork& wanted);
