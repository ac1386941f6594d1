#pragma once

#include <cstdint>
#include <string>

/// One network: a Django project of this machine (it has a `path`) or a server found on the LAN
/// (it has an `address`).
///
/// Records are created with `new` by their source and belong to the window that shows them. Texts
/// are kept byte for byte, unchecked.
class Network {
public:
    /// A record with empty texts.
    Network() = default;
    Network(std::string network_name, std::string network_path, std::string network_address);

    /// Starts the server of `path` in a new gnome-terminal window, on the machine's own address and
    /// port 8000, and returns 0 at once. The outcome is ignored. Prints nothing.
    /// Throws what `getIp` throws, before any process exists.
    ///
    /// `path` reaches the shell of the terminal unquoted. The terminal and the server outlive the
    /// application; the child process is not waited for.
    int launch() const;

    /// Returns 1 when the process list shows a server of a project below a folder named "Tesquin",
    /// else 0; the same for every record. Blocks until `ps` has ended; prints nothing.
    ///
    /// Writes the process IDs found to "net_hub_tmp.lo" in the working directory, one per line.
    /// Returns 1, too, when the process list cannot be read at all.
    int is_launched() const;

    std::string name;     ///< display name, the text of the network's button
    std::string path;     ///< directory that holds manage.py; empty for a server of the LAN
    std::string address;  ///< host:8000 of a server of the LAN; empty for a project of this machine
    std::int32_t port = 8000;  ///< TCP port that network servers listen on
};
