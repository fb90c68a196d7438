#include "csv_options_flags.h"

#include "base/text_helpers.h"

#include <algorithm>
#include <map>

namespace lumbra::cli {

namespace {

// One character given by name or as itself; absent for anything longer.
std::optional<char32_t> characterOption(std::string_view value,
                                        const std::map<std::string_view, char32_t>& names) {
    if (auto it = names.find(value); it != names.end())
        return it->second;
    auto first = import::firstCharacter(value);
    if (!first || import::utf8Character(*first).size() != value.size())
        return std::nullopt;
    return first;
}

} // namespace

// Spelt in full: a line that begins with "import" reads to the formatter as a module import.
lumbra::base::CsvOptions CsvFlags::applyTo(base::CsvOptions initial) const {
    if (separator)
        initial.separator = *separator;
    if (delimiter) {
        initial.delimiter = *delimiter;
        initial.standard_csv = standardCsv;
    }
    if (firstLine) {
        initial.first_line = *firstLine;
        initial.first_line_number = firstLineNumber;
    }
    if (ignoreOrientedQuotes)
        initial.ignore_oriented_quotes = true;
    return initial;
}

bool isCsvOption(std::string_view name) noexcept {
    return name == csvFlagOption ||
           std::find(csvValuedOptions.begin(), csvValuedOptions.end(), name) != csvValuedOptions.end();
}

std::optional<std::string> setCsvOption(CsvFlags& flags, std::string_view name, std::string_view value) {
    const std::string given(value);
    if (name == "--separator") {
        flags.separator =
            characterOption(value, {{"comma", U','}, {"semicolon", U';'}, {"tab", U'\t'}, {"blank", U' '}});
        if (!flags.separator)
            return "--separator takes one character or comma, semicolon, tab, blank, not \"" + given + "\"";
    } else if (name == "--delimiter") {
        flags.standardCsv = value == "standard";
        flags.delimiter = characterOption(value, {{"double", U'"'}, {"single", U'\''}, {"standard", U'"'}});
        if (!flags.delimiter)
            return "--delimiter takes one character or double, single, standard, not \"" + given + "\"";
    } else if (name == "--first-line") {
        const std::map<std::string_view, base::FirstLineStyle> styles{
            {"auto", base::FirstLineStyle::auto_},
            {"first", base::FirstLineStyle::first},
            {"afterempty", base::FirstLineStyle::afterempty},
            {"aftercolumn", base::FirstLineStyle::aftercolumn}};
        if (auto it = styles.find(value); it != styles.end()) {
            flags.firstLine = it->second;
            flags.firstLineNumber = 0;
        } else if (auto number = base::parseInteger(value); number && *number >= 1 && *number <= 1000000000) {
            flags.firstLine = base::FirstLineStyle::custom;
            flags.firstLineNumber = static_cast<int>(*number);
        } else {
            return "--first-line takes auto, first, afterempty, aftercolumn or a line number from 1, not \"" +
                   given + "\"";
        }
    }
    return std::nullopt;
}

} // namespace lumbra::cli
