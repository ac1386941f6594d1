#pragma once

#include <sys/types.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

/// Whether a command line, given as its words, starts a network's server: a
/// `python manage.py runserver`, however python and manage.py were named. The template's
/// hubs/processes.py decides it by the same rule.
bool is_server_command(const std::vector<std::string>& words);

/// The processes of this user whose working directory is a project's, by whatever path, even if it
/// has been removed since.
struct ProjectProcesses {
    std::vector<pid_t> servers{};    ///< Django runs two for each server
    std::set<pid_t> plain_shells{};  ///< without a command: a terminal's once its server has ended
    bool any = false;                ///< whether there are any: a terminal that has opened has one
};

/// Returns what runs in each of the project directories, in their order, by one walk through the
/// process list: 25 ms with 2,000 of this user. Prints nothing.
std::vector<ProjectProcesses> find_all_processes(const std::vector<std::string>& directories);

/// The same for one project directory.
ProjectProcesses find_processes(const std::string& directory);

/// Returns whether a server of this user serves each of the project directories, in their order.
/// Prints nothing.
std::vector<bool> find_served(const std::vector<std::string>& directories);

/// Ends the server of a project directory, and the terminal that was opened for it; a shell in
/// which the operator typed the command stays. Returns whether no process of the server is left;
/// true also when there was none.
///
/// Every process is asked to end by SIGINT, as by Ctrl+C, then by SIGTERM, then killed. Blocks
/// until they have ended, eight seconds at most. Prints nothing.
bool stop_server(const std::string& directory);

/// The same, but leaves the terminal open.
bool end_server(const std::string& directory);

/// Returns a function that closes the terminal that was opened for the server of a project
/// directory. Call this while the server runs: later, its terminal cannot be told from others.
std::function<void()> terminal_closer(const std::string& directory);
