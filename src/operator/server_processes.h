#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// The processes of this user that serve the network of a project directory: every
/// `python manage.py runserver` whose working directory it is, however either was named. Django has
/// two of them for each server. Prints nothing.
std::vector<pid_t> find_server_processes(const std::string& directory);

/// Ends the server of a project directory, and the terminal that was opened for it; a shell in
/// which the operator typed the command stays. Returns whether no process of the server is left, so
/// also when there was none.
///
/// Every process is asked to end by SIGINT, as by Ctrl+C, then by SIGTERM, then killed: blocks
/// until they have ended, six seconds at most. Prints nothing.
bool stop_server(const std::string& directory);
