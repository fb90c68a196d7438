#pragma once

#include "app/bin_box_columns.h"
#include "tables/ale_table.h"

#include <optional>
#include <string>
#include <vector>

namespace lumbra::app {

// Where a search landed: a row (-1 for a header search) and a column, with the table holding it.
struct SearchHit {
    long row = -1;
    std::string column;
    bool inPinned = false;
    bool operator==(const SearchHit&) const = default;
};

// What the find-next commands remember between presses.
struct BinSearchState {
    std::string last_search;
    long last_found_row = -1;
    std::string last_found_col;
    std::string last_hsearch;
    std::string last_hfound_col;
};

// The first row, from row 0, with a layout column (in layout order) whose value contains the text,
// ignoring case. Absent for an empty text or no hit.
[[nodiscard]] std::optional<SearchHit> searchDataFirst(const tables::ALETable& table,
                                                       const ColumnSplit& split,
                                                       const std::vector<std::string>& layoutColumns,
                                                       const std::string& text);
// The first column, pinned ones first, whose name contains the text, ignoring case.
[[nodiscard]] std::optional<SearchHit> searchHeadersFirst(const ColumnSplit& split, const std::string& text);

// The columns find-next walks through: the pinned ones of the layout, then the others, each group in
// layout order.
[[nodiscard]] std::vector<std::string> searchColumns(const ColumnSplit& split,
                                                     const std::vector<std::string>& layoutColumns);

// The next cell after the last hit whose value contains the text, ignoring case, wrapping from the
// last row to the first; a changed text starts again at the first cell. Absent (state kept) after one
// full pass without a hit, for an empty text, an empty table or no columns.
[[nodiscard]] std::optional<SearchHit> searchDataNext(BinSearchState& state, const tables::ALETable& table,
                                                      const ColumnSplit& split,
                                                      const std::vector<std::string>& columns,
                                                      const std::string& text);
// The same over column names only, from the column after the last header hit.
[[nodiscard]] std::optional<SearchHit> searchHeadersNext(BinSearchState& state, const ColumnSplit& split,
                                                         const std::vector<std::string>& columns,
                                                         const std::string& text);

} // namespace lumbra::app
