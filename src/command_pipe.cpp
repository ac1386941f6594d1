#include "command_pipe.h"

#include <array>
#include <cstdio>
#include <memory>

namespace {

struct PipeCloser {
    void operator()(std::FILE* pipe) const {
        pclose(pipe);
    }
};

}  // namespace

bool read_command(const std::string& command, const std::function<void(const char*)>& take_piece) {
    const std::unique_ptr<std::FILE, PipeCloser> pipe(popen(command.c_str(), "r"));
    if (!pipe) {
        return false;
    }
    std::array<char, 128> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe.get()) != nullptr) {
        take_piece(buffer.data());
    }
    return true;
}
