#include "app/layout_editing.h"

#include "app/fields_selection.h"
#include "project/bin.h"
#include "project/project_catalogue.h"
#include "project/shared_stuff.h"
#include "tables/layouts_saver.h"

#include <algorithm>
#include <array>
#include <unordered_set>

namespace lumbra::app {

namespace {

constexpr std::array<std::string_view, 3> reservedLayoutNames = {"Default", "Bin Columns", "Custom"};

std::vector<std::size_t> sortedRows(std::vector<std::size_t> rows, std::size_t count) {
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    std::erase_if(rows, [count](std::size_t row) { return row >= count; });
    return rows;
}

tables::ColumnsLayout* savedLayoutNamed(const tables::ProjectLayouts& layouts, std::string_view name) {
    for (const auto& layout : layouts.layouts) {
        if (layout->name == name) {
            return layout.get();
        }
    }
    return nullptr;
}

} // namespace

LayoutNameState validateLayoutName(std::string_view name, const tables::ProjectLayouts& layouts) {
    LayoutNameState state;
    state.canCreate =
        !name.empty() && !project::hasForbiddenProjectCharacter(name) &&
        name.find('+') == std::string_view::npos &&
        std::find(reservedLayoutNames.begin(), reservedLayoutNames.end(), name) == reservedLayoutNames.end();
    state.exists = savedLayoutNamed(layouts, name) != nullptr;
    return state;
}

std::optional<std::string> previewCutText(std::size_t rowCount) {
    if (rowCount <= layoutPreviewLimit) {
        return std::nullopt;
    }
    return "Preview cut to " + std::to_string(layoutPreviewLimit) + " entries";
}

void LayoutEditor::setup(const project::Bin& bin) {
    columns = bin.layout ? bin.layout->columns : std::vector<std::string>{};
    name = bin.layout ? bin.layout->name : std::string{};
    useBin(bin);
}

void LayoutEditor::useLayout(const tables::ColumnsLayout& layout) {
    useColumns(layout.columns, layout.name);
}

void LayoutEditor::useBin(const project::Bin& bin) {
    useColumns(bin.table() ? bin.table()->cols : std::vector<std::string>{}, bin.displayName());
}

void LayoutEditor::useColumns(std::vector<std::string> source, std::string title) {
    supportcolumns = std::move(source);
    sourceTitle = std::move(title);
    setFilter({});
}

void LayoutEditor::setFilter(std::string text) {
    filterText = std::move(text);
    filteredsupportcolumns = filterNames(supportcolumns, filterText);
}

std::size_t LayoutEditor::insertionPoint(const std::vector<std::size_t>& selection) const {
    const auto rows = sortedRows(selection, columns.size());
    return rows.empty() ? columns.size() : rows.back() + 1;
}

std::vector<std::size_t> LayoutEditor::takeSelected(const std::vector<std::size_t>& sourceRows,
                                                    const std::vector<std::size_t>& selection) {
    std::unordered_set<std::string> present(columns.begin(), columns.end());
    std::vector<std::string> taken;
    for (std::size_t row : sortedRows(sourceRows, filteredsupportcolumns.size())) {
        const std::string& column = filteredsupportcolumns[row];
        if (present.insert(column).second) {
            taken.push_back(column);
        }
    }
    const std::size_t at = insertionPoint(selection);
    columns.insert(columns.begin() + static_cast<long>(at), taken.begin(), taken.end());
    std::vector<std::size_t> added(taken.size());
    for (std::size_t i = 0; i < added.size(); ++i) {
        added[i] = at + i;
    }
    return added;
}

std::optional<std::size_t> LayoutEditor::addColumn(const std::string& column,
                                                   const std::vector<std::size_t>& selection) {
    // A layout names each column once: a second copy would show the same cells twice.
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
        return std::nullopt;
    }
    const std::size_t at = insertionPoint(selection);
    columns.insert(columns.begin() + static_cast<long>(at), column);
    return at;
}

std::size_t LayoutEditor::takeAll() {
    std::unordered_set<std::string> present(columns.begin(), columns.end());
    std::size_t added = 0;
    for (const std::string& column : filteredsupportcolumns) {
        if (present.insert(column).second) {
            columns.push_back(column);
            ++added;
        }
    }
    return added;
}

void LayoutEditor::removeRows(const std::vector<std::size_t>& rows) {
    const auto sorted = sortedRows(rows, columns.size());
    for (auto it = sorted.rbegin(); it != sorted.rend(); ++it) {
        columns.erase(columns.begin() + static_cast<long>(*it));
    }
}

std::vector<std::size_t> LayoutEditor::moveRows(const std::vector<std::size_t>& rows, long steps) {
    const auto sorted = sortedRows(rows, columns.size());
    if (sorted.empty() || steps == 0) {
        return sorted;
    }
    const std::size_t wanted = static_cast<std::size_t>(steps < 0 ? -steps : steps);
    const std::size_t room = steps < 0 ? sorted.front() : columns.size() - 1 - sorted.back();
    const std::size_t shift = std::min(wanted, room);
    std::vector<std::size_t> targets;
    targets.reserve(sorted.size());
    for (std::size_t row : sorted) {
        targets.push_back(steps < 0 ? row - shift : row + shift);
    }
    std::vector<std::optional<std::string>> slots(columns.size());
    std::vector<bool> moving(columns.size(), false);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        slots[targets[i]] = columns[sorted[i]];
        moving[sorted[i]] = true;
    }
    std::size_t free = 0;
    for (std::size_t row = 0; row < columns.size(); ++row) {
        if (moving[row]) {
            continue;
        }
        while (slots[free]) {
            ++free;
        }
        slots[free] = columns[row];
    }
    for (std::size_t row = 0; row < columns.size(); ++row) {
        columns[row] = std::move(*slots[row]);
    }
    return targets;
}

std::shared_ptr<tables::ColumnsLayout> LayoutEditor::confirm(tables::ProjectLayouts& layouts) const {
    if (!nameState(layouts).canCreate) {
        return nullptr;
    }
    std::shared_ptr<tables::ColumnsLayout> result;
    for (const auto& layout : layouts.layouts) {
        if (layout->name == name) {
            result = layout;
            break;
        }
    }
    if (!result) {
        result = std::make_shared<tables::ColumnsLayout>(name);
    }
    result->columns = columns;
    result->modified = base::nowSeconds();
    result->hasChanged = true;
    return result;
}

bool adoptEditedLayout(project::SharedStuff& sharedstuff, project::Bin& bin,
                       const std::shared_ptr<tables::ColumnsLayout>& result) {
    if (!result) {
        return true;
    }
    tables::ProjectLayouts& layouts = sharedstuff.projectLayouts;
    std::shared_ptr<tables::ColumnsLayout> used;
    for (const auto& layout : layouts.layouts) {
        if (layout->name == result->name) {
            used = layout;
            break;
        }
    }
    if (used) {
        used->columns = result->columns;
    } else {
        used = result;
        layouts.layouts.push_back(result);
        layouts.sortLayouts();
    }
    used->hasChanged = true;
    bin.layout = used;
    bin.hasChanged = true;
    sharedstuff.refreshOpenBoxes();
    sharedstuff.refreshLayoutButtons();
    bool saved = true;
    if (const auto path = sharedstuff.projectPath()) {
        tables::LayoutsSaver saver(layouts, *path + "/" + std::string(tables::layoutsFolderName));
        saved = saver.saveAll(&sharedstuff.bufferedNotifications);
    }
    sharedstuff.projectChanged();
    return saved;
}

} // namespace lumbra::app
