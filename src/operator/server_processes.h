#pragma once

#include <sys/types.h>

#include <functional>
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

/// Which of the project directories a server of this user serves, in their order, by one walk
/// through the process list. Prints nothing.
std::vector<bool> find_served(const std::vector<std::string>& directories);

/// The shells of this user, without a command, that stand in the directory: a terminal's after its
/// server has ended. Prints nothing.
std::vector<pid_t> find_plain_shells(const std::string& directory);

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

/// The same without the terminal, which stays open.
bool end_server(const std::string& directory);

/// Returns what closes the terminal that was opened for the server of a project directory. To be
/// asked for while the server runs: afterwards, its terminal is not told from others.
std::function<void()> terminal_closer(const std::string& directory);
