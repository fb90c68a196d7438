#pragma once

#include "base/csv_layout.h"
#include "base/notification.h"
#include "import/read_result.h"
#include "tables/ale_table.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::base {
class UserInteraction;
}

namespace lumbra::import {

using tables::ALETable;

// How a table is written: the columns to put out (empty: all) and the heading choices.
struct WriteOptions {
    std::vector<std::string> columns;
    bool withMetadata = false;
    bool omitFilmFormat = false;
};

// One kind of file the program knows, found by its suffix. A missing reader or writer means the
// format cannot be read or written (yet).
struct FileFormat {
    std::string_view name;
    // Lower case, with its dot.
    std::string_view suffix;
    // Always gives a table; the failure tells why the file was refused.
    ReadResult (*read)(const std::string& path, base::Notifications* notifications);
    // False (with the writer's message printed and put in `reason`) when the file could not be written.
    bool (*write)(const ALETable& table, const std::string& path, const WriteOptions& options,
                  std::string* reason);
    // Delimited text only: the read with the layout given, or else asked through the interaction (the
    // suffix's usual layout when both are null). Refused when the file could not be read or the
    // question was cancelled.
    ReadResult (*readDelimited)(const std::string& path, const base::CsvOptions* options,
                                base::UserInteraction* interaction,
                                base::Notifications* notifications) = nullptr;
};

// Every format, in the order the user is shown them.
[[nodiscard]] std::span<const FileFormat> fileFormats();
// The format whose suffix ends the path, in any case; null when none does.
[[nodiscard]] const FileFormat* formatForPath(std::string_view path);
// The path's suffix as written, with its dot; "" when the file name has none.
[[nodiscard]] std::string_view pathSuffix(std::string_view path);

} // namespace lumbra::import
