#pragma once

#include <iostream>
#include <string_view>

/// Returns true when "--help", "-h" or "--version" is on the command line, with the help text or
/// the product's version on standard output.
inline bool asked_for_help(int argc, char** argv, const char* help) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help" || argument == "-h") {
            std::cout << help;
            return true;
        }
        if (argument == "--version") {
            std::cout << "Quorvale " << QUORVALE_VERSION << "\n";
            return true;
        }
    }
    return false;
}
