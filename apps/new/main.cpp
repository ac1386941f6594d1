#include <termios.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <csignal>
#include <iostream>
#include <string>

#include "command_line.h"
#include "network_creation.h"
#include "qt_compat.h"

namespace {

const QString admin = QStringLiteral("admin");
const QString contents = QStringLiteral("contents");

termios echoing{};  ///< the terminal as it was

/// Ends this program by the signal, once the terminal echoes again.
void echo_and_end(int signal) {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &echoing);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Returns the first line of standard input. What is typed in a terminal is not echoed.
QByteArray read_password() {
    const bool terminal = tcgetattr(STDIN_FILENO, &echoing) == 0;
    if (terminal) {
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
            std::signal(signal, echo_and_end);
        }
        termios hidden = echoing;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        std::cerr << "Mot de passe de l'administrateur : " << std::flush;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    std::string line;
    std::getline(std::cin, line);
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &echoing);
        std::cerr << std::endl;
    }
    return QByteArray::fromStdString(line);
}

/// Ignores the signals that would end this program, so that a creation finishes or is undone. The
/// commands that it runs still receive them.
void outlive_signals() {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGPIPE}) {
        std::signal(signal, [](int) {});
    }
}

/// Adds the arguments and options.
void describe(CommandLine& line) {
    line.add_argument(
        QStringLiteral("NOM"),
        QStringLiteral("Le nom du réseau, un texte quelconque, accents et espaces compris. S'il "
                       "commence par un tiret, mettez -- devant."));
    line.add_option({admin,
                     QStringLiteral("Lui donne un administrateur, dont le mot de passe est "
                                    "demandé, ou lu sur la première ligne de l'entrée "
                                    "standard."),
                     QStringLiteral("PSEUDO")});
    // For quorvale-network, which restores a copy: see NewNetwork.
    QCommandLineOption of_copy(contents, {}, QStringLiteral("RÉPERTOIRE"));
    of_copy.setFlags(QCommandLineOption::HiddenFromHelp);
    line.add_option(of_copy);
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line(
        QStringLiteral("Crée un réseau dans le répertoire courant, d'après le modèle qui s'y "
                       "trouve : son\nprojet Django, dans un répertoire nommé d'après lui, sa base "
                       "de données et sa ligne\ndans networks.data."),
        QStringLiteral(
            "Code de retour : 0 si le réseau est complet, 3 si le mot de passe est "
            "refusé, 4 si\nc'est le pseudo, 1 pour toute autre raison ; rien n'est alors "
            "gardé. 2 si la commande\nest mal écrite.\n"));
    describe(line);
    if (line.answers(argc, argv)) {
        return 0;
    }
    use_utf8_locale_codec();
    qputenv("PYTHONUTF8", "1");  // what Python is given is UTF-8, whatever the session's encoding
    const QCoreApplication application(argc, argv);
    if (!line.is_valid()) {
        return usage_error;
    }
    NewNetwork wanted{line.argument(0), line.value(admin)};
    if (line.has(admin)) {
        wanted.password = read_password();
    }
    if (line.has(contents)) {
        wanted.contents = QDir(line.value(contents)).absolutePath();
    }
    outlive_signals();
    return create_and_record_network(wanted);
}
