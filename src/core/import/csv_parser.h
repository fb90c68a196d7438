#pragma once

#include "base/notification.h"
#include "import/csv_options.h"
#include "import/read_result.h"
#include "tables/ale_table.h"
#include "tables/db_table.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::base {
class UserInteraction;
}

namespace lumbra::import {

// One parse of a delimited text into a CSVTable. Every double quote of the text is dropped before the
// fields are cut, so with the default delimiter a quoted separator still splits; a separator between
// delimiters (or curly quotes) is kept, and the delimiters around a field go. With standard_csv the
// fields are cut as standard CSV instead (see standard_csv.h), lines counted as its records.
class CSVParser {
public:
    CSVParser(std::string text, CsvOptions options);

    // From start, the index of the first line feed that follows a line feed outside straight and curly
    // quotes; the end of the text when there is none.
    [[nodiscard]] std::size_t endOfSection(std::size_t start) const;
    // The number of the first line from `from` on that is exactly "Column"; absent when there is none.
    [[nodiscard]] std::optional<std::size_t> findColumnLine(std::size_t from) const;
    // From `from` in datastring, the separator or line feed that ends the field, or the end; the
    // delimiter and curly-quote flags go on from one field to the next.
    [[nodiscard]] std::size_t endOfField(std::size_t from);
    // The number (from 0) of the line of column names, by the options' first line style.
    [[nodiscard]] std::size_t firstLineIndex() const;

    // Cuts the text into the table named after the file; consumes the text, so it runs once. Rows
    // with more fields than columns add columns, and when notifications are given the user is told, as
    // of any column the file did not name ("NoName", "newcol_001"...).
    [[nodiscard]] std::unique_ptr<tables::CSVTable> parse(std::string_view filename,
                                                          base::Notifications* notifications);
    // The number of fields of the column line and of each record behind it, at most `records` of them,
    // blank lines left out; consumes the text as parse does.
    [[nodiscard]] std::vector<std::size_t> fieldCounts(std::size_t records);

    std::string text;
    CsvOptions options;
    bool ignoreOrientedQuotes = false;
    std::string datastring;
    bool inDelimiter = false;
    static constexpr char32_t openQuotes = U'\u201C';
    static constexpr char32_t closedQuotes = U'\u201D';
    bool inQuotes = false;

private:
    // Where line `index` of the text starts and ends (line feeds between double quotes do not end a
    // line); absent when the text has fewer lines.
    [[nodiscard]] std::optional<std::pair<std::size_t, std::size_t>> lineBounds(std::size_t index) const;
    // Calls visit(line number, start, end) for each standard CSV record until it answers false.
    template <typename Visit> void forEachStandardRecord(Visit visit) const;
    // The line behind the first empty line, and behind the line "Column"; absent when there is none.
    [[nodiscard]] std::optional<std::size_t> lineAfterEmpty() const;
    [[nodiscard]] std::optional<std::size_t> lineAfterColumn() const;
    // A warning naming the file and the columns this parse had to name, if any.
    void warnOfInventedColumns(std::string_view filename, base::Notifications* notifications) const;
    // Moves the text from `from` on into datastring.
    void takeDataBehind(std::size_t from);
    void readColumns(tables::CSVTable& table, std::string_view line);
    // The walk over datastring; the number of columns it had to add.
    std::size_t readRows(tables::CSVTable& table);

    std::string m_separator;
    std::string m_delimiter;
    // Bytes that may start the separator, the delimiter, a line feed or a curly quote.
    std::array<bool, 256> m_special{};
    // Names given to columns the file left unnamed, in order.
    std::vector<std::string> m_invented;
};

// The table of a text as it is after decoding (the file's name gives the table's name less its last four
// characters). Never fails; a text without the line of column names gives an empty table.
[[nodiscard]] std::unique_ptr<tables::CSVTable> parseCSVText(std::string text, const CsvOptions& options,
                                                             std::string_view filename,
                                                             base::Notifications* notifications);

// The file's text with its own encoding and "\r\n" as "\n", the text the options question is asked on;
// absent, with "ERROR WHILE READING FROM <path>" printed, when the file cannot be read.
[[nodiscard]] std::optional<std::string> readCSVText(const std::string& path);

// The options the sheet first proposes for the text: those given, turned to standard CSV when the first lines
// read so with one field count for every record and the plain reading gives differing counts.
[[nodiscard]] CsvOptions proposedOptions(std::string_view text, CsvOptions options);

// The options a question about the file starts from: the defaults, and a tab for a ".tsv".
[[nodiscard]] CsvOptions initialOptions(std::string_view path);

// Reads the file with the options given, or else with the answer of the interaction's options question
// (the initial options when there is no one to ask). Null when the file cannot be read or the user
// cancelled the question ("User aborted the import operation" printed), and then `refusal`, when given,
// says which; the caller tells the user. Columns the file did not name ("NoName", "newcol_001"...) are
// told in a warning that names the file.
[[nodiscard]] std::unique_ptr<tables::CSVTable>
parseCSVFile(const std::string& path, const CsvOptions* options, base::UserInteraction* interaction,
             base::Notifications* notifications, std::string* refusal = nullptr);

// The file as a clip table, rows moved over from the CSV table; refused, with parseCSVFile's refusal,
// when parseCSVFile gave none.
[[nodiscard]] ReadResult readCSVAsALETable(const std::string& path, const CsvOptions* options,
                                           base::UserInteraction* interaction,
                                           base::Notifications* notifications);
// The same with the initial options of the file's suffix and nobody to ask.
[[nodiscard]] ReadResult readCSVAsALETable(const std::string& path, base::Notifications* notifications);

} // namespace lumbra::import
