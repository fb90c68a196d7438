#pragma once

#include "import/file_formats.h"

#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace lumbra::cli {

// Exit codes shared by every command.
inline constexpr int exitSuccess = 0;
inline constexpr int exitFailure = 1;
inline constexpr int exitUsage = 2;

// One subcommand of lumbra-cli: its name, a one-line summary for the command list, its usage
// text, and the function that runs it on the arguments after its name.
struct Command {
    std::string_view name;
    std::string_view summary;
    std::string_view usage;
    int (*run)(std::span<const std::string> args);
};

const Command& convertCommand();
const Command& projectCommand();
const Command& binCommand();
const Command& dbCommand();
const Command& mhlCommand();

// Prints "lumbra-cli NAME: message" and the command's usage on standard error; returns exitUsage.
int usageError(const Command& command, std::string_view message);
// Prints the one line that tells why a command failed on standard error; returns exitFailure.
int failure(std::string_view line);
// True for "-h" and "--help".
[[nodiscard]] bool isHelpOption(std::string_view arg);
// True when a help option stands before any "--".
[[nodiscard]] bool asksForHelp(std::span<const std::string> args);
// Splits "A,B,C" into names; column names may hold blanks, so nothing is trimmed.
[[nodiscard]] std::vector<std::string> splitColumns(std::string_view list);

// Arguments split into names and options; an option given twice keeps its last value.
struct ParsedArguments {
    std::vector<std::string> positional;
    std::map<std::string, std::string, std::less<>> values;
    std::set<std::string, std::less<>> flags;

    [[nodiscard]] bool has(std::string_view flag) const { return flags.contains(flag); }
};
// Options named in `valued` take the next argument or "=value", those in `flags` stand alone; "--"
// ends the options and "-" is a name. The message of a usage error instead, for an unknown option or
// a missing value.
[[nodiscard]] std::variant<ParsedArguments, std::string>
parseOptions(std::span<const std::string> args, std::span<const std::string_view> valued,
             std::span<const std::string_view> flags);

// The start of a command that may ask questions: help (printed, exitSuccess), the options, and the
// rule that --yes and --no exclude each other. The parsed arguments, or the exit status to return.
[[nodiscard]] std::variant<ParsedArguments, int> parseAskingCommand(const Command& command,
                                                                    std::span<const std::string> args,
                                                                    std::span<const std::string_view> valued,
                                                                    std::span<const std::string_view> flags);

// Writes a table through a format; on failure prints the one line that names the file and the
// writer's reason, and returns exitFailure.
int writeTable(const import::FileFormat& format, const tables::ALETable& table, const std::string& output,
               const import::WriteOptions& options);

} // namespace lumbra::cli
