#pragma once

#include <QString>

class Network;

/// Returns why nothing answers at a network's address after a start, in French, as far as it can be
/// told: no project, no address, no terminal, a port that another program holds, or Django's own
/// last line. Runs commands and blocks until they have ended, some seconds at most.
QString start_failure(const Network& network);
