#include "tables/ale_sorter.h"

#include "base/text_order.h"
#include "tables/merge_sort.h"

#include <numeric>

namespace lumbra::tables {

ALESorter::ALESorter(const std::vector<EntryPtr>& data, std::vector<std::string> cols, bool ascending)
    : m_data(data), m_cols(std::move(cols)), m_ascending(ascending), m_idxs(data.size()) {
    std::iota(m_idxs.begin(), m_idxs.end(), 0L);
    m_keys.resize(m_cols.size());
    for (std::size_t c = 0; c < m_cols.size(); ++c) {
        auto key = ColumnNames::find(m_cols[c]);
        auto& keys = m_keys[c];
        keys.reserve(data.size());
        for (const auto& row : data) {
            auto v = key ? row->data().find(*key) : std::nullopt;
            if (!v) {
                keys.emplace_back();
            } else if (base::isSortKey(*v)) {
                keys.emplace_back(*v);
            } else {
                keys.emplace_back(m_normalised.emplace_back(base::sortKey(*v)));
            }
        }
    }
}

int ALESorter::compareRows(std::size_t a, std::size_t b) const {
    for (const auto& keys : m_keys) {
        if (int c = keys[a].compare(keys[b]); c != 0)
            return firstOf(c, m_ascending);
    }
    return 0;
}

int ALESorter::compareAt(std::size_t i, std::size_t j) const {
    return compareRows(static_cast<std::size_t>(m_idxs[i]), static_cast<std::size_t>(m_idxs[j]));
}

void ALESorter::sort() {
    mergeSort(m_idxs, [this](long a, long b) {
        return compareRows(static_cast<std::size_t>(a), static_cast<std::size_t>(b));
    });
}

std::vector<EntryPtr> ALESorter::sortedRows() const {
    std::vector<EntryPtr> out;
    out.reserve(m_idxs.size());
    for (long i : m_idxs)
        out.push_back(m_data[static_cast<std::size_t>(i)]);
    return out;
}

} // namespace lumbra::tables
