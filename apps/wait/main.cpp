#include <sys/types.h>
#include <unistd.h>

#include <QApplication>
#include <csignal>
#include <fstream>
#include <string>

#include "applicationsetup.h"
#include "command_line.h"
#include "wait_window.h"

// Started by the client, see SearchWait. Without arguments it shows the waiting window until it is
// killed; status 0 means that the operator closed it. With "--end" it replaces the client in the
// same process, and kills the commands that the client had started.

namespace {

/// Kills all descendants of a process, the youngest first. Each is stopped before its children are
/// listed, so that it starts no others.
void end_children(pid_t parent) {
    const std::string number = std::to_string(parent);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    for (pid_t child = 0; children >> child;) {
        kill(child, SIGSTOP);
        end_children(child);
        kill(child, SIGKILL);
    }
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line(QStringLiteral(
        "Affiche la fenêtre d'attente du client de Quorvale, qui lance ce programme."));
    const QString end = QStringLiteral("end");
    line.add_option({end, QStringLiteral("Termine les programmes lancés par ce processus.")});
    if (line.answers(argc, argv)) {
        return 0;
    }
    if (line.has(end)) {
        const QCoreApplication application(argc, argv);
        if (!line.is_valid()) {
            return usage_error;
        }
        end_children(getpid());
        return 0;
    }
    // The window is the client's, for X and for Wayland.
    QCoreApplication::setApplicationName(QStringLiteral("quorvale-client"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quorvale.Client"));
    const QApplication application(argc, argv);
    if (!line.is_valid()) {
        return usage_error;
    }
    const ApplicationSetup setup;
    WaitWindow window;
    ApplicationSetup::dress_window(window);
    ApplicationSetup::show_first_window(window);
    return QApplication::exec();
}
