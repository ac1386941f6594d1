#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <string>

#include "network.h"

/// The registry: one network a line, name|directory|, in the working directory.
inline constexpr char registry_file[] = "networks.data";

/// Calls `take` for each line of a registry, in order, with the line without its line feed and with
/// its record, which is null where the name or the directory is missing. Prints nothing.
void read_registry_lines(
    std::istream& registry,
    const std::function<void(const std::string& line, std::unique_ptr<Network> network)>& take);
