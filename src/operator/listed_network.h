#pragma once

#include <QString>
#include <optional>

#include "registered_networks.h"

/// What `quorvale-network list` reports about a network, besides its name and its directory.
struct ListedNetwork {
    QString size;   ///< on the disk, with its unit
    QString state;  ///< "en marche", "arrêté" or "absent"
};

/// Returns what that command's output reports about the network; nothing if it is not listed.
std::optional<ListedNetwork> find_listed(const QString& output, const RegisteredNetwork& network);
