#include "server_processes.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Refers to one process, never to a later one with the same number.
class Process {
public:
    explicit Process(pid_t pid) : descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))) {}
    Process(Process&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    Process& operator=(Process&&) = delete;
    ~Process() {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }

    void send(int signal) const {
        syscall(SYS_pidfd_send_signal, descriptor, signal, nullptr, 0);
    }

    /// Waits for the end of the process, until the deadline. Returns whether it has ended.
    bool wait_until(Clock::time_point deadline) const {
        pollfd end{descriptor, POLLIN, 0};
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        const int limit = std::max(0, static_cast<int>(left.count()));
        return descriptor < 0 || poll(&end, 1, limit) > 0;
    }

private:
    int descriptor;
};

fs::path entry_of(pid_t pid, const char* file) {
    return fs::path("/proc") / std::to_string(pid) / file;
}

/// Returns the words of the command line; none for a process that has ended.
std::vector<std::string> words_of(pid_t pid) {
    std::ifstream file(entry_of(pid, "cmdline"));
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');) {
        words.push_back(word);
    }
    return words;
}

bool is_own(pid_t pid) {
    struct stat entry = {};
    return stat(entry_of(pid, "").c_str(), &entry) == 0 && entry.st_uid == geteuid();
}

/// The working directory of a process.
struct WorkingDirectory {
    explicit WorkingDirectory(pid_t pid) {
        const fs::path link = entry_of(pid, "cwd");
        is_known = stat(link.c_str(), &identity) == 0;
        if (is_known && identity.st_nlink == 0) {
            std::error_code error;
            removed = fs::read_symlink(link, error);
        }
    }

    bool is_known;
    struct stat identity = {};
    std::string removed{};  ///< the kernel's name of one that has been removed
};

/// A project directory, by whatever path, even if it has been removed since.
class Project {
public:
    explicit Project(const std::string& directory)
        : exists(stat(directory.c_str(), &identity) == 0) {
        std::error_code error;
        const fs::path named = fs::weakly_canonical(fs::path(directory) / "", error);
        removed = named.parent_path().string() + " (deleted)";
    }

    bool is(const WorkingDirectory& other) const {
        return other.is_known && ((exists && identity.st_dev == other.identity.st_dev &&
                                   identity.st_ino == other.identity.st_ino) ||
                                  removed == other.removed);
    }

private:
    struct stat identity = {};
    bool exists;
    std::string removed{};
};

bool serves(pid_t pid, const Project& project) {
    return is_own(pid) && project.is(WorkingDirectory(pid)) && is_server_command(words_of(pid));
}

/// Adds a process to those found in its working directory.
void add(pid_t pid, ProjectProcesses& found) {
    found.any = true;
    const std::vector<std::string> words = words_of(pid);
    if (is_server_command(words)) {
        found.servers.push_back(pid);
    } else if (words == std::vector<std::string>{"bash"}) {
        found.plain_shells.insert(pid);
    }
}

pid_t parent_of(pid_t pid) {
    std::ifstream file(entry_of(pid, "status"));
    const std::string key = "PPid:";
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(key, 0) == 0) {
            return std::atoi(line.c_str() + key.size());
        }
    }
    return 0;
}

/// Whether the process, a server's parent, is the shell of a terminal that was opened for it.
bool is_terminal_shell(pid_t pid) {
    const std::vector<std::string> words = words_of(pid);
    const std::string end = "exec bash";
    return is_own(pid) && words.size() == 3 && words[1] == "-c" && words[2].size() > end.size() &&
           words[2].compare(words[2].size() - end.size(), end.size(), end) == 0;
}

/// Returns the processes that pass the check. Each is opened first, then checked, for pids are
/// reused.
template <typename Check>
std::vector<Process> open_checked(const std::vector<pid_t>& pids, Check check) {
    std::vector<Process> opened;
    for (const pid_t pid : pids) {
        Process process(pid);
        if (check(pid)) {
            opened.push_back(std::move(process));
        }
    }
    return opened;
}

std::vector<Process> terminal_shells(const std::string& directory) {
    std::vector<pid_t> parents;
    for (const pid_t pid : find_processes(directory).servers) {
        parents.push_back(parent_of(pid));
    }
    return open_checked(parents, is_terminal_shell);
}

/// Ends a terminal's shell, within two seconds. It has just become interactive, and misses a signal
/// that comes before it reads its input.
void hang_up(const Process& shell) {
    for (int tries = 0; tries < 10; ++tries) {
        shell.send(SIGHUP);
        if (shell.wait_until(Clock::now() + std::chrono::milliseconds(200))) {
            return;
        }
    }
}

}  // namespace

bool is_server_command(const std::vector<std::string>& words) {
    const auto script = std::find_if(words.begin(), words.end(), [](const std::string& word) {
        return fs::path(word).filename() == "manage.py";
    });
    return script != words.end() && script + 1 != words.end() && *(script + 1) == "runserver" &&
           fs::path(words[0]).filename().string().rfind("python", 0) == 0;
}

std::vector<ProjectProcesses> find_all_processes(const std::vector<std::string>& directories) {
    const std::vector<Project> projects(directories.begin(), directories.end());
    std::vector<ProjectProcesses> found(projects.size());
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; entry != end; entry.increment(error)) {
        const pid_t pid = std::atoi(entry->path().filename().c_str());
        if (pid <= 0 || !is_own(pid)) {
            continue;
        }
        const WorkingDirectory work(pid);
        for (std::size_t i = 0; i < projects.size(); ++i) {
            if (projects[i].is(work)) {
                add(pid, found[i]);
            }
        }
    }
    return found;
}

ProjectProcesses find_processes(const std::string& directory) {
    return find_all_processes({directory}).front();
}

std::vector<bool> find_served(const std::vector<std::string>& directories) {
    std::vector<bool> served;
    for (const ProjectProcesses& processes : find_all_processes(directories)) {
        served.push_back(!processes.servers.empty());
    }
    return served;
}

bool end_server(const std::string& directory) {
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        const Project project(directory);
        const std::vector<Process> servers =
            open_checked(find_processes(directory).servers,
                         [&project](pid_t pid) { return serves(pid, project); });
        if (servers.empty()) {
            break;
        }
        for (const Process& server : servers) {
            server.send(signal);
        }
        const Clock::time_point deadline = Clock::now() + std::chrono::seconds(2);
        for (const Process& server : servers) {
            server.wait_until(deadline);
        }
    }
    return find_processes(directory).servers.empty();
}

std::function<void()> terminal_closer(const std::string& directory) {
    const auto shells = std::make_shared<std::vector<Process>>(terminal_shells(directory));
    return [shells] {
        for (const Process& shell : *shells) {
            hang_up(shell);
        }
    };
}

bool stop_server(const std::string& directory) {
    const std::function<void()> close_terminal = terminal_closer(directory);
    const bool ended = end_server(directory);
    close_terminal();
    return ended;
}
