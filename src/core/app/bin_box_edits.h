#pragma once

#include "app/bin_box_columns.h"
#include "base/notification.h"

#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::app {

// The first half of the change upkeep: the bin and every node on its path in the bins tree are
// modified now and changed, the tree keeps its order, and every delegate reloads its bins lists. A bin
// outside the bins tree (a smart bin) is only marked changed itself.
void touchBin(project::SharedStuff& sharedstuff, project::Bin& bin);

// True for the empty text and for underscores only: typed into a cell, either clears it.
[[nodiscard]] bool isClearingText(std::string_view text);

enum class CellEditOutcome {
    refused,   // a locked column or the tag column: the editor shows `restoreText` again
    unchanged, // the same value as before
    stored,    // the value is in the row now
    cleared,   // the key left the row
    dropped,   // the row's bin is locked: the row keeps its value
};

struct CellEditResult {
    CellEditOutcome outcome = CellEditOutcome::unchanged;
    std::string restoreText;
    // The cell's value before and after a store or a clearing, for the boxes that refit its column.
    std::string oldValue;
    std::string newValue;
    // The open bins whose boxes show the row: its own bin and those of the smart tables that list it.
    std::vector<project::Bin*> binsToRefresh;
};

// The end of a cell edit in `bin`'s box at `row` (an index into the bin's table) and `column`.
// A row out of range is refused with nothing to restore.
CellEditResult editCell(project::SharedStuff& sharedstuff, project::Bin& bin, long row,
                        const std::string& column, const std::string& text);

// "Ordered by <column>": the mark flips on the same column, starts descending (" ↓") on another;
// the table is sorted and the change upkeep runs, dirty rule included.
base::NotificationData orderByColumn(project::SharedStuff& sharedstuff, project::Bin& bin, OrderMark& order,
                                     const std::string& column);

} // namespace lumbra::app
