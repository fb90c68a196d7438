#pragma once

#include "tables/ale_entry.h"

#include <string>
#include <vector>

namespace lumbra::tables {

// What ALETable::compare finds between a table and another.
struct ALECompareResult {
    std::vector<std::string> conflicts;  // heading fields that differ
    std::vector<EntryPtr> found_entries; // rows of the other table that match a row here
    std::vector<EntryPtr> new_entries;   // rows of the other table that match none
    std::vector<std::string> columns_missing;
    std::vector<std::string> columns_new;
};

} // namespace lumbra::tables
