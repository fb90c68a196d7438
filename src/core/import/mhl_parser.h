#pragma once

#include "base/notification.h"
#include "import/read_result.h"
#include "import/xml_tags.h"
#include "tables/db_table.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lumbra::import {

// Reads a media hash list with a tag scanner of its own: one row per `hash` block, one column per
// child element name, the children taken one per line. No schema is known; attributes are not read.
class MHLParser {
public:
    explicit MHLParser(std::string xmltext) : xmltext(std::move(xmltext)) {}

    // "MHL table" with its rows in the file's order. Never fails: a block without its closing tag
    // ends the walk with the rows found so far.
    [[nodiscard]] tables::MHLTable parse() const;
    // The next tag of that name from `from`: the positions of its "<" and of its ">".
    [[nodiscard]] std::optional<TagBounds> nextTag(std::string_view name, std::size_t from) const;

    const std::string xmltext;
};

// Reads the file and parses it; the table is named after the file less its last four characters.
// Absent, with "ERROR WHILE READING FROM <path>" printed, when the file cannot be read.
[[nodiscard]] std::optional<tables::MHLTable> parseMHLFile(const std::string& path,
                                                           base::Notifications* notifications = nullptr);

// Prints the columns, then each row, values tab separated in column order, one line each.
void printMHLTable(const tables::MHLTable& table);

// The file as a clip table for the import and the converter; refused when it cannot be read.
[[nodiscard]] ReadResult readMHLAsALETable(const std::string& path, base::Notifications* notifications);

} // namespace lumbra::import
