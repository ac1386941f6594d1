#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// Whether a command line, given as its words, starts a network's server: a
/// `python manage.py runserver`, however python and manage.py were named. The template's
/// hubs/processes.py decides it by the same rule.
bool is_server_command(const std::vector<std::string>& words);

/// The processes of this user that serve the network of a project directory, however that is
/// named, and also when it has been removed since. Django has two of them for each server. Prints
/// nothing.
std::vector<pid_t> find_server_processes(const std::string& directory);

/// Whether a process of this user has the directory as its working directory, as the shell of a
/// terminal that was opened for its server. Prints nothing.
bool is_entered(const std::string& directory);

/// Ends the server of a project directory, and the terminal that was opened for it; a shell in
/// which the operator typed the command stays. Returns whether no process of the server is left, so
/// also when there was none.
///
/// Every process is asked to end by SIGINT, as by Ctrl+C, then by SIGTERM, then killed: blocks
/// until they have ended, eight seconds at most. Prints nothing.
bool stop_server(const std::string& directory);
