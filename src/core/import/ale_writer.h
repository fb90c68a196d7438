#pragma once

#include "tables/ale_table.h"

#include <string>
#include <vector>

namespace lumbra::import {

// The ALE text of the table; an empty `columns` list means the table's `cols`. With `escapeValues` (a
// bin's own file) a value or column name holding a line break, a tab or a double quote is kept through
// escapes that the reader undoes; other files keep the ALE rules and leave values as they are.
[[nodiscard]] std::string aleText(const tables::ALETable& table, const std::vector<std::string>& columns,
                                  bool omitFilmFormat, bool escapeValues = false);

// Writes that text to the path. False (with a message, also put in `reason` when given) when the file
// exists and overwrite is off, its folder cannot be made, or the write fails.
bool saveALE(const tables::ALETable& table, const std::string& path, const std::vector<std::string>& columns,
             bool overwrite, bool omitFilmFormat, std::string* reason = nullptr, bool escapeValues = false);

} // namespace lumbra::import
