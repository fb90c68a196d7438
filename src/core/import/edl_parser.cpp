#include "import/edl_parser.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "import/as_clip_table.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_set>

namespace lumbra::import {

namespace {

using tables::ColumnKey;
using tables::ColumnNames;

constexpr std::string_view blanksAndLineFeeds = " \n";

std::string trimmed(std::string_view text) {
    return base::trimLeft(base::trimRight(text, blanksAndLineFeeds), blanksAndLineFeeds);
}

// Two blanks become one until no two stand together, in one pass.
std::string collapsed(std::string_view line) {
    std::string out;
    out.reserve(line.size());
    for (char c : line) {
        if (c == ' ' && !out.empty() && out.back() == ' ')
            continue;
        out += c;
    }
    return out;
}

// The heads are plain ASCII, and ASCII case folding is what upper- or lower-casing the line
// does to the letters that can match them.
bool startsWithFolded(std::string_view line, std::string_view head) {
    if (line.size() < head.size())
        return false;
    for (std::size_t i = 0; i < head.size(); ++i) {
        char c = line[i];
        char h = head[i];
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        if (h >= 'a' && h <= 'z')
            h = static_cast<char>(h - 'a' + 'A');
        if (c != h)
            return false;
    }
    return true;
}

// The text behind a head of ASCII letters and one more character, whatever its length in bytes.
std::string_view behindHeadAndOne(std::string_view text, std::size_t head) {
    std::size_t at = head + 1;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80)
        ++at;
    return at < text.size() ? text.substr(at) : std::string_view();
}

// Columns in the order first met, with a set beside the list so that many keys stay cheap.
class ColumnsInOrder {
public:
    explicit ColumnsInOrder(tables::EDLTable& table) : m_table(table) {
        m_known.insert(table.cols.begin(), table.cols.end());
    }
    void add(std::string_view column) {
        if (m_known.emplace(column).second)
            m_table.cols.emplace_back(column);
    }

private:
    tables::EDLTable& m_table;
    std::unordered_set<std::string> m_known;
};

const std::array<std::string_view, 4> timecodeColumns{"Start", "End", "Record_In", "Record_Out"};
const std::array<std::string_view, 4> locColumns{"LOC", "LOC_TIMESTAMP", "LOC_COLOR", "LOC_NAME"};

void readComment(std::string_view line, tables::DBEntry& entry, ColumnsInOrder& columns) {
    auto store = [&](std::string_view column, std::string value) {
        columns.add(column);
        entry.data.set(column, std::move(value));
    };
    std::size_t colon = line.find(':');
    if (startsWithFolded(line, "*FROM CLIP NAME")) {
        if (colon != std::string_view::npos)
            store("Clip_Name", trimmed(line.substr(colon + 1)));
    } else if (startsWithFolded(line, "*ASC_SAT")) {
        store("ASC_SAT", trimmed(behindHeadAndOne(line, 8)));
    } else if (startsWithFolded(line, "*ASC_SOP")) {
        store("ASC_SOP", trimmed(behindHeadAndOne(line, 8)));
    } else if (startsWithFolded(line, "*LOC:")) {
        std::string loc = trimmed(line.substr(colon + 1));
        // One marker comment is the source of all four columns, so they join the table together.
        for (auto column : locColumns)
            columns.add(column);
        std::vector<std::string> words = base::tokenise(loc, " ");
        for (std::size_t w = 0; w < words.size() && w + 1 < locColumns.size(); ++w)
            entry.data.set(locColumns[w + 1], trimmed(words[w]));
        entry.data.set(locColumns[0], std::move(loc));
    } else if (colon != std::string_view::npos) {
        std::string_view key = line.substr(0, colon);
        while (!key.empty() && key.front() == '*')
            key.remove_prefix(1);
        while (!key.empty() && key.back() == '*')
            key.remove_suffix(1);
        store(key, trimmed(line.substr(colon + 1)));
    }
}

bool isTimecode(const std::string& token) {
    return base::tokenise(token, ":").size() >= 4;
}

// The lines as the tokeniser cuts them (double quotes dropped, a line feed between them kept), as views
// into the text compacted in place: a large list is never held twice.
std::vector<std::string_view> unquotedLines(std::string& text) {
    std::vector<std::string_view> lines;
    lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    std::size_t w = 0;
    std::size_t start = 0;
    bool quoted = false;
    for (char c : text) {
        if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n' && !quoted) {
            lines.emplace_back(text.data() + start, w - start);
            start = w;
        } else {
            text[w++] = c;
        }
    }
    lines.emplace_back(text.data() + start, w - start);
    text.resize(w);
    return lines;
}

} // namespace

EDLParser::EDLParser(std::string text) : text(std::move(text)) {
    base::collapseCrLf(this->text);
}

tables::EDLTable EDLParser::parse() {
    tables::EDLTable table("EDL table");
    table.cols = {"Id", "Name", "Start", "End", "Record_In", "Record_Out"};
    ColumnsInOrder columns(table);
    const std::vector<std::string_view> lines = unquotedLines(text);
    const ColumnKey idKey = ColumnNames::key("Id");
    const ColumnKey nameKey = ColumnNames::key("Name");
    std::array<ColumnKey, 4> timecodeKeys{};
    for (std::size_t k = 0; k < timecodeKeys.size(); ++k)
        timecodeKeys[k] = ColumnNames::key(timecodeColumns[k]);

    std::size_t i = 0;
    while (i < lines.size() && lines[i].empty())
        ++i;
    if (i == lines.size())
        return table;
    if (startsWithFolded(lines[i], "title:")) {
        std::vector<std::string> title = base::tokenise(lines[i], ":");
        if (title.size() >= 2)
            table.name = trimmed(title[1]);
        ++i;
        while (i < lines.size() && (startsWithFolded(lines[i], "fcm") || lines[i].starts_with('*')))
            ++i;
    }

    auto isComment = [&](std::size_t n) { return n < lines.size() && trimmed(lines[n]).starts_with('*'); };
    while (i < lines.size()) {
        std::string line = collapsed(lines[i++]);
        if (line.empty())
            continue;
        std::vector<std::string> tokens = base::tokenise(line, " ");
        // An event needs an Id and a Name: a lone token is no event, and its comments go with it.
        if (tokens.size() < 2) {
            while (isComment(i))
                ++i;
            continue;
        }
        tables::DBEntry entry;
        // Events of one list mostly carry the same comments, so the columns met so far fit a row exactly.
        entry.data.reserve(table.cols.size());
        entry.data.set(idKey, std::move(tokens[0]));
        entry.data.set(nameKey, std::move(tokens[1]));
        std::size_t found = 0;
        for (std::size_t t = 2; t < tokens.size() && found < timecodeKeys.size(); ++t) {
            if (isTimecode(tokens[t]))
                entry.data.set(timecodeKeys[found++], std::move(tokens[t]));
        }
        while (isComment(i))
            readComment(collapsed(trimmed(lines[i++])), entry, columns);
        table.data.push_back(std::move(entry));
    }
    return table;
}

std::optional<tables::EDLTable> parseEDLFile(const std::string& path, base::Notifications* notifications) {
    std::optional<std::string> text = base::readTextFile(path, notifications);
    if (!text) {
        base::printLine("ERROR WHILE READING FROM " + path);
        return std::nullopt;
    }
    return EDLParser(std::move(*text)).parse();
}

ReadResult readEDLAsALETable(const std::string& path, base::Notifications* notifications) {
    return asClipTable(path, parseEDLFile(path, notifications));
}

} // namespace lumbra::import
