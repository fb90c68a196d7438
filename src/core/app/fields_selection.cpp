#include "app/fields_selection.h"

#include "base/text_helpers.h"
#include "project/project_catalogue.h"
#include "project/shared_stuff.h"

#include <algorithm>

namespace lumbra::app {

bool matchesFilter(std::string_view name, std::string_view filter) {
    if (filter.empty()) {
        return true;
    }
    return base::lowercased(name).find(base::lowercased(filter)) != std::string::npos;
}

std::vector<std::string> filterNames(const std::vector<std::string>& names, std::string_view filter) {
    if (filter.empty()) {
        return names;
    }
    // The filter is lowered once, not once per name.
    const std::string lowered = base::lowercased(filter);
    std::vector<std::string> out;
    for (const std::string& name : names) {
        if (base::lowercased(name).find(lowered) != std::string::npos) {
            out.push_back(name);
        }
    }
    return out;
}

bool SingleInputRules::accepts(std::string_view text) const {
    if (text.empty()) {
        return canBeEmpty;
    }
    if (unusableCharacters) {
        for (const std::string& unusable : *unusableCharacters) {
            if (!unusable.empty() && text.find(unusable) != std::string_view::npos) {
                return false;
            }
        }
    } else if (project::hasForbiddenProjectCharacter(text)) {
        return false;
    }
    return std::find(takenNames.begin(), takenNames.end(), text) == takenNames.end();
}

void FieldsSelection::setup(project::SharedStuff& sharedstuff) {
    tables::OrderedStringList columns = sharedstuff.allColumns();
    // A bin's own layout may name columns that neither its table nor any saved layout has.
    for (const project::Bin* bin : sharedstuff.allBins()) {
        if (bin->layout) {
            for (const std::string& column : bin->layout->columns) {
                columns.insert(column);
            }
        }
    }
    allColumns = std::move(columns._data);
    m_layouts = sharedstuff.projectLayouts.layouts;
    m_baseLayout = sharedstuff.projectLayouts.baseLayout;
    mode = ColumnsMode::custom;
    selectedLayout.reset();
    selectedColumns.clear();
    m_selected.clear();
    filterText.clear();
    refilter();
}

std::vector<std::string> FieldsSelection::popupTitles() const {
    std::vector<std::string> titles{std::string(allColumnsTitle), std::string(defaultTitle)};
    for (const auto& layout : m_layouts) {
        titles.push_back(layout->name);
    }
    return titles;
}

void FieldsSelection::selectLayout(std::string_view title) {
    if (title == allColumnsTitle) {
        mode = ColumnsMode::custom;
    } else if (title == defaultTitle) {
        mode = ColumnsMode::layout;
        selectedLayout = m_baseLayout;
    } else {
        const auto found = std::find_if(m_layouts.begin(), m_layouts.end(),
                                        [&](const auto& layout) { return layout->name == title; });
        if (found == m_layouts.end()) {
            return;
        }
        mode = ColumnsMode::layout;
        selectedLayout = *found;
    }
    filterText.clear();
    refilter();
}

void FieldsSelection::setFilter(std::string text) {
    filterText = std::move(text);
    refilter();
}

bool FieldsSelection::addColumn(const std::string& column) {
    if (!m_selected.insert(column).second) {
        return false;
    }
    selectedColumns.push_back(column);
    return true;
}

bool FieldsSelection::removeColumn(const std::string& column) {
    if (m_selected.erase(column) == 0) {
        return false;
    }
    selectedColumns.erase(std::find(selectedColumns.begin(), selectedColumns.end(), column));
    return true;
}

bool FieldsSelection::addCustomColumn(const std::optional<std::string>& answer) {
    // A custom name already chosen is not listed twice: the selection names each column once.
    return answer && !answer->empty() && addColumn(*answer);
}

std::string FieldsSelection::fieldsListLine() const {
    return "fetched FIELDSLIST: " + tables::printedList(selectedColumns);
}

void FieldsSelection::refilter() {
    if (mode == ColumnsMode::layout && selectedLayout) {
        filteredColumns = filterNames(selectedLayout->columns, filterText);
    } else {
        filteredColumns = filterNames(allColumns, filterText);
    }
}

} // namespace lumbra::app
