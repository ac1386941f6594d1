#pragma once

#include <QByteArray>
#include <QStringList>
#include <functional>

class QObject;
class QProcess;

/// Called when a command has ended, with its exit status and what it said: on standard error or,
/// when its status is 0, on standard output. When it could not be started or was killed, the status
/// is 1, and the text says that in French.
using CommandEnd = std::function<void(int status, const QString& said)>;

/// Runs a command, a program and its arguments, in a directory, with one line on its standard
/// input, without blocking the windows. `ended` is called once. Python uses UTF-8 in it, whatever
/// the session's encoding. When the owner is destroyed, the command is asked to end and, after
/// two seconds, killed; nothing is called.
void run_in_background(QObject& owner, const QStringList& command, const QString& directory,
                       const QByteArray& line, const CommandEnd& ended);

/// Ends a process when the owner, which its signals go to, is destroyed: it is asked to end and,
/// after two seconds, killed. To be called for a child of the owner, which would be killed at once.
void end_with_owner(QProcess& process, QObject& owner);
