// The splitter of registry lines: what it takes is a beginning of the line, and it refuses only
// lines with fewer than two bars.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "hub_utilities.h"
#include "network.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string line(data, data + size);
    const std::unique_ptr<const Network> network(split_hub_networks_file(line));
    const bool has_fields = std::count(line.begin(), line.end(), '|') >= 2;
    if (has_fields != (network != nullptr)) {
        std::abort();
    }
    if (network && line.rfind(network->name + "|" + network->path + "|", 0) != 0) {
        std::abort();
    }
    return 0;
}
