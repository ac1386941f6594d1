#pragma once

#include <QString>
#include <string>
#include <vector>

/// A network of the registry, under the name that the operator sees.
struct RegisteredNetwork {
    QString name;           ///< its display name: of its "nom.txt", the registry or its directory
    std::string directory;  ///< its project's, the bytes that the registry has
};

/// Returns the networks of "networks.data" (working directory) in its order; none when it cannot be
/// read. Lines that lack a field are left out. Prints nothing.
std::vector<RegisteredNetwork> registered_networks();

/// Returns whether a network's directory holds a project.
bool has_project(const std::string& directory);

/// Returns the directory of a project's package, which holds the network's pages and files; an
/// empty text if there is none.
QString package_of(const std::string& directory);

/// Returns the French message for a network whose directory holds no project.
QString project_missing(const std::string& directory);
