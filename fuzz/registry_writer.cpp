// The registry's writer, read back: behind any contents, a network that was recorded is the last
// one read, and those before it are as they were; one that was refused changes nothing.
#include <fuzzer/FuzzedDataProvider.h>

#include <QDir>
#include <QTemporaryDir>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <utility>

#include "hub_utilities.h"
#include "network.h"
#include "registry_writer.h"

namespace {

using Records = std::vector<std::pair<std::string, std::string>>;

Records read_records() {
    std::vector<Network*> networks;
    read_hub_networks(&networks);
    Records records;
    for (Network* const network : networks) {
        const std::unique_ptr<const Network> owned(network);
        records.emplace_back(owned->name, owned->path);
    }
    return records;
}

std::string registry_contents() {
    std::ifstream file("networks.data", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // The functions echo what they read and refuse.
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    FuzzedDataProvider input(data, size);
    const std::string name = input.ConsumeRandomLengthString();
    const std::string directory = input.ConsumeRandomLengthString();
    const std::string before = input.ConsumeRemainingBytesAsString();
    std::ofstream("networks.data", std::ios::binary) << before;

    Records expected = read_records();
    const bool recorded = record_hub_network(name, directory) == 0;
    if (recorded) {
        expected.emplace_back(name, directory);
    }
    if (read_records() != expected || (!recorded && registry_contents() != before)) {
        std::abort();
    }
    return 0;
}
