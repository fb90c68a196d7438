#pragma once

#include "tables/ale_table.h"
#include "tables/columns_layout.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::app {

// The reserved column that holds a row's colour tag.
inline constexpr std::string_view tagColumnName = "Lumbra_Color_Tag";
// What an empty data cell shows; it is never stored.
inline constexpr std::string_view emptyCellText = "    /    ";
inline constexpr double tagColumnWidth = 30.0;
// Points per character when a column is fitted to its values.
inline constexpr double fitPointsPerCharacter = 8.0;

enum class RowTag { none, red, green, blue, yellow, pink, purple };

// The colour of a stored tag word, in any case; any other word, or none, is `none`.
[[nodiscard]] RowTag rowTag(std::string_view word);

// The columns of one box: those of the project's pinned list that the bin's layout holds (pinned
// order), and the other layout columns (layout order).
struct ColumnSplit {
    std::vector<std::string> pinned;
    std::vector<std::string> main;
    bool operator==(const ColumnSplit&) const = default;
};
[[nodiscard]] ColumnSplit splitColumns(const std::vector<std::string>& pinnedColumns,
                                       const std::vector<std::string>& layoutColumns);

// How the box sizes a column that has no fixed width.
enum class ColumnSizing { given, sizeToFit, untouched };

// One table column as the box builds it: the identifier is the column name, the title is decorated.
struct ColumnSpec {
    std::string identifier;
    std::string title;
    bool editable = true;
    bool isTag = false;
    ColumnSizing sizing = ColumnSizing::untouched;
    // Meaningful with `given` sizing; the tag column also takes it as its minimum and maximum.
    double width = 0.0;
    // True when the layout stores a width for the column, which fitting at refresh leaves alone.
    bool storedWidth = false;
    bool operator==(const ColumnSpec&) const = default;
};

// The column last ordered by and its direction; an empty name means none.
struct OrderMark {
    std::string lastOrdered;
    bool lastAscending = false;
};

// The columns of one of the box's two tables, from the bin's locks and layout widths and the
// project's width rule.
[[nodiscard]] std::vector<ColumnSpec> columnSpecs(const std::vector<std::string>& names, bool pinned,
                                                  const project::Bin& bin,
                                                  const tables::ProjectLayouts& layouts,
                                                  const OrderMark& order);

// The widest value of each column in characters, times 8.0 points (0 for a column no row holds). A
// column's rows are counted once, when first asked for; after that each edited cell updates the count,
// so a fit after an edit reads no other row.
class ContentWidths {
public:
    [[nodiscard]] double width(const tables::ALETable& table, const std::string& column);
    // One cell went from `before` to `after`; a column not counted yet waits for its count.
    void replace(const std::string& column, std::string_view before, std::string_view after);
    // The rows changed in ways no single edit tells: every column is counted again when next asked for.
    void clear() noexcept { m_columns.clear(); }

private:
    // By column: how many rows hold a value of each character count above zero.
    std::unordered_map<std::string, std::map<std::size_t, std::size_t>> m_columns;
};

// With force the content width, else the larger of the two.
[[nodiscard]] double fittedWidth(double current, double content, bool force);

// The bin's layout, ready to be changed: itself when its name ends in "+", else a copy named with
// "+" appended that becomes the bin's layout. Null when the bin has no layout.
tables::ColumnsLayout* ownLayout(project::Bin& bin);
// Stores a width into the layout (through ownLayout) and marks the bin changed; false when the
// layout has that width already or the bin has no layout.
bool storeColumnWidth(project::SharedStuff& sharedstuff, project::Bin& bin, const std::string& column,
                      double width);

// A move of selected columns as one block.
struct BlockMove {
    std::vector<std::string> order;    // all columns of the table afterwards
    std::vector<std::size_t> selected; // the moved columns' new places
};
// Moves the selected columns by (to - from), clamped so the block stays in the table; absent when
// nothing is selected, an index is out of range, or the clamped move is zero.
[[nodiscard]] std::optional<BlockMove> moveColumnBlock(const std::vector<std::string>& columns,
                                                       std::vector<std::size_t> selected, std::size_t from,
                                                       std::size_t to);
// `list` with the places held by members of `shown` filled, in turn, by `shownOrder`; other items
// stay where they are. Reorders the layout from the main table and the pinned list from the pinned.
[[nodiscard]] std::vector<std::string> reorderedWithin(const std::vector<std::string>& list,
                                                       const std::vector<std::string>& shownOrder);

// A block move in the main table: the layout's order changes (through ownLayout), the dirty rule
// runs. False when the bin is locked or has no layout.
bool applyMainColumnsOrder(project::SharedStuff& sharedstuff, project::Bin& bin,
                           const std::vector<std::string>& mainOrder);
// A block move in the pinned table: the project's pinned list changes order.
void applyPinnedColumnsOrder(project::SharedStuff& sharedstuff, const std::vector<std::string>& pinnedOrder);

} // namespace lumbra::app
