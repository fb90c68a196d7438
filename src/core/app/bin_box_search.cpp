#include "app/bin_box_search.h"

#include "base/text_helpers.h"

#include <algorithm>
#include <unordered_set>

namespace lumbra::app {

namespace {

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// `needle` is lower-cased already; ASCII values are compared in place, others lower-cased first.
bool containsIgnoringCase(std::string_view haystack, std::string_view needle) {
    if (base::isAscii(haystack)) {
        const auto hit = std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end(),
                                     [](char a, char b) { return asciiLower(a) == b; });
        return hit != haystack.end();
    }
    return base::lowercased(haystack).find(needle) != std::string::npos;
}

bool isPinned(const ColumnSplit& split, const std::string& column) {
    return std::find(split.pinned.begin(), split.pinned.end(), column) != split.pinned.end();
}

// The row's value of each column, by interned key; nullopt for a name no row ever held.
std::vector<std::optional<tables::ColumnKey>> keysOf(const std::vector<std::string>& columns) {
    std::vector<std::optional<tables::ColumnKey>> keys;
    keys.reserve(columns.size());
    for (const std::string& column : columns)
        keys.push_back(tables::ColumnNames::find(column));
    return keys;
}

bool cellHolds(const tables::ALETable& table, std::size_t row, const std::optional<tables::ColumnKey>& key,
               const std::string& needle) {
    if (!key)
        return false;
    auto value = table.data[row]->data().find(*key);
    return value && containsIgnoringCase(*value, needle);
}

} // namespace

std::optional<SearchHit> searchDataFirst(const tables::ALETable& table, const ColumnSplit& split,
                                         const std::vector<std::string>& layoutColumns,
                                         const std::string& text) {
    const std::string needle = base::lowercased(text);
    if (needle.empty())
        return std::nullopt;
    const auto keys = keysOf(layoutColumns);
    for (std::size_t row = 0; row < table.data.size(); ++row) {
        for (std::size_t c = 0; c < layoutColumns.size(); ++c) {
            if (cellHolds(table, row, keys[c], needle))
                return SearchHit{static_cast<long>(row), layoutColumns[c], isPinned(split, layoutColumns[c])};
        }
    }
    return std::nullopt;
}

std::optional<SearchHit> searchHeadersFirst(const ColumnSplit& split, const std::string& text) {
    const std::string needle = base::lowercased(text);
    if (needle.empty())
        return std::nullopt;
    for (const auto* group : {&split.pinned, &split.main}) {
        for (const std::string& column : *group) {
            if (base::lowercased(column).find(needle) != std::string::npos)
                return SearchHit{-1, column, group == &split.pinned};
        }
    }
    return std::nullopt;
}

std::vector<std::string> searchColumns(const ColumnSplit& split,
                                       const std::vector<std::string>& layoutColumns) {
    const std::unordered_set<std::string> pinned(split.pinned.begin(), split.pinned.end());
    std::vector<std::string> out;
    out.reserve(layoutColumns.size());
    for (const std::string& column : layoutColumns) {
        if (pinned.count(column))
            out.push_back(column);
    }
    for (const std::string& column : layoutColumns) {
        if (!pinned.count(column))
            out.push_back(column);
    }
    return out;
}

std::optional<SearchHit> searchDataNext(BinSearchState& state, const tables::ALETable& table,
                                        const ColumnSplit& split, const std::vector<std::string>& columns,
                                        const std::string& text) {
    if (text != state.last_search) {
        state.last_search = text;
        state.last_found_col.clear();
        state.last_found_row = -1;
    }
    const std::string needle = base::lowercased(text);
    const std::size_t rows = table.data.size();
    const std::size_t width = columns.size();
    if (needle.empty() || rows == 0 || width == 0)
        return std::nullopt;

    std::size_t row = state.last_found_row < 0 ? 0 : static_cast<std::size_t>(state.last_found_row);
    if (row >= rows)
        row = 0;
    const auto last = std::find(columns.begin(), columns.end(), state.last_found_col);
    std::size_t col = last == columns.end() ? 0 : static_cast<std::size_t>(last - columns.begin()) + 1;
    if (col >= width) {
        col = 0;
        row = (row + 1) % rows;
    }
    const auto keys = keysOf(columns);
    const std::size_t cells = rows * width;
    for (std::size_t step = 0; step < cells; ++step) {
        if (cellHolds(table, row, keys[col], needle)) {
            state.last_found_row = static_cast<long>(row);
            state.last_found_col = columns[col];
            return SearchHit{static_cast<long>(row), columns[col], isPinned(split, columns[col])};
        }
        if (++col == width) {
            col = 0;
            row = (row + 1) % rows;
        }
    }
    return std::nullopt;
}

std::optional<SearchHit> searchHeadersNext(BinSearchState& state, const ColumnSplit& split,
                                           const std::vector<std::string>& columns, const std::string& text) {
    if (text != state.last_hsearch) {
        state.last_hsearch = text;
        state.last_hfound_col.clear();
    }
    const std::string needle = base::lowercased(text);
    if (needle.empty() || columns.empty())
        return std::nullopt;
    const auto last = std::find(columns.begin(), columns.end(), state.last_hfound_col);
    std::size_t col = last == columns.end() ? 0 : static_cast<std::size_t>(last - columns.begin()) + 1;
    for (std::size_t step = 0; step < columns.size(); ++step, ++col) {
        col %= columns.size();
        if (base::lowercased(columns[col]).find(needle) != std::string::npos) {
            state.last_hfound_col = columns[col];
            return SearchHit{-1, columns[col], isPinned(split, columns[col])};
        }
    }
    return std::nullopt;
}

} // namespace lumbra::app
