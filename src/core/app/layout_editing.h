#pragma once

#include "tables/columns_layout.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::app {

// What the layout editor's name allows: whether it can be confirmed, and whether it names a saved
// layout (then confirming updates that one).
struct LayoutNameState {
    bool canCreate = false;
    bool exists = false;

    [[nodiscard]] std::string_view buttonTitle() const noexcept { return exists ? "Update" : "Create"; }
    bool operator==(const LayoutNameState&) const = default;
};

// Refused: the empty name, "Default", "Bin Columns", "Custom", a name with a character no bin name
// may hold, or with a "+" (the mark of a layout changed by hand).
[[nodiscard]] LayoutNameState validateLayoutName(std::string_view name,
                                                 const tables::ProjectLayouts& layouts);

// How many of a bin's rows the editor's preview shows.
inline constexpr std::size_t layoutPreviewLimit = 50;
// "Preview cut to 50 entries" when the bin has more rows than the preview shows; absent otherwise.
[[nodiscard]] std::optional<std::string> previewCutText(std::size_t rowCount);

// The layout editor's logic: the column list being built (`columns`), the source it takes columns
// from (`supportcolumns`, filtered by text), and the moves between and within them. Rows are
// indices; operations that change the selection return the rows selected afterwards.
class LayoutEditor {
public:
    // The bin's layout's columns and name; the bin's table columns as the source.
    void setup(const project::Bin& bin);
    // Another source: a layout's columns, a bin's table columns, or a list under a title. The
    // filter is emptied.
    void useLayout(const tables::ColumnsLayout& layout);
    void useBin(const project::Bin& bin);
    void useColumns(std::vector<std::string> source, std::string title);
    void setFilter(std::string text);

    // The chosen rows of the filtered source that `columns` lacks, behind the last selected row
    // of `columns`, or at the end when none is selected.
    std::vector<std::size_t> takeSelected(const std::vector<std::size_t>& sourceRows,
                                          const std::vector<std::size_t>& selection);
    // One column behind the last selected row, or at the end; absent when `columns` has it already.
    std::optional<std::size_t> addColumn(const std::string& column,
                                         const std::vector<std::size_t>& selection);
    // Every filtered source column that `columns` lacks, at the end; how many were added.
    std::size_t takeAll();
    void removeRows(const std::vector<std::size_t>& rows);
    void removeAll() { columns.clear(); }
    // The selected rows move together by up to |steps| (negative: upwards), keeping their distances
    // and stopping at the ends of the list.
    std::vector<std::size_t> moveRows(const std::vector<std::size_t>& rows, long steps);

    [[nodiscard]] LayoutNameState nameState(const tables::ProjectLayouts& layouts) const {
        return validateLayoutName(name, layouts);
    }
    // The answer for the name: the saved layout of that name, or a new one without widths; its
    // columns become `columns`, it is marked changed. Null when the name is refused.
    [[nodiscard]] std::shared_ptr<tables::ColumnsLayout> confirm(tables::ProjectLayouts& layouts) const;

    std::vector<std::string> columns;
    std::vector<std::string> supportcolumns;
    std::vector<std::string> filteredsupportcolumns;
    std::string name;
    std::string filterText;
    // What the source came from, as its button shows it.
    std::string sourceTitle;

private:
    std::size_t insertionPoint(const std::vector<std::size_t>& selection) const;
};

// The editor's answer applied: a saved layout of that name takes its columns, else the answer joins
// the saved layouts; the bin uses it, boxes are redrawn, the layouts folder is saved through the
// layouts saver, and the dirty rule runs. False when the layouts could not be saved.
bool adoptEditedLayout(project::SharedStuff& sharedstuff, project::Bin& bin,
                       const std::shared_ptr<tables::ColumnsLayout>& result);

} // namespace lumbra::app
