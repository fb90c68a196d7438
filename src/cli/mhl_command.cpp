#include "command.h"
#include "import/mhl_parser.h"

#include <variant>

namespace lumbra::cli {

namespace {

constexpr std::string_view usage =
    "Usage: lumbra-cli mhl FILE\n"
    "\n"
    "Reads the media hash list FILE and prints its columns, then one line per\n"
    "hash block, values separated by tabs. No project is opened and no bin is made.\n"
    "\n"
    "  -h, --help  show this text\n";

int run(std::span<const std::string> args);

const Command command{"mhl", "print the columns and rows of a media hash list", usage, run};

int run(std::span<const std::string> args) {
    auto parsedOrStatus = parseAskingCommand(command, args, {}, {});
    if (const int* status = std::get_if<int>(&parsedOrStatus))
        return *status;
    const auto& positional = std::get<ParsedArguments>(parsedOrStatus).positional;
    if (positional.size() != 1)
        return usageError(command, positional.empty() ? "FILE is needed" : "too many arguments");

    // The list is read whatever its suffix: the command names the format.
    std::optional<tables::MHLTable> table = import::parseMHLFile(positional.front());
    if (!table)
        return failure("Cannot read " + positional.front() + ": the file could not be read");
    import::printMHLTable(*table);
    return exitSuccess;
}

} // namespace

const Command& mhlCommand() {
    return command;
}

} // namespace lumbra::cli
