#pragma once

#include "tables/ale_entry.h"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::tables {

// Sorts rows by a list of columns with a top-down merge sort whose tie rules fix the result.
// `ascending` false puts the smallest value first; true the greatest.
class ALESorter {
public:
    ALESorter(const std::vector<EntryPtr>& data, std::vector<std::string> cols, bool ascending);

    // 0 the same, 1 the row at place i goes first, 2 the row at place j goes first.
    [[nodiscard]] int compareAt(std::size_t i, std::size_t j) const;
    void sort();
    [[nodiscard]] std::vector<EntryPtr> sortedRows() const;

    [[nodiscard]] const std::vector<long>& idxs() const noexcept { return m_idxs; }
    [[nodiscard]] const std::string_view& keyAt(std::size_t column, std::size_t place) const {
        return m_keys[column][static_cast<std::size_t>(m_idxs[place])];
    }

private:
    const std::vector<EntryPtr>& m_data;
    std::vector<std::string> m_cols;
    bool m_ascending;
    std::vector<long> m_idxs;
    // Per column, per row: the value's sort key, computed once.
    std::vector<std::vector<std::string_view>> m_keys;
    std::deque<std::string> m_normalised;

    [[nodiscard]] int compareRows(std::size_t a, std::size_t b) const;
};

} // namespace lumbra::tables
