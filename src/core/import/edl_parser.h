#pragma once

#include "db/db_table.h"
#include "tables/notification.h"

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
    [[nodiscard]] db::EDLTable parse() const;

    std::string text;
};

// Reads the file and parses it; absent, with "ERROR WHILE READING FROM <path>" printed, when the
// file cannot be read.
[[nodiscard]] std::optional<db::EDLTable> parseEDLFile(const std::string& path,
                                                       tables::Notifications* notifications = nullptr);

// The file as a clip table for the import and the converter; `state` false when it cannot be read.
[[nodiscard]] std::unique_ptr<tables::ALETable> readEDLAsALETable(const std::string& path,
                                                                  tables::Notifications* notifications);

} // namespace lumbra::import
