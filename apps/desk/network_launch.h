#pragma once

#include <sys/types.h>

#include <QString>
#include <functional>
#include <set>
#include <string>
#include <vector>

class Network;

/// Outcome of a launch.
struct Launch {
    QString obstacle{};  ///< why the network was not launched, in French; else empty
    std::vector<std::function<void()>> old_terminals{};  ///< close those of the servers it ended
    std::set<pid_t> old_shells{};  ///< the plain shells that were in the network's directory before
};

/// Ends the servers of the other project directories, which hold the network's address, then
/// launches it. Without a terminal, or when there are no others and another program holds the port,
/// nothing is ended or launched. Blocks, usually for some seconds at most; may be called on any
/// thread.
Launch launch(const Network& network, const std::vector<std::string>& others);
