#pragma once

#include <QString>

class Network;
struct NetworkState;

/// Returns why nothing answers at a network's address after a start, in French, as far as it can be
/// told: no project, no address, no terminal, a port that another program holds, or Django's own
/// last line. Runs commands and blocks until they have ended, some seconds at most.
QString start_failure(const Network& network);

/// Returns why a network cannot be started, though no other of the operator's is in service:
/// another program holds the port. Empty when it can, or when it cannot be told.
QString port_obstacle(const Network& network);

/// Returns why a network that was in service does not answer any more.
QString loss_reason(const NetworkState& state);
