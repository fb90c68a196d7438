#pragma once

#include "tables/columns_layout.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::app {

// Whether a name holds text a picker's filter asks for: empty filters keep everything, otherwise
// the lower-case name contains the lower-case filter.
[[nodiscard]] bool matchesFilter(std::string_view name, std::string_view filter);
// The names that match, in their order.
[[nodiscard]] std::vector<std::string> filterNames(const std::vector<std::string>& names,
                                                   std::string_view filter);

// The rules of the one-line name prompt: whether its text can be confirmed.
struct SingleInputRules {
    std::vector<std::string> takenNames;
    bool canBeEmpty = false;
    // Absent: the characters no bin name may hold.
    std::optional<std::vector<std::string>> unusableCharacters;

    // Empty text only with canBeEmpty; no unusable character; not one of takenNames.
    [[nodiscard]] bool accepts(std::string_view text) const;
};

// Where a column chooser takes its source list from.
enum class ColumnsMode { layout, custom };

// The column chooser's logic: a source list (all columns of the project, or a layout's),
// filtered by text, from which columns are added to an ordered selection.
class FieldsSelection {
public:
    static constexpr std::string_view allColumnsTitle = "<All columns>";
    static constexpr std::string_view defaultTitle = "Default";

    // All columns of the project, its layouts and its default; mode custom, nothing selected.
    void setup(project::SharedStuff& sharedstuff);

    // "<All columns>", "Default", then each saved layout's name.
    [[nodiscard]] std::vector<std::string> popupTitles() const;
    // A title of the popup; an unknown one changes nothing. The filter is emptied.
    void selectLayout(std::string_view title);
    void setFilter(std::string text);

    [[nodiscard]] bool isSelected(const std::string& column) const { return m_selected.contains(column); }
    // False, and nothing changes, when the column is already selected.
    bool addColumn(const std::string& column);
    // False when the column was not selected.
    bool removeColumn(const std::string& column);
    // The answer of the custom column prompt: an absent or empty answer adds nothing.
    bool addCustomColumn(const std::optional<std::string>& answer);

    // The line printed at each change of the selection: "fetched FIELDSLIST: " and the list.
    [[nodiscard]] std::string fieldsListLine() const;

    std::vector<std::string> allColumns;
    std::vector<std::string> filteredColumns;
    std::vector<std::string> selectedColumns;
    ColumnsMode mode = ColumnsMode::custom;
    std::shared_ptr<tables::ColumnsLayout> selectedLayout;
    std::string filterText;

private:
    void refilter();

    tables::LayoutList m_layouts;
    std::shared_ptr<tables::ColumnsLayout> m_baseLayout;
    std::unordered_set<std::string> m_selected;
};

} // namespace lumbra::app
