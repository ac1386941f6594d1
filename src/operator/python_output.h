#pragma once

#include <QByteArray>
#include <QStringList>

/// Runs python3 with these arguments and returns what it wrote on standard output, or nothing when
/// it failed or took longer than `timeout` milliseconds. Blocks; may be called on any thread.
QByteArray output_of_python(const QStringList& arguments, int timeout);
