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

// Reads a colour correction collection with a tag scanner of its own: one row per
// ColorCorrection with its "id", its "ASC_SOP" as one "(slope)(offset)(power)" text and its
// "ASC_SAT"; numbers stay the text they were. The document is never checked.
class CCCParser {
public:
    // The table named after the file less its last four characters; absent, with
    // "ERROR WHILE READING FROM <path>" printed, when the file cannot be read.
    [[nodiscard]] static std::optional<tables::CCCTable>
    parseCCCFile(const std::string& path, base::Notifications* notifications = nullptr);
    // The rows of a text as read; the table is named "CCC table".
    [[nodiscard]] static tables::CCCTable parseText(std::string_view text);
};

// The value of an attribute inside the text of one tag: behind the first occurrence of `name`
// and any "=" and double quotes, up to a blank, ">", double quote, tab or line feed. "" when the
// name does not occur.
[[nodiscard]] std::string tagAttribute(std::string_view tagText, std::string_view name);

// The file as a clip table for the import and the converter; refused when it cannot be read.
[[nodiscard]] ReadResult readCCCAsALETable(const std::string& path, base::Notifications* notifications);

} // namespace lumbra::import
