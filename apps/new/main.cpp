#include <termios.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <optional>
#include <string>

#include "network_creation.h"
#include "qt_compat.h"
#include "usage.h"

namespace {

/// The first line of standard input; what is typed in a terminal is not shown.
QByteArray read_password() {
    termios shown{};
    const bool terminal = tcgetattr(STDIN_FILENO, &shown) == 0;
    if (terminal) {
        termios hidden = shown;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        std::cerr << "Mot de passe de l'administrateur : " << std::flush;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    std::string line;
    std::getline(std::cin, line);
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
        std::cerr << std::endl;
    }
    return QByteArray::fromStdString(line);
}

/// What the command line asks for, or nothing when it is wrong: [--admin PSEUDO] NOM
std::optional<NewNetwork> wanted_network(const QStringList& words) {
    if (words.size() == 2) {
        return NewNetwork{words[1]};
    }
    if (words.size() == 4 && words[1] == QStringLiteral("--admin") && !words[2].isEmpty()) {
        return NewNetwork{words[3], words[2]};
    }
    return std::nullopt;
}

/// Lets a creation go to its end or take back what it made, whatever ends the programs around it.
/// The commands that it runs are ended as usual.
void outlive_signals() {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGPIPE}) {
        std::signal(signal, [](int) {});
    }
}

}  // namespace

int main(int argc, char** argv) {
    const char* const help =
        "Usage : quorvale-new [--admin PSEUDO] NOM\n"
        "\n"
        "Crée le réseau NOM dans le répertoire courant, d'après le modèle qui s'y trouve : son\n"
        "projet Django, dans un répertoire nommé d'après NOM, sa base de données et sa ligne dans\n"
        "networks.data. NOM est un texte quelconque, accents et espaces compris.\n"
        "\n"
        "  --admin PSEUDO  lui donne un administrateur, dont le mot de passe est demandé, ou lu\n"
        "                  sur la première ligne de l'entrée standard\n"
        "  -h, --help      affiche cette aide\n"
        "  --version       affiche la version\n"
        "\n"
        "Code de retour : 0 si le réseau est complet, 3 si le mot de passe est refusé, 4 si c'est\n"
        "le pseudo, 1 pour toute autre raison ; rien n'est alors gardé. 2 si la commande est mal\n"
        "écrite.\n";
    if (asked_for_help(argc, argv, help)) {
        return 0;
    }
    use_utf8_locale_codec();
    qputenv("PYTHONUTF8", "1");  // what Python is given is UTF-8, whatever the session's encoding
    const QCoreApplication application(argc, argv);
    std::optional<NewNetwork> wanted = wanted_network(QCoreApplication::arguments());
    if (!wanted) {
        std::cerr << help;
        return 2;
    }
    if (!wanted->administrator.isEmpty()) {
        wanted->password = read_password();
    }
    outlive_signals();
    return create_and_record_network(*wanted);
}
