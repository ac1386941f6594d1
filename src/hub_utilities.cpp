#include "hub_utilities.h"

#include <QByteArray>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "command_pipe.h"
#include "network.h"

namespace {

bool is_registry_field(const std::string& text) {
    return !text.empty() && text.find_first_of("|\n") == std::string::npos;
}

/// Answers whether the registry, as it was with one line more, is in place.
bool append_to_registry(const QByteArray& line) {
    const QString registry_name = QStringLiteral("networks.data");
    QLockFile lock(registry_name + QStringLiteral(".lock"));
    if (!lock.lock()) {
        return false;
    }
    QByteArray contents;
    QFile registry(registry_name);
    if (registry.exists()) {
        if (!registry.open(QIODevice::ReadOnly)) {
            return false;
        }
        contents = registry.readAll();
        // Beyond the size of a QByteArray, nothing is read, and no error is set.
        if (registry.error() != QFileDevice::NoError || contents.size() != registry.size()) {
            return false;
        }
    }
    if (!contents.isEmpty() && !contents.endsWith('\n')) {
        contents += '\n';
    }
    // Written beside the registry, then renamed over it: whole or not at all. The commit alone
    // would not report a disk that is full by the last bytes: the flush does.
    QSaveFile replacement(registry_name);
    return replacement.open(QIODevice::WriteOnly) && replacement.write(contents + line) >= 0 &&
           replacement.flush() && replacement.commit();
}

}  // namespace

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
    std::ifstream registry("networks.data");
    if (!registry) {
        std::cerr << "Impossible d'ouvrir le fichier JSON." << std::endl;
        return;
    }
    std::string line;
    for (int number = 1; std::getline(registry, line); ++number) {
        std::cout << line << std::endl;
        Network* const network = split_hub_networks_file(line);
        if (network == nullptr) {
            std::cerr << "networks.data, ligne " << number
                      << " ignorée : il y manque le nom ou le répertoire, chacun suivi de « | »."
                      << std::endl;
            continue;
        }
        networks->push_back(network);
    }
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
    return new Network(line.substr(0, name_end), line.substr(path_start, path_end - path_start),
                       std::string());
}

std::vector<std::string> fetch_networks() {
    return hosts_of_scan(exec_cmd("nmap -sn " + getIp() + "/24|grep report|awk '{print $6}'"));
}

std::vector<std::string> hosts_of_scan(std::string words) {
    words.erase(std::remove_if(words.begin(), words.end(),
                               [](char character) { return character == '(' || character == ')'; }),
                words.end());
    return splitLines(words);
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
        // A failed command speaks for itself, and the ones after it are tried all the same.
        [[maybe_unused]] const int status = std::system(command.c_str());
    }
    return 0;
}

bool is_recorded(const std::string& name) {
    std::ifstream registry("networks.data");
    for (std::string line; std::getline(registry, line);) {
        const std::unique_ptr<const Network> network(split_hub_networks_file(line));
        if (network && network->name == name) {
            return true;
        }
    }
    return false;
}

int record_hub_network(std::string name, std::string directory) {
    if (!is_registry_field(name) || !is_registry_field(directory)) {
        std::cerr
            << "networks.data : un nom ou un répertoire vide, ou qui contient « | » ou un saut "
               "de ligne, ne peut pas être enregistré."
            << std::endl;
        return 1;
    }
    if (!append_to_registry(QByteArray::fromStdString(name + "|" + directory + "|\n"))) {
        std::cerr
            << "networks.data : le réseau n'a pas pu être enregistré, le fichier est inchangé."
            << std::endl;
        return 1;
    }
    return 0;
}
