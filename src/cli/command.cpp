#include "command.h"

#include <algorithm>
#include <iostream>
#include <set>

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

bool asksForHelp(std::span<const std::string> args) {
    for (const auto& arg : args) {
        if (arg == "--")
            return false;
        if (isHelpOption(arg))
            return true;
    }
    return false;
}

std::variant<ParsedArguments, int> parseAskingCommand(const Command& command,
                                                      std::span<const std::string> args,
                                                      std::span<const std::string_view> valued,
                                                      std::span<const std::string_view> flags) {
    if (asksForHelp(args)) {
        std::cout << command.usage;
        return exitSuccess;
    }
    auto parsedOrMessage = parseOptions(args, valued, flags);
    if (auto* message = std::get_if<std::string>(&parsedOrMessage))
        return usageError(command, *message);
    auto& parsed = std::get<ParsedArguments>(parsedOrMessage);
    if (parsed.has("--yes") && parsed.has("--no"))
        return usageError(command, "--yes and --no exclude each other");
    return std::move(parsed);
}

int writeTable(const import::FileFormat& format, const tables::ALETable& table, const std::string& output,
               const import::WriteOptions& options) {
    const std::set<std::string_view> present(table.cols.begin(), table.cols.end());
    std::string missing;
    for (const auto& name : options.columns) {
        if (!present.contains(name))
            missing += (missing.empty() ? "" : ", ") + name;
    }
    // A misspelt column would otherwise go out as an empty one without a word.
    if (!missing.empty())
        std::cerr << "Warning: " << output << ": the table has no column " << missing << "; written empty\n";
    std::string reason;
    if (!format.write(table, output, options, &reason))
        return failure("Cannot write " + output + ": " +
                       (reason.empty() ? std::string("the file could not be written") : reason));
    return exitSuccess;
}

std::vector<std::string> splitColumns(std::string_view list) {
    std::vector<std::string> names;
    std::size_t start = 0;
    while (true) {
        std::size_t comma = list.find(',', start);
        names.emplace_back(list.substr(start, comma == std::string_view::npos ? comma : comma - start));
        if (comma == std::string_view::npos)
            return names;
        start = comma + 1;
    }
}

std::variant<ParsedArguments, std::string> parseOptions(std::span<const std::string> args,
                                                        std::span<const std::string_view> valued,
                                                        std::span<const std::string_view> flags) {
    auto listed = [](std::span<const std::string_view> list, std::string_view name) {
        return std::find(list.begin(), list.end(), name) != list.end();
    };
    ParsedArguments parsed;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg == "-" || !arg.starts_with("-")) {
            parsed.positional.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        std::size_t equals = arg.find('=');
        std::string name = arg.substr(0, equals);
        if (listed(flags, name) && equals == std::string::npos) {
            parsed.flags.insert(name);
        } else if (listed(valued, name)) {
            if (equals != std::string::npos)
                parsed.values[name] = arg.substr(equals + 1);
            else if (i + 1 < args.size())
                parsed.values[name] = args[++i];
            else
                return name + " needs a value";
        } else {
            return "unknown option " + arg;
        }
    }
    return parsed;
}

} // namespace lumbra::cli
