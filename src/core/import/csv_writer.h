#pragma once

#include "tables/ale_table.h"

#include <string>
#include <vector>

namespace lumbra::import {

// The table as delimited text, values quoted as standard CSV; with `withMetadata` the heading values
// above the column names. An empty `columns` list means the table's `cols`.
[[nodiscard]] std::string csvText(const tables::ALETable& table, const std::string& separator,
                                  bool withMetadata, const std::vector<std::string>& columns,
                                  bool omitFilmFormat);

// Writes that text to the path; fails as saveALE does.
bool saveCSV(const tables::ALETable& table, const std::string& path, const std::string& separator,
             bool withMetadata, const std::vector<std::string>& columns, bool overwrite, bool omitFilmFormat,
             std::string* reason = nullptr);

} // namespace lumbra::import
