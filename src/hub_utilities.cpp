#include "hub_utilities.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "command_pipe.h"
#include "network.h"
#include "registry_file.h"

std::string exec_cmd(std::string command) {
    std::string output;
    if (!read_command(command, [&output](const char* piece) { output += piece; })) {
        std::cout << "Oh Oh";
        throw std::runtime_error("Erreur lors de l'exécution de la commande.");
    }
    if (!output.empty() && output.back() == '\n') {
        output.pop_back();
    }
    return output;
}

std::string getIp() {
    return exec_cmd("ifconfig | grep 'inet ' | grep -v '127.0.0.1' | awk '{print $2}' | tail -n 1");
}

void read_hub_networks(std::vector<Network*>* networks) {
    std::ifstream registry(registry_file);
    if (!registry) {
        std::cerr << "Impossible d'ouvrir le fichier JSON." << std::endl;
        return;
    }
    int number = 0;
    read_registry_lines(registry, [&](const std::string& line, std::unique_ptr<Network> network) {
        ++number;
        std::cout << line << std::endl;
        if (network) {
            networks->push_back(network.release());
            return;
        }
        std::cerr << registry_file << ", ligne " << number
                  << " ignorée : il y manque le nom ou le répertoire, chacun suivi de « | »."
                  << std::endl;
    });
}

Network* split_hub_networks_file(std::string line) {
    const std::size_t name_end = line.find('|');
    if (name_end == std::string::npos) {
        return nullptr;
    }
    const std::size_t path_start = name_end + 1;
    const std::size_t path_end = line.find('|', path_start);
    if (path_end == std::string::npos) {
        return nullptr;
    }
    std::string path = line.substr(path_start, path_end - path_start);
    line.resize(name_end);
    return new Network(std::move(line), std::move(path), std::string());
}

std::vector<std::string> fetch_networks() {
    std::string hosts = exec_cmd("nmap -sn " + getIp() + "/24|grep report|awk '{print $6}'");
    hosts.erase(std::remove_if(hosts.begin(), hosts.end(),
                               [](char character) { return character == '(' || character == ')'; }),
                hosts.end());
    return splitLines(hosts);
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> find_servers() {
    std::vector<std::string> servers;
    for (const std::string& host : fetch_networks()) {
        const std::string answer =
            exec_cmd("curl --silent --head http://" + host +
                     ":8000/ | grep '200 OK' > /dev/null && echo 'OKI' || echo 'WEH'");
        if (answer.find("OKI") != std::string::npos) {
            servers.push_back(host + ":8000");
        }
    }
    return servers;
}

std::vector<std::string> find_servers_names(std::vector<std::string> servers) {
    std::vector<std::string> names;
    for (const std::string& server : servers) {
        const std::string command = "texte=$(curl -s http://" + server + "/_infos/kl/);echo $texte";
        names.push_back(exec_cmd(command));
        std::cout << exec_cmd(command);
    }
    return names;
}

int create_new_network(std::string name, std::string path) {
    const std::string inner = path + "/" + name + "/";
    const std::vector<std::string> commands = {
        "django-admin startproject " + path,
        "cp settings.py " + inner,
        "cp urls.py " + inner,
        "cp -r hubs/ " + inner,
        "cp -r ressources/ " + inner,
        "cp -r templates/ " + inner,
        "cp -r static/ " + inner,
    };
    for (const std::string& command : commands) {
        // A command that fails reports it itself; the ones after it are run all the same.
        [[maybe_unused]] const int status = std::system(command.c_str());
    }
    return 0;
}
