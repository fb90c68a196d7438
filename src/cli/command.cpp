#include "command.h"

#include <iostream>

namespace lumbra::cli {

int usageError(const Command& command, std::string_view message) {
    std::cerr << "lumbra-cli " << command.name << ": " << message << "\n" << command.usage;
    return exitUsage;
}

int failure(std::string_view line) {
    std::cerr << line << '\n';
    return exitFailure;
}

bool isHelpOption(std::string_view arg) {
    return arg == "-h" || arg == "--help";
}

} // namespace lumbra::cli
