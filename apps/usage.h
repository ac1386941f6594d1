#pragma once

#include <iostream>
#include <string_view>

/// Returns true when the command line begins with "--help", "-h" or "--version", with the help text
/// or the product's version on standard output. Further on, such a word may be a name.
inline bool asked_for_help(int argc, char** argv, const char* help) {
    const std::string_view argument = argc > 1 ? argv[1] : "";
    if (argument == "--help" || argument == "-h") {
        std::cout << help;
        return true;
    }
    if (argument == "--version") {
        std::cout << "Quorvale " << QUORVALE_VERSION << "\n";
        return true;
    }
    return false;
}
