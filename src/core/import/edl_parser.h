#pragma once

#include "base/notification.h"
#include "import/read_result.h"
#include "tables/db_table.h"

#include <memory>
#include <optional>
#include <string>

namespace lumbra::import {

// A line scanner over the event lines of an edit decision list and the comment lines under them.
// No timecode arithmetic: every timecode stays the text it was in the file.
class EDLParser {
public:
    // `text` is the whole file; carriage return and line feed pairs become line feeds here.
    explicit EDLParser(std::string text);

    // "EDL table" (or the title) over "Id", "Name", "Start", "End", "Record_In", "Record_Out" and
    // one column per comment key met. Never fails: lines that fit nothing are skipped or make thin rows.
    // The text is cut into lines in place, so it is spent afterwards.
    [[nodiscard]] tables::EDLTable parse();

    std::string text;
};

// Reads the file and parses it; absent, with "ERROR WHILE READING FROM <path>" printed, when the
// file cannot be read.
[[nodiscard]] std::optional<tables::EDLTable> parseEDLFile(const std::string& path,
                                                           base::Notifications* notifications = nullptr);

// The file as a clip table for the import and the converter; refused when it cannot be read.
[[nodiscard]] ReadResult readEDLAsALETable(const std::string& path, base::Notifications* notifications);

} // namespace lumbra::import
