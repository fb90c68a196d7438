#include "import/ccc_parser.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "import/as_clip_table.h"

#include <array>

namespace lumbra::import {

namespace {

// The text between <name> and </name> inside `inner`; "" when either is missing.
std::string_view elementText(std::string_view inner, std::string_view name) {
    std::optional<TagBounds> open = nextTag(inner, name, 0);
    if (!open)
        return {};
    std::string closing = "/" + std::string(name);
    std::optional<TagBounds> close = nextTag(inner, closing, open->end);
    if (!close)
        return {};
    return inner.substr(open->end, close->start - open->end);
}

} // namespace

std::string tagAttribute(std::string_view tagText, std::string_view name) {
    std::size_t at = tagText.find(name);
    if (at == std::string_view::npos)
        return {};
    std::size_t begin = at + name.size();
    while (begin < tagText.size() && (tagText[begin] == '=' || tagText[begin] == '"'))
        ++begin;
    std::size_t end = tagText.find_first_of(" >\"\t\n", begin);
    return std::string(tagText.substr(begin, end == std::string_view::npos ? end : end - begin));
}

tables::CCCTable CCCParser::parseText(std::string_view text) {
    tables::CCCTable table("CCC table");
    table.cols = {"id", "ASC_SOP", "ASC_SAT"};
    const tables::ColumnKey idKey = tables::ColumnNames::key("id");
    const tables::ColumnKey sopKey = tables::ColumnNames::key("ASC_SOP");
    const tables::ColumnKey satKey = tables::ColumnNames::key("ASC_SAT");
    const tables::ColumnKey descriptionKey = tables::ColumnNames::key("Description");

    std::size_t pos = 0;
    while (std::optional<TagBounds> open = nextTag(text, "ColorCorrection", pos)) {
        std::optional<TagBounds> close = nextTag(text, "/ColorCorrection", open->end);
        if (!close)
            break;
        std::string_view inner = text.substr(open->end, close->start - open->end);
        tables::DBEntry entry;
        entry.data.set(idKey, tagAttribute(text.substr(open->start, open->end - open->start), "id"));
        std::string_view description = elementText(inner, "Description");
        if (!description.empty()) {
            if (!table.hasColumn("Description"))
                table.cols.emplace_back("Description");
            entry.data.set(descriptionKey, std::string(description));
        }
        std::string sop;
        sop.append("(").append(elementText(inner, "Slope"));
        sop.append(")(").append(elementText(inner, "Offset"));
        sop.append(")(").append(elementText(inner, "Power")).append(")");
        entry.data.set(satKey, std::string(elementText(inner, "Saturation")));
        entry.data.set(sopKey, std::move(sop));
        table.data.push_back(std::move(entry));
        pos = close->end;
    }
    return table;
}

std::optional<tables::CCCTable> CCCParser::parseCCCFile(const std::string& path,
                                                        base::Notifications* notifications) {
    std::optional<std::string> text = base::readTextFile(path, notifications);
    if (!text) {
        base::printLine("ERROR WHILE READING FROM " + path);
        return std::nullopt;
    }
    base::collapseCrLf(*text);
    tables::CCCTable table = parseText(*text);
    table.name = base::tableNameFromPath(path);
    return table;
}

ReadResult readCCCAsALETable(const std::string& path, base::Notifications* notifications) {
    return asClipTable(path, CCCParser::parseCCCFile(path, notifications));
}

} // namespace lumbra::import
