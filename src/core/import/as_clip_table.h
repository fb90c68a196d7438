#pragma once

#include "tables/ale_table.h"

#include <memory>
#include <optional>
#include <utility>

namespace lumbra::import {

// What the file formats' read entry hands on from a plain reader: the table's name, columns and rows
// moved into a clip table, or a table whose `state` is false when the reader gave none (which the plain
// readers do only for a file they cannot read).
template <typename Table>
[[nodiscard]] std::unique_ptr<tables::ALETable> asClipTable(std::optional<Table> table) {
    if (!table) {
        auto refused = std::make_unique<tables::ALETable>();
        refused->state = false;
        refused->refusal = "the file cannot be read";
        return refused;
    }
    return std::move(*table).toALETable();
}

} // namespace lumbra::import
