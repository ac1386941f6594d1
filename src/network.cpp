#include "network.h"

#include <unistd.h>

#include <fstream>
#include <utility>

#include "command_pipe.h"
#include "hub_utilities.h"

Network::Network(std::string network_name, std::string network_path, std::string network_address)
    : name(std::move(network_name)),
      path(std::move(network_path)),
      address(std::move(network_address)) {}

int Network::launch() const {
    // Built before the fork: in the child of a process with threads, allocating memory may
    // deadlock.
    const std::string command =
        "cd " + path + " && python3 manage.py runserver " + getIp() + ":8000 ; exec bash";

    if (fork() == 0) {
        execlp("gnome-terminal", "gnome-terminal", "--", "bash", "-c", command.c_str(), nullptr);
        _exit(1);
    }
    return 0;
}

int Network::is_launched() const {
    const char* const pid_file = "net_hub_tmp.lo";
    std::ofstream(pid_file, std::ios::trunc).close();
    std::ofstream pids(pid_file, std::ios::app);

    int lines = 0;
    const bool started = read_command("ps aux |grep Tesquin|grep runserver|awk '{print $2}'",
                                      [&pids, &lines](const char* piece) {
                                          pids << piece;
                                          ++lines;
                                      });
    if (!started) {
        return 1;
    }
    // One line is always there: that of the shell that runs the pipeline, which holds both words.
    return lines > 1 ? 1 : 0;
}
