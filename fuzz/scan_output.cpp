// The parsing of the scan's output: its lines, joined again, are the output without parentheses.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "hub_utilities.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string words(data, data + size);
    std::string joined;
    for (const std::string& host : hosts_of_scan(words)) {
        joined += host + "\n";
    }
    words.erase(std::remove(words.begin(), words.end(), '('), words.end());
    words.erase(std::remove(words.begin(), words.end(), ')'), words.end());
    if (!words.empty() && words.back() != '\n') {
        words += '\n';
    }
    if (joined != words) {
        std::abort();
    }
    return 0;
}
