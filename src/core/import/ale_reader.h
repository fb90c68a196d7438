#pragma once

#include "base/notification.h"
#include "import/read_result.h"

#include <string>

namespace lumbra::import {

// Reads an ALE file into a table named after the path (its last four characters dropped). Refused,
// with the reader's message printed, when nothing is at the path, it is a folder, it cannot be read as
// text, or it lacks its "Heading", "Column" or "Data" line; the table then holds what the read got.
[[nodiscard]] ReadResult readALE(const std::string& path, base::Notifications* notifications = nullptr);

// The same for a text as the reader has it after decoding; `tablename` is taken as given and names
// the text in a failure.
[[nodiscard]] ReadResult parseALEText(std::string text, std::string tablename);

} // namespace lumbra::import
