#pragma once

#include <string>

/// Starts the Django development server of a directory in a new gnome-terminal window, on Django's
/// default address: the loopback interface, port 8000. Keeps no state.
class DjangoManager {
public:
    /// `path`, the directory that holds manage.py, reaches the shell of the terminal unquoted.
    ///
    /// Returns 0 at once, with the process ID in a line on standard output, when the process for
    /// the terminal was created, 1 with a line on standard error when it was not. A terminal that
    /// then cannot be started gives a line on standard error, from the child. The child is not
    /// waited for; terminal and server outlive the caller.
    int launch(std::string path);
};
