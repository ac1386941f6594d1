#pragma once

#include <QString>
#include <optional>

#include "registered_networks.h"

/// What `quorvale-network list` tells of a network, besides its name and its directory.
struct ListedNetwork {
    QString size;   ///< on the disk, with its unit
    QString state;  ///< "en marche", "arrêté" or "absent"
};

/// Returns what the output of that command tells of the network; nothing if it is not in there.
std::optional<ListedNetwork> find_listed(const QString& output, const RegisteredNetwork& network);
