#pragma once

#include <sys/types.h>

#include <string>
#include <thread>

/// The window that stands on the screen while the search blocks this program: a process of its own,
/// `quorvale-wait`, which lives as long as this object and never longer than the thread that made
/// it. Where that program is missing or fails, there is none.
///
/// When the operator closes the window, this program ends at once with status 0, and all that it
/// has started with it; nothing is destroyed.
class SearchWait {
public:
    /// Needs the application object, and does not wait for the window.
    SearchWait();
    ~SearchWait();

    SearchWait(const SearchWait&) = delete;
    SearchWait& operator=(const SearchWait&) = delete;

private:
    /// Waits for the end of the process, and ends this program if the operator closed the window.
    void watch() const;

    std::string program;
    pid_t process;
    std::thread watcher;
};
