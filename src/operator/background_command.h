#pragma once

#include <QByteArray>
#include <QStringList>
#include <functional>

class QObject;

/// What is called at the end of a command: with its exit status, 1 for one that could not be
/// started or was killed, and what it said on standard error.
using CommandEnd = std::function<void(int status, const QString& said)>;

/// Runs a command, a program and its arguments, in a directory, with one line on its standard
/// input, while the windows go on. `ended` is called once. Python takes and gives UTF-8 in it,
/// whatever the session's encoding. When the owner goes, the command is killed and nothing is
/// called.
void run_in_background(QObject& owner, const QStringList& command, const QString& directory,
                       const QByteArray& line, const CommandEnd& ended);
