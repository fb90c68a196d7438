#include "command.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

namespace {

using lumbra::cli::Command;

// Every command, in the order of the usage text; a new command is one more entry.
std::span<const Command* const> commands() {
    static const std::array list{&lumbra::cli::convertCommand(), &lumbra::cli::projectCommand(),
                                 &lumbra::cli::binCommand(), &lumbra::cli::mhlCommand(),
                                 &lumbra::cli::dbCommand()};
    return list;
}

void printUsage(std::ostream& out) {
    out << "Usage: lumbra-cli COMMAND [ARGUMENTS]\n"
           "       lumbra-cli COMMAND --help\n\n"
           "Commands:\n";
    for (const Command* command : commands()) {
        std::string name(command->name);
        name.resize(std::max<std::size_t>(name.size() + 2, 12), ' ');
        out << "  " << name << command->summary << '\n';
    }
}

int run(const std::vector<std::string>& args) {
    if (args.empty()) {
        printUsage(std::cerr);
        return lumbra::cli::exitUsage;
    }
    if (lumbra::cli::isHelpOption(args.front())) {
        printUsage(std::cout);
        return lumbra::cli::exitSuccess;
    }
    for (const Command* command : commands()) {
        if (command->name == args.front()) {
            return command->run(std::span<const std::string>(args).subspan(1));
        }
    }
    std::cerr << "lumbra-cli: unknown command \"" << args.front() << "\"\n";
    printUsage(std::cerr);
    return lumbra::cli::exitUsage;
}

} // namespace

// Whatever escapes a command ends it with one line and status 1, never with an abort and a core dump.
int main(int argc, char** argv) {
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::bad_alloc&) {
        return lumbra::cli::failure("lumbra-cli: out of memory");
    } catch (const std::exception& error) {
        // A std::filesystem::filesystem_error among them names its paths and the system's reason.
        return lumbra::cli::failure(std::string("lumbra-cli: ") + error.what());
    }
}
