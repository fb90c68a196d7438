#include "app/bin_box_edits.h"

#include "project/bin.h"
#include "project/shared_stuff.h"

#include <algorithm>

namespace lumbra::app {

namespace {

project::Bin* binOf(const tables::ALETable* table) {
    return table ? dynamic_cast<project::Bin*>(table->bin) : nullptr;
}

// The row's own bin first, then the bins of the smart tables that list it; open ones only, each once.
std::vector<project::Bin*> openBinsShowing(const tables::ALEEntry& entry, project::Bin& fallback) {
    std::vector<project::Bin*> out;
    auto keep = [&out](project::Bin* bin) {
        if (bin && bin->selected() && std::find(out.begin(), out.end(), bin) == out.end())
            out.push_back(bin);
    };
    project::Bin* own = binOf(entry.table);
    keep(own ? own : &fallback);
    for (const tables::ALETable* smart : entry.associatedSmartBins)
        keep(binOf(smart));
    return out;
}

} // namespace

void touchBin(project::SharedStuff& sharedstuff, project::Bin& bin) {
    bin.modified = base::nowSeconds();
    bin.hasChanged = true;
    // No re-sort: an edited bin stays where the user sees it until a header orders the list again.
    if (sharedstuff.bins)
        sharedstuff.bins->touch(bin);
    for (project::SharedStuffDelegate* delegate : sharedstuff.delegates)
        delegate->reloadBinsLists();
}

bool isClearingText(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c == '_'; });
}

CellEditResult editCell(project::SharedStuff& sharedstuff, project::Bin& bin, long row,
                        const std::string& column, const std::string& text) {
    CellEditResult result;
    tables::ALETable* table = bin.table();
    if (!table || row < 0 || row >= static_cast<long>(table->data.size())) {
        result.outcome = CellEditOutcome::refused;
        return result;
    }
    const tables::EntryPtr entry = table->data[static_cast<std::size_t>(row)];
    const bool columnLocked =
        std::find(bin.lockedColumns.begin(), bin.lockedColumns.end(), column) != bin.lockedColumns.end();
    if (columnLocked || column == tagColumnName) {
        result.outcome = CellEditOutcome::refused;
        result.restoreText = entry->data().valueOr(column);
        return result;
    }
    entry->sharedstuff = &sharedstuff;
    const std::optional<std::string_view> current = entry->data().find(column);
    const std::string_view oldValue = current.value_or(std::string_view());
    // A smart bin's row belongs to another bin: that bin's path is the one marked changed.
    project::Bin* owner = binOf(entry->table);
    project::Bin& changedBin = owner ? *owner : bin;

    const bool clearing = isClearingText(text);
    const bool changed = clearing ? !oldValue.empty() : text != oldValue;
    if (changed)
        touchBin(sharedstuff, changedBin);
    if (!clearing && entry->table && !entry->table->hasColumn(column))
        entry->table->cols.push_back(column);
    const bool same = clearing ? !current : current == text;
    const auto store = [&] {
        return clearing ? entry->edit([&](tables::RowData& d) { d.erase(column); })
                        : entry->setValue(column, text);
    };
    if (same) {
        result.outcome = CellEditOutcome::unchanged;
    } else if (!store()) {
        result.outcome = CellEditOutcome::dropped;
    } else {
        result.outcome = clearing ? CellEditOutcome::cleared : CellEditOutcome::stored;
        result.oldValue = oldValue;
        result.newValue = clearing ? std::string() : text;
    }
    result.binsToRefresh = openBinsShowing(*entry, bin);
    // An edit that changed nothing leaves the project as clean as it was.
    if (changed)
        sharedstuff.projectChanged();
    return result;
}

base::NotificationData orderByColumn(project::SharedStuff& sharedstuff, project::Bin& bin, OrderMark& order,
                                     const std::string& column) {
    if (order.lastOrdered == column) {
        order.lastAscending = !order.lastAscending;
    } else {
        order.lastOrdered = column;
        order.lastAscending = false;
    }
    if (tables::ALETable* table = bin.table())
        table->sortEntries(column, order.lastAscending);
    touchBin(sharedstuff, bin);
    sharedstuff.projectChanged();
    return {"Ordered", "Ordered by " + column, base::NotificationType::OK};
}

} // namespace lumbra::app
