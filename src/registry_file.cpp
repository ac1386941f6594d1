#include "registry_file.h"

#include "hub_utilities.h"

void read_registry_lines(
    std::istream& registry,
    const std::function<void(const std::string& line, std::unique_ptr<Network> network)>& take) {
    for (std::string line; std::getline(registry, line);) {
        take(line, std::unique_ptr<Network>(split_hub_networks_file(line)));
    }
}
