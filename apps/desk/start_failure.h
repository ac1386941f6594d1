#pragma once

#include <QString>
#include <functional>

class Network;
class QObject;
class QThreadPool;
struct NetworkState;

/// Finds out why nothing answers at a network's address after a start, and calls `found` with the
/// reason, in French: no project, no address, no terminal, a port that another program holds, or
/// Django's own last line. Returns at once; the answer may take 25 seconds. When the context is
/// destroyed meanwhile, nothing is called, and Django is ended.
void find_start_failure(QThreadPool& threads, QObject& context, const Network& network,
                        const std::function<void(const QString&)>& found);

/// Returns the end of the terminal's error output, which the tool that opens terminals keeps; empty
/// when there is none.
QString terminal_words();

/// Returns why no network can be started: there is no terminal. Empty when there is one.
QString terminal_obstacle();

/// Returns why a network cannot be started though none of the operator's is in service: another
/// program holds the port. Empty when none does, or when it cannot be told. Runs commands; may be
/// called on any thread.
QString port_obstacle(const Network& network);

/// Returns, in French, why a network that was in service does not answer any more.
QString loss_reason(const NetworkState& state);
