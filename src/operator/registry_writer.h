#pragma once

#include <string>

/// Returns whether "networks.data" (working directory) has a network of that name. Prints nothing.
bool is_recorded(const std::string& name);

/// Appends a network to "networks.data" (working directory) and returns 0; a missing file is
/// created.
///
/// Returns 1, with one line on standard error and the file untouched, when a text is empty or holds
/// a bar or a line feed, when a network of that name is there already, or when the new file cannot
/// be written whole. A crash or a full disk leaves the old file. Concurrent calls, from several
/// programs, take turns.
int record_hub_network(std::string name, std::string directory);
