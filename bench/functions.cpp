// Two functions against the plainest loop that does the same input and output. The figures go to
// standard error: what the registry functions print on standard output goes to /dev/null.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "hub_utilities.h"
#include "network.h"

namespace {

constexpr char output_command[] = "yes 0123456789abcdef0123456789abcdef | head -c 67108864";

void registry_ours(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::vector<Network*> networks;
        read_hub_networks(&networks);
        for (const Network* network : networks) {
            delete network;
        }
    }
}

void registry_plain(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::ifstream registry("networks.data");
        for (std::string line; std::getline(registry, line);) {
            std::cout << line << std::endl;
        }
    }
}

void command_ours(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(exec_cmd(output_command));
    }
}

void command_plain(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::FILE* const pipe = popen(output_command, "r");
        std::array<char, 128> buffer{};
        std::string output;
        while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
            output += buffer.data();
        }
        pclose(pipe);
        benchmark::DoNotOptimize(output);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const auto folder = std::filesystem::temp_directory_path() / "quorvale-bench";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    std::ofstream registry("networks.data");
    for (int i = 0; i < 100000; ++i) {
        registry << "network" << i << "|/srv/networks/network" << i << "|\n";
    }
    registry.close();
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    const std::array<std::pair<const char*, void (*)(benchmark::State&)>, 4> benchmarks = {{
        {"registry/ours", registry_ours},
        {"registry/plain", registry_plain},
        {"command/ours", command_ours},
        {"command/plain", command_plain},
    }};
    for (const auto& [name, function] : benchmarks) {
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    }
    benchmark::ConsoleReporter reporter;
    reporter.SetOutputStream(&std::cerr);
    reporter.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder);
}
