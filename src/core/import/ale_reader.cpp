#include "import/ale_reader.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "import/ale_keys.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::import {

using tables::ALEEntry;
using tables::ColumnKey;
using tables::ColumnNames;
using tables::RowData;

namespace {

// A line "reads as" a word when, less blanks and line feeds around it and in lower case, it is the word.
bool readsAs(std::string_view line, std::string_view word) {
    std::size_t b = line.find_first_not_of(" \n");
    if (b == std::string_view::npos)
        return word.empty();
    std::size_t e = line.find_last_not_of(" \n");
    std::string_view core = line.substr(b, e - b + 1);
    if (core.size() == word.size()) {
        bool same = true;
        for (std::size_t i = 0; i < core.size() && same; ++i) {
            char c = core[i];
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
            same = c == word[i];
        }
        if (same)
            return true;
    }
    return !base::isAscii(core) && base::lowercased(core) == word;
}

// Removes every double quote and returns where each line starts: a line feed between quotes
// does not end a line.
std::vector<std::size_t> stripQuotesAndSplit(std::string& text) {
    std::vector<std::size_t> starts{0};
    // Up to the first quote nothing moves, so the line feeds are found by a fast search.
    std::size_t firstQuote = std::min(text.find('"'), text.size());
    for (std::size_t lf = text.find('\n'); lf < firstQuote; lf = text.find('\n', lf + 1))
        starts.push_back(lf + 1);
    std::size_t w = firstQuote;
    bool quoted = false;
    for (std::size_t r = firstQuote; r < text.size(); ++r) {
        char c = text[r];
        if (c == '"') {
            quoted = !quoted;
            continue;
        }
        text[w++] = c;
        if (c == '\n' && !quoted)
            starts.push_back(w);
    }
    text.resize(w);
    return starts;
}

// Undoes the escapes of a bin's own file; an unknown escape keeps its backslash.
std::string unescaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out.push_back(text[i]);
            continue;
        }
        switch (text[i + 1]) {
        case '\\':
            out.push_back('\\');
            break;
        case 'n':
            out.push_back('\n');
            break;
        case 'r':
            out.push_back('\r');
            break;
        case 't':
            out.push_back('\t');
            break;
        case 'q':
            out.push_back('"');
            break;
        default:
            out.push_back('\\');
            continue;
        }
        ++i;
    }
    return out;
}

// One read of an ALE text into a table; the scan state lives here for as long as the read lasts.
class AleReader {
public:
    // `source` names the text in a failure: its path, or the name it was given.
    AleReader(tables::ALETable& table, std::string source) : m_table(table), m_source(std::move(source)) {}

    // Fills the table; the failure when the text is refused, the table then holding what it got.
    std::optional<ReadFailure> parseText(std::string text);

private:
    void parseHeadingLine(std::string_view line);
    // From `from`, the index of the first separator or line feed of the clip text, or its end.
    [[nodiscard]] std::size_t endOfField(std::size_t from) const;
    void readClipLines();
    [[nodiscard]] ReadFailure refuse(std::string reason,
                                     std::optional<std::size_t> line = std::nullopt) const {
        return {m_source, std::move(reason), line};
    }

    tables::ALETable& m_table;
    std::string m_source;
    // The clip lines behind the line "Data": a view into the table's store, which adopts the whole text
    // uncut (cutting would move all of it) so that the rows' values can point into it.
    std::string_view m_datastring;
    char m_separator = '\t';
};

} // namespace

ReadResult readALE(const std::string& path, base::Notifications* notifications) {
    namespace fs = std::filesystem;
    ReadResult result;
    auto refused = [&](std::string reason) {
        return ReadResult::refused(std::move(result.table), {path, std::move(reason), std::nullopt});
    };
    std::error_code ec;
    auto status = fs::status(path, ec);
    if (ec || !fs::exists(status)) {
        base::printLine("file " + path + " does not exist");
        return refused("the file does not exist");
    }
    if (fs::is_directory(status)) {
        base::printLine(path + " is a directory");
        return refused("it is a folder, not a file");
    }
    result.table->tablename = base::tableNameFromPath(path);
    auto text = base::readTextFile(path, notifications);
    if (!text) {
        base::printLine("error while opening " + path);
        return refused("the file cannot be read");
    }
    result.failure = AleReader(*result.table, path).parseText(std::move(*text));
    return result;
}

ReadResult parseALEText(std::string text, std::string tablename) {
    ReadResult result;
    result.table->tablename = std::move(tablename);
    result.failure = AleReader(*result.table, result.table->tablename).parseText(std::move(text));
    return result;
}

std::optional<ReadFailure> AleReader::parseText(std::string text) {
    m_table.state = false;
    m_table.valueEscapes = false;
    std::size_t w = std::min(text.find('\r'), text.size());
    for (std::size_t r = w; r < text.size(); ++r) {
        if (text[r] == '\r') {
            text[w++] = '\n';
            if (r + 1 < text.size() && text[r + 1] == '\n')
                ++r;
        } else {
            text[w++] = text[r];
        }
    }
    text.resize(w);

    auto starts = stripQuotesAndSplit(text);
    std::size_t lineCount = starts.size();
    auto line = [&](std::size_t i) -> std::string_view {
        std::size_t b = starts[i];
        std::size_t e = i + 1 < lineCount ? starts[i + 1] - 1 : text.size();
        return std::string_view(text).substr(b, e - b);
    };

    if (!readsAs(line(0), "heading")) {
        base::printLine("ERROR: file is missing heading");
        return refuse("no \"Heading\" line: not an ALE file", 1);
    }
    std::size_t i = 1;
    while (i < lineCount && !readsAs(line(i), "column")) {
        parseHeadingLine(line(i));
        ++i;
    }

    m_separator = '\t';
    if (!m_table.field_delim) {
        base::printLine("WARNING: field delimiter not specified, assuming TABS");
        m_table.field_delim = "TABS";
    } else if (base::uppercased(*m_table.field_delim) != "TABS") {
        base::printLine("WARNING: field delimiter '" + *m_table.field_delim +
                        "' unknown, using TABS instead");
        m_table.field_delim = "TABS";
    }

    if (i >= lineCount) {
        base::printLine("ERROR: file is missing the Column line");
        return refuse("no \"Column\" line");
    }
    if (i + 1 >= lineCount) {
        base::printLine("ERROR: file is missing the line of column names");
        return refuse("no line of column names after the \"Column\" line", i + 1);
    }
    std::string_view columnsLine = line(i + 1);
    std::string sep(1, m_separator);
    std::string trimmed = base::trimRight(base::trimLeft(columnsLine, " \t" + sep), " \t" + sep);
    for (auto& token : base::tokenise(trimmed, sep)) {
        std::string base = token.empty() ? "NoName" : m_table.valueEscapes ? unescaped(token) : token;
        std::string name = base;
        for (int n = 2; m_table.hasColumn(name); ++n)
            name = base + "_" + std::to_string(n);
        m_table.cols.push_back(std::move(name));
    }

    std::size_t dataLine = 0;
    if (readsAs(columnsLine, "data")) {
        dataLine = i + 2;
    } else {
        std::size_t k = i + 2;
        while (k < lineCount && !readsAs(line(k), "data"))
            ++k;
        if (k >= lineCount) {
            base::printLine("ERROR: file is missing the Data line");
            return refuse("no \"Data\" line");
        }
        dataLine = k + 1;
    }
    if (dataLine < lineCount)
        m_datastring = m_table.textStore()->adopt(std::move(text)).substr(starts[dataLine]);
    readClipLines();

    // The cells of these two columns were put in each row as it was built (see readClipLines).
    if (!m_table.hasColumn("Tape") && m_table.tape)
        m_table.cols.insert(m_table.cols.begin(), "Tape");
    if (!m_table.hasColumn("Lumbra_Color_Tag"))
        m_table.cols.insert(m_table.cols.begin(), "Lumbra_Color_Tag");
    m_table.state = true;
    return std::nullopt;
}

void AleReader::readClipLines() {
    std::vector<ColumnKey> keys;
    keys.reserve(m_table.cols.size());
    for (const auto& c : m_table.cols)
        keys.push_back(ColumnNames::key(c));
    // The heading's tape and the colour tag that every kept row gets once the clips are read. Rows
    // have no bin and no project yet, so writing them at build time is the same as writing each row
    // again afterwards, without copying every row twice.
    std::vector<std::pair<ColumnKey, std::string_view>> added;
    if (!m_table.hasColumn("Tape") && m_table.tape)
        added.emplace_back(ColumnNames::key("Tape"), m_table.textStore()->append(*m_table.tape));
    if (!m_table.hasColumn("Lumbra_Color_Tag"))
        added.emplace_back(ColumnNames::key("Lumbra_Color_Tag"), m_table.textStore()->append("None"));

    std::vector<std::pair<ColumnKey, std::string_view>> fields;
    fields.reserve(keys.size());
    auto finishRow = [&] {
        if (fields.empty())
            return;
        // Values are views into the adopted file text; only an unescaped value needs text of its own.
        RowData row(m_table.textStore());
        row.reserve(fields.size() + added.size());
        for (const auto& [key, text] : fields)
            row.appendStored(key, m_table.valueEscapes ? m_table.textStore()->append(unescaped(text)) : text);
        for (const auto& [key, text] : added)
            row.appendStored(key, text);
        row.finishAppending();
        m_table.appendEntry(std::make_shared<ALEEntry>(std::move(row)));
        fields.clear();
    };
    std::string_view text = m_datastring;
    std::size_t column = 0;
    std::size_t start = 0;
    const std::size_t n = text.size();
    while (n > 0) {
        std::size_t end = endOfField(start);
        if (end > start) {
            while (column >= m_table.cols.size()) {
                m_table.addNumberedColumn();
                keys.push_back(ColumnNames::key(m_table.cols.back()));
            }
            fields.emplace_back(keys[column], text.substr(start, end - start));
        }
        if (end == n)
            break;
        if (text[end] == '\n') {
            finishRow();
            column = 0;
        } else {
            ++column;
        }
        start = end + 1;
        if (start == n)
            break;
    }
    finishRow();
}

std::size_t AleReader::endOfField(std::size_t from) const {
    const std::size_t n = m_datastring.size();
    for (std::size_t i = from; i < n; ++i) {
        char c = m_datastring[i];
        if (c == m_separator || c == '\n')
            return i;
    }
    return n;
}

void AleReader::parseHeadingLine(std::string_view line) {
    std::string trimmed = base::trimRight(base::trimLeft(line, " \n"), " \n");
    auto tokens = base::tokenise(trimmed, " \t");
    if (tokens.size() < 2)
        return;
    std::string key = base::uppercased(tokens[0]);
    auto joinedValue = [&] {
        std::string v = tokens[1];
        for (std::size_t k = 2; k < tokens.size(); ++k)
            v += " " + tokens[k];
        return v;
    };
    if (key == "FIELD_DELIM")
        m_table.field_delim = tokens[1];
    else if (key == "VIDEO_FORMAT")
        m_table.video_format = joinedValue();
    else if (key == "FPS")
        m_table.fps = tokens[1];
    else if (key == "AUDIO_FORMAT")
        m_table.audio_format = joinedValue();
    else if (key == "FILM_FORMAT")
        m_table.film_format = joinedValue();
    else if (key == "TAPE")
        m_table.tape = joinedValue();
    else if (key == valueEscapesKey)
        m_table.valueEscapes = true;
}

} // namespace lumbra::import
