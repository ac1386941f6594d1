#include "network_launch.h"

#include <stdexcept>

#include "network.h"
#include "server_processes.h"
#include "start_failure.h"

Launch launch(const Network& network, const std::vector<std::string>& others) {
    Launch done;
    done.obstacle = terminal_obstacle();
    if (done.obstacle.isEmpty() && others.empty()) {
        done.obstacle = port_obstacle(network);
    }
    if (!done.obstacle.isEmpty()) {
        return done;
    }
    for (const std::string& directory : others) {
        done.old_terminals.push_back(terminal_closer(directory));
        end_server(directory);
    }
    done.old_shells = find_processes(network.path).plain_shells;
    try {
        network.launch();
    } catch (const std::runtime_error& error) {  // no command can be started
        done.obstacle = QString::fromUtf8(error.what());
    }
    return done;
}
