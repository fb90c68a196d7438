#pragma once

#include "import/read_result.h"

#include <optional>
#include <string>
#include <utility>

namespace lumbra::import {

// What the file formats' read entry hands on from a plain reader: the table's name, columns and rows
// moved into a clip table, or the path refused when the reader gave none (which the plain readers do
// only for a file they cannot read).
template <typename Table>
[[nodiscard]] ReadResult asClipTable(const std::string& path, std::optional<Table> table) {
    if (!table)
        return ReadResult::refused(std::make_unique<tables::ALETable>(),
                                   {path, "the file cannot be read", {}});
    return {std::move(*table).toALETable(), std::nullopt};
}

} // namespace lumbra::import
