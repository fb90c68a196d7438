#pragma once

#include "command.h"
#include "policy_interaction.h"
#include "project_session.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::cli {

// One subcommand of a command that may ask questions.
struct Subcommand {
    std::string_view name;
    // Its arguments after the name, in the groups a missing one is told with: {"PATH", "NAME TOOL COLUMN"}.
    // A last name ending in "..." takes one or more.
    std::vector<std::string_view> arguments;
    // The options it takes beyond --yes and --no.
    std::vector<std::string_view> options;
    int (*run)(const ParsedArguments& parsed);
};

// Parses a command whose first name picks one of `subcommands`, checks its arguments and options and runs it;
// help, a wrong subcommand, argument or option end it as usageError does.
int runSubcommand(const Command& command, std::span<const Subcommand> subcommands,
                  std::span<const std::string> args, std::span<const std::string_view> valued,
                  std::span<const std::string_view> flags);

// --yes, --no, or neither.
[[nodiscard]] AnswerPolicy answerPolicy(const ParsedArguments& parsed);
// Opens the project at the subcommand's first argument, answering as --yes and --no say, and runs `step` on
// it; exitFailure when it does not open.
int onProject(const ParsedArguments& parsed, const std::function<int(ProjectSession&)>& step);
// The layout options of .csv and .tsv input among the parsed ones; the message of a usage error for a value
// that does not fit.
[[nodiscard]] std::variant<CsvFlags, std::string> csvFlagsOf(const ParsedArguments& parsed);

} // namespace lumbra::cli
