#pragma once

#include "tables/row_data.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumbra::tables {

class ALETable;
class ProjectLink;

// One clip: a map from column name to text. Rows are shared by their bin's table and the
// smart tables that list them, hence held by shared pointer; a row finds its own handle when it
// tells the project it changed.
class ALEEntry : public std::enable_shared_from_this<ALEEntry> {
public:
    explicit ALEEntry(RowData data = {}, ProjectLink* sharedstuff = nullptr, ALETable* table = nullptr)
        : m_data(std::move(data)), sharedstuff(sharedstuff), table(table) {}

    [[nodiscard]] const RowData& data() const noexcept { return m_data; }
    // The one way to change a row: dropped when the row's bin is locked (returns false),
    // otherwise stored, and every smart table of the project tests the row again.
    // A row built elsewhere has its text copied into this row's store.
    bool setData(RowData data);
    // The same for one value, written to the row's store; the other values are not touched.
    bool setValue(std::string_view column, std::string_view value);
    // The same for a change made in place by `change(RowData&)` (a column removed or renamed).
    template <typename Change> bool edit(Change&& change) {
        if (!editable())
            return false;
        change(m_data);
        changed();
        return true;
    }

    [[nodiscard]] std::shared_ptr<ALEEntry> copy(bool keepSharedStuff) const;
    [[nodiscard]] std::optional<std::string> value(std::string_view column) const;
    // One key per given column; a missing value gives "".
    [[nodiscard]] RowData projection(const std::vector<std::string>& columns) const;
    [[nodiscard]] bool isAssociated(const ALETable* smart) const;
    void removeAssociation(const ALETable* smart);
    // True when every value is "" (also for an empty map).
    [[nodiscard]] bool isEmpty() const;

private:
    [[nodiscard]] bool editable() const;
    void changed();

    RowData m_data;

public:
    std::vector<const ALETable*> associatedSmartBins;
    ProjectLink* sharedstuff = nullptr; // does not own
    ALETable* table = nullptr;          // does not own
};

using EntryPtr = std::shared_ptr<ALEEntry>;

// Whether a row matches criteria: every criteria key that the row holds has the same value;
// keys the row lacks are passed over.
[[nodiscard]] bool matches(const ALEEntry& row, const RowData& criteria);

} // namespace lumbra::tables
