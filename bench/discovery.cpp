// The client's search without its window: prints the servers, then their names.
#include <iostream>

#include "hub_utilities.h"

int main() {
    const std::vector<std::string> servers = find_servers();
    for (const std::string& server : servers) {
        std::cout << server << "\n";
    }
    find_servers_names(servers);  // prints them
    std::cout << "\n";
    return 0;
}
