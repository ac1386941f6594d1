#pragma once

#include <string>

/// Creates a network in the working directory, from the template there: the Django project NAME in
/// the directory NAME, its line in "networks.data" (NAME and its absolute directory), and its
/// database. Returns 0 when `manage.py` and every part of the template are in place, the network is
/// recorded and its migrations have run, else 1 with one French line on standard error.
///
/// Refused before anything is created: a name that is not a Python identifier of ASCII letters,
/// one that exists or is recorded, a registry that is no readable file, a missing or unreadable
/// template file, a working directory whose name the shell would not take as it stands. What a
/// failed command leaves behind is not removed. The commands' own complaints go to standard error.
/// Blocks until they have ended.
int create_and_record_network(const std::string& name);
