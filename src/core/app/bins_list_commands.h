#pragma once

#include "project/bin_import.h"
#include "project/bins_tree_entry.h"

#include <string_view>
#include <vector>

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::app {

// The order a header of the bins lists stands for: "Bin", "Tag", "Modified", "Created"; absent for
// any other title.
[[nodiscard]] std::optional<project::BinsTreeOrderingMode> orderingForHeader(std::string_view title);
// A click on a header: the current order flips its direction, another order keeps it; the tree is
// sorted and its flat list rebuilt.
void orderBinsTree(project::BinsTreeEntry& tree, project::BinsTreeOrderingMode mode);

// An empty bin named "bin_NN" with the project's heading values and default layout, where files
// dropped at `target` would go; the delegates' lists reload.
project::Bin& createEmptyBin(project::SharedStuff& sharedstuff, project::ImportTarget target = {});
// A group "Group_NN" at `target` in the tree (bins or smart bins), the rest left in place; the dirty
// rule runs.
project::BinsTreeEntry& addGroup(project::SharedStuff& sharedstuff, project::BinsTreeEntry& tree,
                                 project::ImportTarget target = {});

// Opens or closes every bin under the nodes; the delegates' lists reload.
void setBinsOpen(project::SharedStuff& sharedstuff, const std::vector<project::BinsTreeEntry*>& nodes,
                 bool open);

} // namespace lumbra::app
