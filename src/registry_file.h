#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <string>

#include "network.h"

/// The registry: one network a line, name|directory|, in the working directory.
inline constexpr char registry_file[] = "networks.data";

/// Hands the lines of a registry over in their order, each without its line feed and with its
/// record, which is null for a line without a name and a directory. Prints nothing.
void read_registry_lines(
    std::istream& registry,
    const std::function<void(const std::string& line, std::unique_ptr<Network> network)>& take);
