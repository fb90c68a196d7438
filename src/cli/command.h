#pragma once

#include "tables/console.h"

#include <span>
#include <string>
#include <string_view>
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

// Prints "lumbra-cli NAME: message" and the command's usage on standard error; returns exitUsage.
int usageError(const Command& command, std::string_view message);
// Prints the one line that tells why a command failed on standard error; returns exitFailure.
int failure(std::string_view line);
// True for "-h" and "--help".
[[nodiscard]] bool isHelpOption(std::string_view arg);

// Runs a core step with its log lines held back, then prints them as they came; the last one
// tells why the step failed, when it did.
template <typename Step> auto runLogged(Step step, std::string& lastLine) {
    std::vector<std::string> lines;
    auto result = [&] {
        lumbra::tables::PrintCapture capture;
        auto r = step();
        lines = capture.lines();
        return r;
    }();
    for (const auto& line : lines)
        lumbra::tables::printLine(line);
    lastLine = lines.empty() ? std::string() : lines.back();
    return result;
}

} // namespace lumbra::cli
