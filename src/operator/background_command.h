#pragma once

#include <QByteArray>
#include <QStringList>
#include <functional>

class QObject;
class QProcess;

/// Called when a command has ended, with its exit status and its output: what it wrote on standard
/// output when the status is 0, else on standard error. When it could not be started or was killed,
/// the status is 1, and the text says so in French.
using CommandEnd = std::function<void(int status, const QString& said)>;

/// Runs a command, a program and its arguments, in a directory, with one line on its standard
/// input, without blocking the windows. `ended` is called once. Python uses UTF-8 in it, whatever
/// the session's encoding. When the owner is destroyed, the command is asked to end and, after
/// two seconds, killed; nothing is called.
void run_in_background(QObject& owner, const QStringList& command, const QString& directory,
                       const QByteArray& line, const CommandEnd& ended);

/// Ends a process gently when its owner, its parent object and the receiver of its signals, is
/// destroyed: it is asked to end and, after two seconds, killed. QProcess alone kills it at once.
void end_with_owner(QProcess& process, QObject& owner);

/// Returns the French message for a program that could not be started.
QString not_started(const QString& program);

/// Returns the path of another of our programs, which stands beside this one.
QString program_path(const char* name);

/// Returns the last line of a command's output, which gives the reason for a failure.
QString last_line(const QString& said);
