#pragma once

#include "import/csv_options.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace lumbra::cli {

// The layout of .csv and .tsv input as given on the command line; what is not given keeps the value the
// question starts from (a tab for a .tsv, the defaults otherwise).
struct CsvFlags {
    std::optional<char32_t> separator;
    std::optional<char32_t> delimiter;
    // "--delimiter standard": fields cut as standard CSV.
    bool standardCsv = false;
    std::optional<base::FirstLineStyle> firstLine;
    int firstLineNumber = 0;
    bool ignoreOrientedQuotes = false;

    [[nodiscard]] bool given() const noexcept {
        return separator || delimiter || firstLine || ignoreOrientedQuotes;
    }
    [[nodiscard]] base::CsvOptions applyTo(base::CsvOptions initial) const;
};

inline constexpr std::array<std::string_view, 3> csvValuedOptions{"--separator", "--delimiter",
                                                                  "--first-line"};
inline constexpr std::string_view csvFlagOption = "--ignore-oriented-quotes";

// Sets one valued option; the message of a usage error when the value does not fit.
[[nodiscard]] std::optional<std::string> setCsvOption(CsvFlags& flags, std::string_view name,
                                                      std::string_view value);
[[nodiscard]] bool isCsvOption(std::string_view name) noexcept;

// The lines of a command's help that tell the options above.
inline constexpr std::string_view csvOptionsHelp =
    "  --separator S       field separator of .csv/.tsv input: one character, or comma,\n"
    "                      semicolon, tab, blank (default: comma; tab for .tsv)\n"
    "  --delimiter D       text delimiter: double (\") or single ('), or one character\n"
    "                      (default: double; double quotes are always dropped, so only\n"
    "                      another delimiter keeps separators inside a field), or standard:\n"
    "                      standard CSV, where a quoted field keeps separators and line\n"
    "                      feeds and a doubled quote is one quote\n"
    "  --first-line L      where the column names stand: auto (behind the first empty line,\n"
    "                      else behind a line \"Column\", else the first line), first,\n"
    "                      afterempty, aftercolumn, or the line number N from 1 (default auto)\n"
    "  --ignore-oriented-quotes\n"
    "                      curly quotes do not keep separators and line feeds in a field\n";

} // namespace lumbra::cli
