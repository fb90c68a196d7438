#include "tables/ale_sorter.h"

#include "base/text_order.h"

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

int ALESorter::compareAt(std::size_t i, std::size_t j) const {
    auto a = static_cast<std::size_t>(m_idxs[i]);
    auto b = static_cast<std::size_t>(m_idxs[j]);
    for (const auto& keys : m_keys) {
        int c = keys[a].compare(keys[b]);
        if (c == 0)
            continue;
        if (!m_ascending)
            return c < 0 ? 1 : 2;
        return c > 0 ? 1 : 2;
    }
    return 0;
}

void ALESorter::sort(long lo, long hi) {
    if (hi <= lo)
        return;
    if (hi == lo + 1) {
        if (compareAt(static_cast<std::size_t>(lo), static_cast<std::size_t>(hi)) == 2)
            std::swap(m_idxs[lo], m_idxs[hi]);
        return;
    }
    long mid = (lo + hi) / 2;
    sort(lo, mid);
    sort(mid + 1, hi);
    m_merge.clear();
    long i = lo;
    long j = mid + 1;
    while (i <= mid && j <= hi) {
        if (compareAt(static_cast<std::size_t>(i), static_cast<std::size_t>(j)) == 1)
            m_merge.push_back(m_idxs[i++]);
        else
            m_merge.push_back(m_idxs[j++]);
    }
    while (i <= mid)
        m_merge.push_back(m_idxs[i++]);
    while (j <= hi)
        m_merge.push_back(m_idxs[j++]);
    std::copy(m_merge.begin(), m_merge.end(), m_idxs.begin() + lo);
}

void ALESorter::sort() {
    if (m_idxs.size() >= 2)
        sort(0, static_cast<long>(m_idxs.size()) - 1);
}

std::vector<EntryPtr> ALESorter::sortedRows() const {
    std::vector<EntryPtr> out;
    out.reserve(m_idxs.size());
    for (long i : m_idxs)
        out.push_back(m_data[static_cast<std::size_t>(i)]);
    return out;
}

} // namespace lumbra::tables
