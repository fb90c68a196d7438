#include "tables/ale_entry.h"

#include "tables/ale_table.h"
#include "tables/table_links.h"

#include <algorithm>

namespace lumbra::tables {

bool ALEEntry::setData(RowData data) {
    if (table && table->bin && table->bin->isLocked())
        return false;
    m_data = std::move(data);
    if (sharedstuff)
        sharedstuff->rowChanged(*this);
    return true;
}

std::shared_ptr<ALEEntry> ALEEntry::copy(bool keepSharedStuff) const {
    return std::make_shared<ALEEntry>(m_data, keepSharedStuff ? sharedstuff : nullptr, nullptr);
}

std::optional<std::string> ALEEntry::value(std::string_view column) const {
    if (const std::string* v = m_data.find(column))
        return *v;
    return std::nullopt;
}

RowData ALEEntry::projection(const std::vector<std::string>& columns) const {
    RowData out;
    for (const auto& c : columns)
        out.set(c, m_data.valueOr(c));
    return out;
}

bool ALEEntry::isAssociated(const ALETable* smart) const {
    return std::find(associatedSmartBins.begin(), associatedSmartBins.end(), smart) !=
           associatedSmartBins.end();
}

void ALEEntry::removeAssociation(const ALETable* smart) {
    auto it = std::find(associatedSmartBins.begin(), associatedSmartBins.end(), smart);
    if (it != associatedSmartBins.end())
        associatedSmartBins.erase(it);
}

bool ALEEntry::isEmpty() const {
    return std::all_of(m_data.begin(), m_data.end(), [](const RowData::Cell& c) { return c.value.empty(); });
}

bool matches(const ALEEntry& row, const RowData& criteria) {
    for (const auto& c : criteria) {
        const std::string* v = row.data().find(c.key);
        if (v && *v != c.value)
            return false;
    }
    return true;
}

} // namespace lumbra::tables
