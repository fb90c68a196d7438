#include "subcommand.h"

#include "base/text_helpers.h"

#include <algorithm>

namespace lumbra::cli {

namespace {

// The message of a usage error when `given` names do not fit the subcommand's arguments: "PATH is needed",
// "NAME, TOOL and COLUMN are needed", "at least one FILE is needed", "too many arguments".
std::optional<std::string> argumentsError(const Subcommand& sub, std::size_t given) {
    std::size_t needed = 0;
    for (std::string_view group : sub.arguments) {
        std::vector<std::string> names = base::tokenise(group, " ");
        needed += names.size();
        if (given >= needed)
            continue;
        if (names.back().ends_with("..."))
            return "at least one " + names.back().substr(0, names.back().size() - 3) + " is needed";
        std::string list = names.front();
        for (std::size_t i = 1; i < names.size(); ++i)
            list += (i + 1 == names.size() ? " and " : ", ") + names[i];
        return list + (names.size() == 1 ? " is needed" : " are needed");
    }
    if (given > needed && (sub.arguments.empty() || !sub.arguments.back().ends_with("...")))
        return "too many arguments";
    return std::nullopt;
}

} // namespace

int runSubcommand(const Command& command, std::span<const Subcommand> subcommands,
                  std::span<const std::string> args, std::span<const std::string_view> valued,
                  std::span<const std::string_view> flags) {
    auto parsedOrStatus = parseAskingCommand(command, args, valued, flags);
    if (const int* status = std::get_if<int>(&parsedOrStatus))
        return *status;
    const auto& parsed = std::get<ParsedArguments>(parsedOrStatus);
    if (parsed.positional.empty())
        return usageError(command, "a subcommand is needed");
    const std::string& name = parsed.positional.front();
    auto sub = std::ranges::find(subcommands, name, &Subcommand::name);
    if (sub == subcommands.end())
        return usageError(command, "unknown subcommand \"" + name + "\"");
    if (auto message = argumentsError(*sub, parsed.positional.size() - 1))
        return usageError(command, *message);
    auto refused = [&](std::string_view option) {
        return option != "--yes" && option != "--no" &&
               std::ranges::find(sub->options, option) == sub->options.end();
    };
    for (const auto& [option, value] : parsed.values) {
        if (refused(option))
            return usageError(command, option + " does not apply to " + name);
    }
    for (const auto& option : parsed.flags) {
        if (refused(option))
            return usageError(command, option + " does not apply to " + name);
    }
    return sub->run(parsed);
}

AnswerPolicy answerPolicy(const ParsedArguments& parsed) {
    return parsed.has("--yes")  ? AnswerPolicy::affirm
           : parsed.has("--no") ? AnswerPolicy::cancel
                                : AnswerPolicy::ask;
}

int onProject(const ParsedArguments& parsed, const std::function<int(ProjectSession&)>& step) {
    ProjectSession session(answerPolicy(parsed));
    return session.open(parsed.positional[1]) ? step(session) : exitFailure;
}

std::variant<CsvFlags, std::string> csvFlagsOf(const ParsedArguments& parsed) {
    CsvFlags csvFlags;
    for (const auto& [name, value] : parsed.values) {
        if (!isCsvOption(name))
            continue;
        if (auto message = setCsvOption(csvFlags, name, value))
            return *message;
    }
    csvFlags.ignoreOrientedQuotes = parsed.has(csvFlagOption);
    return csvFlags;
}

} // namespace lumbra::cli
