#pragma once

#include <functional>
#include <string>

/// Runs a shell command line, unchanged, and hands its standard output to `take_piece` as it comes,
/// in NUL-terminated pieces: one line each, with its line feed, or 127 bytes of a longer line. A
/// NUL byte in the output hides the rest of its piece.
///
/// Blocks until the command has ended; its exit status is ignored and its standard error goes
/// to the process's own. Returns false, with nothing read, when the command cannot be started.
bool read_command(const std::string& command, const std::function<void(const char*)>& take_piece);
