#include "search_wait.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>
#include <csignal>

namespace {

/// Returns the path of `quorvale-wait`: beside this program in the build tree, among the tools
/// where it is installed.
std::string find_program() {
    const QString here = QCoreApplication::applicationDirPath();
    return QFile::encodeName(QStandardPaths::findExecutable(
                                 QStringLiteral("quorvale-wait"),
                                 {here, here + QStringLiteral("/../libexec/quorvale")}))
        .toStdString();
}

/// Returns the new process, or -1. The kernel kills it when this thread ends.
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
    // Not reaped here, so that the destructor can still signal that pid safely.
    waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT);
    if (end.si_code == CLD_EXITED && end.si_status == 0) {
        // Replacing this process ends the thread of the search before its commands are killed, so
        // that it starts no others.
        execl(program.c_str(), program.c_str(), "--end", nullptr);
    }
}
