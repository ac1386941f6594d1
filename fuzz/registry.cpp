// The registry's writer, checked by reading back: whatever the registry held before, a network that
// was recorded is read last, after unchanged lines; one that was refused changes nothing.
#include <fuzzer/FuzzedDataProvider.h>

#include <QDir>
#include <QTemporaryDir>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

#include "hub_utilities.h"
#include "network.h"
#include "registry_writer.h"

namespace {

/// The registry as the reader understands it, written out again.
std::string read_registry() {
    std::vector<Network*> networks;
    read_hub_networks(&networks);
    std::string lines;
    for (Network* network : networks) {
        const std::unique_ptr<const Network> owned(network);
        lines += owned->name + "|" + owned->path + "|\n";
    }
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    // The functions print what they read, and why they refuse.
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);

    FuzzedDataProvider input(data, size);
    const std::string name = input.ConsumeRandomLengthString();
    const std::string directory = input.ConsumeRandomLengthString();
    const std::string before = input.ConsumeRemainingBytesAsString();
    std::ofstream("networks.data", std::ios::binary) << before;

    std::string expected = read_registry();
    const bool recorded = record_hub_network(name, directory) == 0;
    if (recorded) {
        expected += name + "|" + directory + "|\n";
    }
    std::ifstream file("networks.data", std::ios::binary);
    const std::string after{std::istreambuf_iterator<char>(file), {}};
    if (read_registry() != expected || after.rfind(before, 0) != 0 ||
        (!recorded && after != before)) {
        std::abort();
    }
    return 0;
}
