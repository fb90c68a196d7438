#include "app/bin_box_columns.h"

#include "app/bin_box_edits.h"
#include "base/text_helpers.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <algorithm>
#include <unordered_set>

namespace lumbra::app {

namespace {

using tables::ColumnsDefaultWidth;

ColumnSizing sizingByRule(ColumnsDefaultWidth rule, bool pinned) {
    switch (rule) {
    case ColumnsDefaultWidth::fittoheader:
    case ColumnsDefaultWidth::asneeded:
        return ColumnSizing::sizeToFit;
    case ColumnsDefaultWidth::fixed:
        return pinned ? ColumnSizing::untouched : ColumnSizing::given;
    case ColumnsDefaultWidth::fittocontent:
        break;
    }
    return ColumnSizing::untouched;
}

} // namespace

RowTag rowTag(std::string_view word) {
    const std::string lower = base::lowercased(word);
    if (lower == "red")
        return RowTag::red;
    if (lower == "green")
        return RowTag::green;
    if (lower == "blue")
        return RowTag::blue;
    if (lower == "yellow")
        return RowTag::yellow;
    if (lower == "pink")
        return RowTag::pink;
    if (lower == "purple")
        return RowTag::purple;
    return RowTag::none;
}

ColumnSplit splitColumns(const std::vector<std::string>& pinnedColumns,
                         const std::vector<std::string>& layoutColumns) {
    ColumnSplit split;
    const std::unordered_set<std::string> inLayout(layoutColumns.begin(), layoutColumns.end());
    std::unordered_set<std::string> pinned;
    for (const std::string& name : pinnedColumns) {
        if (inLayout.count(name) && pinned.insert(name).second)
            split.pinned.push_back(name);
    }
    for (const std::string& name : layoutColumns) {
        if (!pinned.count(name))
            split.main.push_back(name);
    }
    return split;
}

std::vector<ColumnSpec> columnSpecs(const std::vector<std::string>& names, bool pinned,
                                    const project::Bin& bin, const tables::ProjectLayouts& layouts,
                                    const OrderMark& order) {
    const std::unordered_set<std::string> locked(bin.lockedColumns.begin(), bin.lockedColumns.end());
    static const std::map<std::string, double> noWidths;
    const std::map<std::string, double>& widths = bin.layout ? bin.layout->colwidths : noWidths;
    std::vector<ColumnSpec> specs;
    specs.reserve(names.size());
    for (const std::string& name : names) {
        ColumnSpec spec;
        spec.identifier = name;
        if (name == tagColumnName) {
            // The tag column is a fixed narrow swatch: no lock mark, order mark or width rule applies.
            spec.title = "Tag";
            spec.editable = false;
            spec.isTag = true;
            spec.sizing = ColumnSizing::given;
            spec.width = tagColumnWidth;
            specs.push_back(std::move(spec));
            continue;
        }
        const bool isLocked = locked.count(name) > 0;
        spec.title = pinned ? "📌 " + name : name;
        if (isLocked)
            spec.title += " 🔒";
        spec.editable = pinned || !isLocked;
        const auto stored = widths.find(name);
        if (stored != widths.end()) {
            spec.sizing = ColumnSizing::given;
            spec.width = stored->second;
            spec.storedWidth = true;
        } else {
            spec.sizing = sizingByRule(layouts.columnsdefaultwidth, pinned);
            if (spec.sizing == ColumnSizing::given)
                spec.width = layouts.columnsfixedwidth;
        }
        if (!order.lastOrdered.empty() && order.lastOrdered == name)
            spec.title += order.lastAscending ? " ↑" : " ↓";
        specs.push_back(std::move(spec));
    }
    return specs;
}

double ContentWidths::width(const tables::ALETable& table, const std::string& column) {
    auto counted = m_columns.find(column);
    if (counted == m_columns.end()) {
        counted = m_columns.try_emplace(column).first;
        if (const auto key = tables::ColumnNames::find(column)) {
            for (const tables::EntryPtr& row : table.data) {
                const auto value = row->data().find(*key);
                if (const std::size_t characters = value ? base::characterCount(*value) : 0)
                    ++counted->second[characters];
            }
        }
    }
    const auto& counts = counted->second;
    return counts.empty() ? 0.0 : static_cast<double>(counts.rbegin()->first) * fitPointsPerCharacter;
}

void ContentWidths::replace(const std::string& column, std::string_view before, std::string_view after) {
    const auto counted = m_columns.find(column);
    if (counted == m_columns.end())
        return;
    auto& counts = counted->second;
    if (const std::size_t characters = base::characterCount(before)) {
        const auto held = counts.find(characters);
        if (held != counts.end() && --held->second == 0)
            counts.erase(held);
    }
    if (const std::size_t characters = base::characterCount(after))
        ++counts[characters];
}

double fittedWidth(double current, double content, bool force) {
    return force ? content : std::max(current, content);
}

tables::ColumnsLayout* ownLayout(project::Bin& bin) {
    if (!bin.layout)
        return nullptr;
    if (!bin.layout->name.ends_with('+')) {
        auto copy = std::make_shared<tables::ColumnsLayout>(bin.layout->name + "+", bin.layout->columns);
        copy->colwidths = bin.layout->colwidths;
        bin.layout = std::move(copy);
    }
    return bin.layout.get();
}

bool storeColumnWidth(project::SharedStuff& sharedstuff, project::Bin& bin, const std::string& column,
                      double width) {
    if (!bin.layout)
        return false;
    const auto stored = bin.layout->colwidths.find(column);
    if (stored != bin.layout->colwidths.end() && stored->second == width)
        return false;
    ownLayout(bin)->colwidths[column] = width;
    touchBin(sharedstuff, bin);
    sharedstuff.projectChanged();
    return true;
}

std::optional<BlockMove> moveColumnBlock(const std::vector<std::string>& columns,
                                         std::vector<std::size_t> selected, std::size_t from,
                                         std::size_t to) {
    std::sort(selected.begin(), selected.end());
    selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
    const std::size_t count = columns.size();
    if (selected.empty() || selected.back() >= count || from >= count || to >= count)
        return std::nullopt;
    const long first = static_cast<long>(selected.front());
    const long afterLast = static_cast<long>(count - 1 - selected.back());
    const long shift = std::clamp(static_cast<long>(to) - static_cast<long>(from), -first, afterLast);
    if (shift == 0)
        return std::nullopt;

    std::vector<bool> isSelected(count, false);
    for (std::size_t index : selected)
        isSelected[index] = true;
    std::vector<std::string> rest;
    std::vector<std::string> block;
    rest.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        (isSelected[i] ? block : rest).push_back(columns[i]);
    // A scattered selection closes up into one block at the first column's new place.
    const std::size_t at = std::min(static_cast<std::size_t>(first + shift), rest.size());

    BlockMove move;
    move.order = rest;
    move.order.insert(move.order.begin() + static_cast<long>(at), block.begin(), block.end());
    for (std::size_t i = 0; i < block.size(); ++i)
        move.selected.push_back(at + i);
    return move;
}

std::vector<std::string> reorderedWithin(const std::vector<std::string>& list,
                                         const std::vector<std::string>& shownOrder) {
    const std::unordered_set<std::string> shown(shownOrder.begin(), shownOrder.end());
    std::vector<std::string> out = list;
    std::size_t next = 0;
    for (std::string& item : out) {
        if (shown.count(item) && next < shownOrder.size())
            item = shownOrder[next++];
    }
    return out;
}

bool applyMainColumnsOrder(project::SharedStuff& sharedstuff, project::Bin& bin,
                           const std::vector<std::string>& mainOrder) {
    if (bin.isLock() || !bin.layout)
        return false;
    tables::ColumnsLayout* layout = ownLayout(bin);
    layout->columns = reorderedWithin(layout->columns, mainOrder);
    touchBin(sharedstuff, bin);
    sharedstuff.projectChanged();
    return true;
}

void applyPinnedColumnsOrder(project::SharedStuff& sharedstuff, const std::vector<std::string>& pinnedOrder) {
    auto& pinned = sharedstuff.projectLayouts.pinnedColumns;
    pinned = reorderedWithin(pinned, pinnedOrder);
}

} // namespace lumbra::app
