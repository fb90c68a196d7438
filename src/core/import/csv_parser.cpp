#include "import/csv_parser.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "base/user_interaction.h"
#include "import/file_formats.h"
#include "import/standard_csv.h"
#include "tables/row_data.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace lumbra::import {

namespace {

const std::string openQuotesText = utf8Character(CSVParser::openQuotes);
const std::string closedQuotesText = utf8Character(CSVParser::closedQuotes);

bool startsAt(std::string_view text, std::size_t i, std::string_view what) {
    return text.compare(i, what.size(), what) == 0;
}

// True when the line, less its double quotes, is exactly the word.
bool isWordWithoutQuotes(std::string_view line, std::string_view word) {
    std::size_t w = 0;
    for (char c : line) {
        if (c == '"')
            continue;
        if (w == word.size() || c != word[w])
            return false;
        ++w;
    }
    return w == word.size();
}

// Names as they are made free in `cols`: a name in use gets "_2", "_3"... from the name as read. The
// smallest free number of a name only grows while names are added, so each name remembers where its
// search stopped and many equal names cost no more than distinct ones.
class ColumnNamer {
public:
    explicit ColumnNamer(std::vector<std::string>& cols) : m_cols(cols), m_taken(cols.begin(), cols.end()) {}

    const std::string& append(const std::string& base) {
        std::string name = base;
        if (m_taken.contains(name)) {
            int& n = m_next.try_emplace(base, 2).first->second;
            do
                name = base + "_" + std::to_string(n++);
            while (m_taken.contains(name));
        }
        m_taken.insert(name);
        return m_cols.emplace_back(std::move(name));
    }

    // The first free "newcol_%03d", as DBTable::addNumberedColumn picks it.
    const std::string& appendNumbered() {
        std::array<char, 32> name{};
        do
            std::snprintf(name.data(), name.size(), "newcol_%03d", m_nextNumbered++);
        while (m_taken.contains(name.data()));
        m_taken.insert(name.data());
        return m_cols.emplace_back(name.data());
    }

private:
    std::vector<std::string>& m_cols;
    std::unordered_set<std::string> m_taken;
    std::unordered_map<std::string, int> m_next;
    int m_nextNumbered = 1;
};

} // namespace

CSVParser::CSVParser(std::string text, CsvOptions options)
    : text(std::move(text)), options(options), ignoreOrientedQuotes(options.ignore_oriented_quotes),
      m_separator(utf8Character(options.separator)), m_delimiter(utf8Character(options.delimiter)) {
    for (const std::string* s : std::initializer_list<const std::string*>{&m_separator, &m_delimiter,
                                                                          &openQuotesText, &closedQuotesText})
        m_special[static_cast<unsigned char>(s->front())] = true;
    m_special['\n'] = true;
}

std::size_t CSVParser::endOfSection(std::size_t start) const {
    bool quoted = false;
    bool curly = false;
    for (std::size_t i = start; i < text.size(); ++i) {
        char c = text[i];
        if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n') {
            if (i > 0 && text[i - 1] == '\n' && !quoted && !curly)
                return i;
        } else if (static_cast<unsigned char>(c) == 0xE2) {
            if (startsAt(text, i, openQuotesText))
                curly = true;
            else if (startsAt(text, i, closedQuotesText))
                curly = false;
        }
    }
    return text.size();
}

std::optional<std::pair<std::size_t, std::size_t>> CSVParser::lineBounds(std::size_t index) const {
    if (options.standard_csv) {
        std::optional<std::pair<std::size_t, std::size_t>> bounds;
        forEachStandardRecord([&](std::size_t line, std::size_t start, std::size_t end) {
            if (line == index)
                bounds = std::pair{start, end};
            return line < index;
        });
        return bounds;
    }
    std::size_t line = 0;
    std::size_t start = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n' && !quoted) {
            if (line == index)
                return std::pair{start, i};
            ++line;
            start = i + 1;
        }
    }
    if (line == index)
        return std::pair{start, text.size()};
    return std::nullopt;
}

std::optional<std::size_t> CSVParser::findColumnLine(std::size_t from) const {
    std::size_t line = 0;
    std::size_t start = 0;
    bool quoted = false;
    std::string_view view = text;
    for (std::size_t i = 0; i <= view.size(); ++i) {
        const bool atEnd = i == view.size();
        if (!atEnd && view[i] == '"') {
            quoted = !quoted;
            continue;
        }
        if (!atEnd && (view[i] != '\n' || quoted))
            continue;
        if (line >= from && isWordWithoutQuotes(view.substr(start, i - start), "Column"))
            return line;
        ++line;
        start = i + 1;
    }
    return std::nullopt;
}

template <typename Visit> void CSVParser::forEachStandardRecord(Visit visit) const {
    for (std::size_t line = 0, start = 0;; ++line) {
        const std::size_t end = endOfStandardRecord(text, start, m_separator);
        if (!visit(line, start, end) || end == text.size())
            return;
        start = end + 1;
    }
}

std::optional<std::size_t> CSVParser::lineAfterEmpty() const {
    if (options.standard_csv) {
        std::optional<std::size_t> found;
        forEachStandardRecord([&](std::size_t line, std::size_t start, std::size_t end) {
            if (line == 0 || start != end || end == text.size())
                return true;
            if (end + 1 < text.size())
                found = line + 1;
            return false;
        });
        return found;
    }
    std::size_t e = endOfSection(0);
    if (e + 1 >= text.size())
        return std::nullopt;
    // Lines up to and with e, less one: the line feeds outside double quotes up to e.
    std::size_t lineFeeds = 0;
    bool quoted = false;
    for (std::size_t i = 0; i <= e; ++i) {
        if (text[i] == '"')
            quoted = !quoted;
        else if (text[i] == '\n' && !quoted)
            ++lineFeeds;
    }
    return lineFeeds;
}

std::optional<std::size_t> CSVParser::lineAfterColumn() const {
    std::optional<std::size_t> line;
    if (options.standard_csv) {
        forEachStandardRecord([&](std::size_t index, std::size_t start, std::size_t end) {
            if (isWordWithoutQuotes(std::string_view(text).substr(start, end - start), "Column"))
                line = index;
            return !line;
        });
    } else {
        line = findColumnLine(0);
    }
    // The line behind "Column" is at most one past the last line, which then gives an empty table.
    return line ? std::optional(*line + 1) : std::nullopt;
}

std::size_t CSVParser::firstLineIndex() const {
    auto afterEmpty = [this] { return lineAfterEmpty(); };
    auto afterColumn = [this] { return lineAfterColumn(); };
    switch (options.first_line) {
    case FirstLineStyle::first:
        return 0;
    case FirstLineStyle::custom:
        return options.first_line_number > 1 ? static_cast<std::size_t>(options.first_line_number - 1) : 0;
    case FirstLineStyle::afterempty:
        return afterEmpty().value_or(0);
    case FirstLineStyle::aftercolumn:
        return afterColumn().value_or(0);
    case FirstLineStyle::auto_:
        break;
    }
    if (auto line = afterEmpty())
        return *line;
    return afterColumn().value_or(0);
}

std::size_t CSVParser::endOfField(std::size_t from) {
    const std::string_view data = datastring;
    const std::size_t n = data.size();
    std::size_t i = from;
    while (i < n) {
        if (!m_special[static_cast<unsigned char>(data[i])]) {
            ++i;
            continue;
        }
        if (!inDelimiter && !inQuotes && (data[i] == '\n' || startsAt(data, i, m_separator)))
            return i;
        if (startsAt(data, i, m_delimiter)) {
            inDelimiter = !inDelimiter;
            i += m_delimiter.size();
            continue;
        }
        if (inQuotes) {
            if (startsAt(data, i, closedQuotesText))
                inQuotes = false;
        } else if (!ignoreOrientedQuotes && startsAt(data, i, openQuotesText)) {
            inQuotes = true;
        }
        ++i;
    }
    return n;
}

void CSVParser::readColumns(tables::CSVTable& table, std::string_view line) {
    auto append = [&](ColumnNamer& namer, const std::string& name) {
        if (name.empty())
            m_invented.push_back(namer.append("NoName"));
        else
            namer.append(name);
    };
    if (options.standard_csv) {
        ColumnNamer namer(table.cols);
        std::string name;
        for (std::size_t i = 0;; i += m_separator.size()) {
            i = readStandardField(line, i, m_separator, name);
            append(namer, name);
            if (i == line.size())
                return;
        }
    }
    const std::string trimmedSet = " \t" + m_separator;
    std::string trimmed = base::trimRight(base::trimLeft(line, trimmedSet), trimmedSet);
    ColumnNamer namer(table.cols);
    for (const auto& token : base::tokenise(trimmed, m_separator))
        append(namer, token);
}

std::size_t CSVParser::readRows(tables::CSVTable& table) {
    std::vector<tables::ColumnKey> keys;
    keys.reserve(table.cols.size());
    for (const auto& column : table.cols)
        keys.push_back(tables::ColumnNames::key(column));
    ColumnNamer namer(table.cols);
    const std::size_t readColumns = table.cols.size();

    // One store for the whole table, so that a value costs no allocation of its own.
    auto store = std::make_shared<tables::TextStore>();
    std::vector<std::pair<tables::ColumnKey, std::string_view>> fields;
    fields.reserve(keys.size());
    bool hasValue = false;
    auto finishRow = [&] {
        // A row whose values are all empty, or that has none, is no row.
        if (hasValue) {
            tables::DBEntry& entry = table.data.emplace_back(tables::DBEntry{tables::RowData(store)});
            entry.data.reserve(fields.size());
            for (const auto& [key, value] : fields)
                entry.data.appendStored(key, value);
            entry.data.finishAppending();
        }
        fields.clear();
        hasValue = false;
    };

    const std::string_view data = datastring;
    const std::size_t n = data.size();
    std::size_t column = 0;
    std::size_t position = 0;
    std::string unquoted;
    while (true) {
        std::size_t end = 0;
        std::string_view field;
        if (options.standard_csv) {
            end = readStandardField(data, position, m_separator, unquoted);
            field = unquoted;
        } else {
            end = endOfField(position);
            field = data.substr(position, end - position);
        }
        // A field of two delimiters is there, with an empty value.
        if (!field.empty()) {
            while (column >= table.cols.size()) {
                m_invented.push_back(namer.appendNumbered());
                keys.push_back(tables::ColumnNames::key(table.cols.back()));
            }
            if (!options.standard_csv && field.size() >= 2 * m_delimiter.size() &&
                field.starts_with(m_delimiter) && field.ends_with(m_delimiter))
                field = field.substr(m_delimiter.size(), field.size() - 2 * m_delimiter.size());
            fields.emplace_back(keys[column], store->append(field));
            hasValue = hasValue || !field.empty();
        }
        if (end == n)
            break;
        if (data[end] == '\n') {
            finishRow();
            column = 0;
            position = end + 1;
        } else {
            ++column;
            position = end + m_separator.size();
        }
    }
    finishRow();
    return table.cols.size() - readColumns;
}

std::unique_ptr<tables::CSVTable> CSVParser::parse(std::string_view filename,
                                                   base::Notifications* notifications) {
    auto table = std::make_unique<tables::CSVTable>("CSV table");
    table->name = base::tableNameFromPath(filename);
    auto bounds = lineBounds(firstLineIndex());
    if (!bounds)
        return table;
    auto [start, end] = *bounds;
    std::string line = text.substr(start, end - start);
    if (!options.standard_csv)
        std::erase(line, '"');
    readColumns(*table, line);
    if (end == text.size()) {
        warnOfInventedColumns(filename, notifications);
        return table;
    }
    takeDataBehind(end + 1);

    std::size_t added = readRows(*table);
    if (added > 0 && notifications)
        notifications->emplace_back("Bizarre columns count",
                                    std::to_string(added) +
                                        " columns were added to fit the data. Is the CSV well formatted?",
                                    base::NotificationType::WARNING);
    warnOfInventedColumns(filename, notifications);
    return table;
}

void CSVParser::warnOfInventedColumns(std::string_view filename, base::Notifications* notifications) const {
    if (m_invented.empty() || !notifications)
        return;
    std::string names;
    for (const auto& name : m_invented)
        names += (names.empty() ? "" : ", ") + name;
    notifications->emplace_back("Columns without a name",
                                std::string(filename) + ": the file does not name the columns " + names +
                                    ", so Lumbra named them",
                                base::NotificationType::WARNING);
}

void CSVParser::takeDataBehind(std::size_t from) {
    // The lines behind the column line joined by line feeds: the rest of the text, less its double quotes
    // unless they are standard CSV's.
    datastring = std::move(text);
    std::size_t w = 0;
    for (std::size_t r = from; r < datastring.size(); ++r) {
        if (options.standard_csv || datastring[r] != '"')
            datastring[w++] = datastring[r];
    }
    datastring.resize(w);
    text.clear();
}

std::vector<std::size_t> CSVParser::fieldCounts(std::size_t records) {
    std::vector<std::size_t> counts;
    auto bounds = lineBounds(firstLineIndex());
    if (!bounds)
        return counts;
    // The column line is counted as a record.
    takeDataBehind(bounds->first);
    const std::string_view data = datastring;
    std::size_t fields = 1;
    for (std::size_t position = 0; counts.size() < records && position <= data.size();) {
        const std::size_t end =
            options.standard_csv ? endOfStandardField(data, position, m_separator) : endOfField(position);
        if (end < data.size() && data[end] != '\n') {
            ++fields;
            position = end + m_separator.size();
            continue;
        }
        // Blank lines are no records.
        if (fields > 1 || end > position)
            counts.push_back(fields);
        fields = 1;
        position = end + 1;
    }
    return counts;
}

std::unique_ptr<tables::CSVTable> parseCSVText(std::string text, const CsvOptions& options,
                                               std::string_view filename,
                                               base::Notifications* notifications) {
    return CSVParser(std::move(text), options).parse(filename, notifications);
}

std::optional<std::string> readCSVText(const std::string& path) {
    auto text = base::readTextFile(path);
    if (!text) {
        base::printLine("ERROR WHILE READING FROM " + path);
        return std::nullopt;
    }
    base::collapseCrLf(*text);
    return text;
}

CsvOptions proposedOptions(std::string_view text, CsvOptions options) {
    // The first lines are enough to tell, and keep the question quick on very long files.
    constexpr std::size_t sampleBytes = 1 << 16;
    constexpr std::size_t sampleRecords = 20;
    const std::string sample(text.substr(0, sampleBytes));
    auto constantCount = [&](const CsvOptions& tried) {
        auto counts = CSVParser(sample, tried).fieldCounts(sampleRecords);
        // A sample cut short may end inside its last record.
        if (text.size() > sampleBytes && counts.size() < sampleRecords && !counts.empty())
            counts.pop_back();
        return counts.size() >= 2 &&
               std::all_of(counts.begin(), counts.end(), [&](std::size_t n) { return n == counts.front(); });
    };
    CsvOptions standard = options;
    standard.standard_csv = true;
    if (!options.standard_csv && !constantCount(options) && constantCount(standard))
        return standard;
    return options;
}

CsvOptions initialOptions(std::string_view path) {
    CsvOptions options;
    if (base::lowercased(import::pathSuffix(path)) == ".tsv")
        options.separator = U'\t';
    return options;
}

std::unique_ptr<tables::CSVTable> parseCSVFile(const std::string& path, const CsvOptions* options,
                                               base::UserInteraction* interaction,
                                               base::Notifications* notifications, std::string* refusal) {
    auto refuse = [&](const char* why) {
        if (refusal)
            *refusal = why;
        return nullptr;
    };
    auto text = readCSVText(path);
    if (!text)
        return refuse("the file cannot be read");
    CsvOptions chosen = options ? *options : initialOptions(path);
    if (!options && interaction)
        chosen = interaction->askCsvOptions(*text, chosen);
    if (chosen.user_aborted) {
        base::printLine("User aborted the import operation");
        return refuse("User aborted the import operation");
    }
    return parseCSVText(std::move(*text), chosen, path, notifications);
}

ReadResult readCSVAsALETable(const std::string& path, const CsvOptions* options,
                             base::UserInteraction* interaction, base::Notifications* notifications) {
    std::string refusal;
    auto csv = parseCSVFile(path, options, interaction, notifications, &refusal);
    if (!csv)
        return ReadResult::refused(std::make_unique<tables::ALETable>(), {path, std::move(refusal), {}});
    auto table = std::make_unique<tables::ALETable>();
    table->tablename = std::move(csv->name);
    table->cols = std::move(csv->cols);
    table->data.reserve(csv->data.size());
    for (auto& entry : csv->data)
        table->appendEntry(std::make_shared<tables::ALEEntry>(std::move(entry.data)));
    return {std::move(table), std::nullopt};
}

ReadResult readCSVAsALETable(const std::string& path, base::Notifications* notifications) {
    const CsvOptions options = initialOptions(path);
    return readCSVAsALETable(path, &options, nullptr, notifications);
}

} // namespace lumbra::import
