#include "import/mhl_parser.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "import/as_clip_table.h"

#include <algorithm>
#include <unordered_set>

namespace lumbra::import {

std::optional<TagBounds> MHLParser::nextTag(std::string_view name, std::size_t from) const {
    std::optional<TagBounds> tag = import::nextTag(xmltext, name, from);
    if (tag)
        tag->end -= 1;
    return tag;
}

tables::MHLTable MHLParser::parse() const {
    tables::MHLTable table("MHL table");
    std::unordered_set<std::string> known;
    std::string_view text = xmltext;
    std::optional<TagBounds> open = nextTag("hash", 0);
    while (open) {
        std::optional<TagBounds> close = nextTag("/hash", open->end + 1);
        if (!close)
            break;
        std::string_view inner = text.substr(open->end + 1, close->start - open->end - 1);
        std::vector<std::string> pieces = base::tokenise(inner, "\n");
        tables::DBEntry entry;
        // The first and the last piece stand behind the opening tag and before the closing one.
        for (std::size_t p = 1; p + 1 < pieces.size(); ++p) {
            std::string_view piece = pieces[p];
            std::string_view tag = tagName(piece);
            if (tag.empty())
                continue;
            if (known.emplace(tag).second)
                table.cols.emplace_back(tag);
            std::optional<TagBounds> child = import::nextTag(piece, tag, 0);
            std::optional<TagBounds> childClose;
            if (child)
                childClose = import::nextTag(piece, "/" + std::string(tag), child->end);
            if (childClose)
                entry.data.set(tag, std::string(piece.substr(child->end, childClose->start - child->end)));
            else
                entry.data.erase(tag);
        }
        table.data.push_back(std::move(entry));
        open = nextTag("hash", close->end + 1);
    }
    return table;
}

std::optional<tables::MHLTable> parseMHLFile(const std::string& path, base::Notifications* notifications) {
    std::optional<std::string> text = base::readTextFile(path, notifications);
    if (!text) {
        base::printLine("ERROR WHILE READING FROM " + path);
        return std::nullopt;
    }
    base::collapseCrLf(*text);
    // XML reads a lone carriage return as a line end, and lists written with those put each child on its own
    // line.
    std::replace(text->begin(), text->end(), '\r', '\n');
    tables::MHLTable table = MHLParser(std::move(*text)).parse();
    table.name = base::tableNameFromPath(path);
    return table;
}

void printMHLTable(const tables::MHLTable& table) {
    auto joined = [](const auto& values) {
        std::string line;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i > 0)
                line += '\t';
            line += values[i];
        }
        return line;
    };
    base::printLine(joined(table.cols));
    std::vector<tables::ColumnKey> keys;
    keys.reserve(table.cols.size());
    for (const auto& column : table.cols)
        keys.push_back(tables::ColumnNames::key(column));
    std::vector<std::string_view> values(keys.size());
    for (const auto& entry : table.data) {
        for (std::size_t c = 0; c < keys.size(); ++c)
            values[c] = entry.data.valueOr(keys[c]);
        base::printLine(joined(values));
    }
}

ReadResult readMHLAsALETable(const std::string& path, base::Notifications* notifications) {
    return asClipTable(path, parseMHLFile(path, notifications));
}

} // namespace lumbra::import
