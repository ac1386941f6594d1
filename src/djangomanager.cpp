#include "djangomanager.h"

#include <sys/types.h>
#include <unistd.h>

#include <iostream>

int DjangoManager::launch(std::string path) {
    const std::string command = "cd " + path + " && python3 manage.py runserver; exec bash";

    const pid_t child = fork();
    if (child < 0) {
        std::cerr << "Erreur : impossible de forker." << std::endl;
        return 1;
    }
    if (child == 0) {
        execlp("gnome-terminal", "gnome-terminal", "--", "bash", "-c", command.c_str(), nullptr);
        std::cerr << "Erreur : impossible de lancer le terminal." << std::endl;
        // Not exit(), which would run the parent's exit handlers and write its buffered output.
        _exit(1);
    }
    std::cout << "Le serveur Django a été lancé dans un nouveau terminal (PID " << child << ")."
              << std::endl;
    return 0;
}
