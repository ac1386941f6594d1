#pragma once

#include <cstring>
#include <iostream>

/// Prints the help text on standard output and returns true when "--help" is on the command line.
inline bool asked_for_help(int argc, char** argv, const char* help) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) {
            std::cout << help;
            return true;
        }
    }
    return false;
}
