#include "tables/ale_entry.h"

#include "tables/ale_table.h"
#include "tables/table_links.h"

#include <algorithm>

namespace lumbra::tables {

bool ALEEntry::editable() const {
    return !(table && table->bin && table->bin->isLocked());
}

void ALEEntry::changed() {
    if (sharedstuff)
        sharedstuff->rowChanged(*this);
}

bool ALEEntry::setData(RowData data) {
    return edit([&](RowData& d) { d = std::move(data).movedTo(d.store()); });
}

bool ALEEntry::setValue(std::string_view column, std::string_view value) {
    return edit([&](RowData& d) { d.set(column, value); });
}

std::shared_ptr<ALEEntry> ALEEntry::copy(bool keepSharedStuff) const {
    return std::make_shared<ALEEntry>(m_data, keepSharedStuff ? sharedstuff : nullptr, nullptr);
}

std::optional<std::string> ALEEntry::value(std::string_view column) const {
    if (auto v = m_data.find(column))
        return std::string(*v);
    return std::nullopt;
}

RowData ALEEntry::projection(const std::vector<std::string>& columns) const {
    RowData out(m_data.store());
    for (const auto& c : columns)
        out.setStored(ColumnNames::key(c), m_data.valueOr(c));
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
    return std::all_of(m_data.begin(), m_data.end(), [](const RowData::Cell& c) { return c.size == 0; });
}

bool matches(const ALEEntry& row, const RowData& criteria) {
    for (const auto& c : criteria) {
        auto v = row.data().find(c.key);
        if (v && *v != c.value())
            return false;
    }
    return true;
}

} // namespace lumbra::tables
