#include "search_wait.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>
#include <csignal>

namespace {

/// Beside this program in the build tree, among the tools where they are installed.
std::string find_program() {
    const QString here = QCoreApplication::applicationDirPath();
    return QFile::encodeName(QStandardPaths::findExecutable(
                                 QStringLiteral("quorvale-wait"),
                                 {here, here + QStringLiteral("/../libexec/quorvale")}))
        .toStdString();
}

/// Returns the new process, or -1. It dies with this thread.
pid_t start(const char* program) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent) {
            execl(program, program, nullptr);
        }
        _exit(127);
    }
    return child;
}

}  // namespace

SearchWait::SearchWait() : program(find_program()), process(start(program.c_str())) {
    if (process > 0) {
        watcher = std::thread(&SearchWait::watch, this);
    }
}

SearchWait::~SearchWait() {
    if (process > 0) {
        kill(process, SIGKILL);
        watcher.join();
        waitpid(process, nullptr, 0);
    }
}

void SearchWait::watch() const {
    siginfo_t end = {};
    // Not reaped here: until the destructor the number stays that of this process.
    waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT);
    if (end.si_code == CLD_EXITED && end.si_status == 0) {
        // Replacing this process ends the search's thread before its commands are killed, so that
        // it starts no other.
        execl(program.c_str(), program.c_str(), "--end", nullptr);
    }
}
