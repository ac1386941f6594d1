#pragma once

#include <sys/types.h>

#include <string>
#include <thread>

/// The window shown while the search blocks this program: a process of its own, `quorvale-wait`,
/// which lives as long as this object, and no longer than the thread that created it. Where that
/// program is missing or fails, there is no such window.
///
/// When the operator closes the window, this program and all that it has started end at once, with
/// status 0; no destructor runs.
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
