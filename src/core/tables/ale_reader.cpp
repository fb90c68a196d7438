#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "tables/ale_table.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::tables {

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

} // namespace

ALETable::ALETable(const std::string& path, base::Notifications* notifications) {
    readFile(path, notifications);
}

ALETable ALETable::fromText(std::string text, std::string tablename) {
    ALETable table;
    table.state = false;
    table.tablename = std::move(tablename);
    table.parseText(std::move(text));
    return table;
}

void ALETable::readFile(const std::string& path, base::Notifications* notifications) {
    namespace fs = std::filesystem;
    state = false;
    std::error_code ec;
    auto status = fs::status(path, ec);
    if (ec || !fs::exists(status)) {
        base::printLine("file " + path + " does not exist");
        refusal = "the file does not exist";
        return;
    }
    if (fs::is_directory(status)) {
        base::printLine(path + " is a directory");
        refusal = "it is a folder, not a file";
        return;
    }
    tablename = base::tableNameFromPath(path);
    auto text = base::readTextFile(path, notifications);
    if (!text) {
        base::printLine("error while opening " + path);
        refusal = "the file cannot be read";
        return;
    }
    parseText(std::move(*text));
}

void ALETable::parseText(std::string text) {
    state = false;
    valueEscapes = false;
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
        refusal = "no \"Heading\" line at the start: not an ALE file";
        return;
    }
    std::size_t i = 1;
    while (i < lineCount && !readsAs(line(i), "column")) {
        parseHeadingLine(line(i));
        ++i;
    }

    separator = '\t';
    if (!field_delim) {
        base::printLine("WARNING: field delimiter not specified, assuming TABS");
        field_delim = "TABS";
    } else if (base::uppercased(*field_delim) != "TABS") {
        base::printLine("WARNING: field delimiter '" + *field_delim + "' unknown, using TABS instead");
        field_delim = "TABS";
    }

    if (i >= lineCount) {
        base::printLine("ERROR: file is missing the Column line");
        refusal = "no \"Column\" line";
        return;
    }
    if (i + 1 >= lineCount) {
        base::printLine("ERROR: file is missing the line of column names");
        refusal = "no line of column names after the \"Column\" line";
        return;
    }
    std::string_view columnsLine = line(i + 1);
    std::string sep(1, separator);
    std::string trimmed = base::trimRight(base::trimLeft(columnsLine, " \t" + sep), " \t" + sep);
    for (auto& token : base::tokenise(trimmed, sep)) {
        std::string base = token.empty() ? "NoName" : valueEscapes ? unescaped(token) : token;
        std::string name = base;
        for (int n = 2; hasColumn(name); ++n)
            name = base + "_" + std::to_string(n);
        cols.push_back(std::move(name));
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
            refusal = "no \"Data\" line";
            return;
        }
        dataLine = k + 1;
    }
    if (dataLine < lineCount) {
        text.erase(0, starts[dataLine]);
        datastring = m_textStore->adopt(std::move(text));
    } else {
        datastring = {};
    }
    readClipLines();

    // The cells of these two columns were put in each row as it was built (see readClipLines).
    if (!hasColumn("Tape") && tape)
        cols.insert(cols.begin(), "Tape");
    if (!hasColumn("Lumbra_Color_Tag"))
        cols.insert(cols.begin(), "Lumbra_Color_Tag");
    state = true;
    refusal.clear();
}

void ALETable::readClipLines() {
    std::vector<ColumnKey> keys;
    keys.reserve(cols.size());
    for (const auto& c : cols)
        keys.push_back(ColumnNames::key(c));
    // The heading's tape and the colour tag that every kept row gets once the clips are read. Rows
    // have no bin and no project yet, so writing them at build time is the same as writing each row
    // again afterwards, without copying every row twice.
    std::vector<std::pair<ColumnKey, std::string_view>> added;
    if (!hasColumn("Tape") && tape)
        added.emplace_back(ColumnNames::key("Tape"), m_textStore->append(*tape));
    if (!hasColumn("Lumbra_Color_Tag"))
        added.emplace_back(ColumnNames::key("Lumbra_Color_Tag"), m_textStore->append("None"));

    std::vector<std::pair<ColumnKey, std::string_view>> fields;
    fields.reserve(keys.size());
    auto finishRow = [&] {
        if (fields.empty())
            return;
        // Values are views into the adopted file text; only an unescaped value needs text of its own.
        RowData row(m_textStore);
        row.reserve(fields.size() + added.size());
        for (const auto& [key, text] : fields)
            row.appendStored(key, valueEscapes ? m_textStore->append(unescaped(text)) : text);
        for (const auto& [key, text] : added)
            row.appendStored(key, text);
        row.finishAppending();
        appendEntry(std::make_shared<ALEEntry>(std::move(row)));
        fields.clear();
    };
    std::string_view text = datastring;
    std::size_t column = 0;
    std::size_t start = 0;
    const std::size_t n = text.size();
    while (n > 0) {
        std::size_t end = endOfField(start);
        if (end > start) {
            while (column >= cols.size()) {
                addNumberedColumn();
                keys.push_back(ColumnNames::key(cols.back()));
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

std::size_t ALETable::endOfField(std::size_t from) const {
    const std::size_t n = datastring.size();
    for (std::size_t i = from; i < n; ++i) {
        char c = datastring[i];
        if (c == separator || c == '\n')
            return i;
    }
    return n;
}

void ALETable::parseHeadingLine(std::string_view line) {
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
        field_delim = tokens[1];
    else if (key == "VIDEO_FORMAT")
        video_format = joinedValue();
    else if (key == "FPS")
        fps = tokens[1];
    else if (key == "AUDIO_FORMAT")
        audio_format = joinedValue();
    else if (key == "FILM_FORMAT")
        film_format = joinedValue();
    else if (key == "TAPE")
        tape = joinedValue();
    else if (key == valueEscapesKey)
        valueEscapes = true;
}

} // namespace lumbra::tables
