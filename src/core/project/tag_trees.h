#pragma once

#include "project/bins_tree_entry.h"

#include <vector>

namespace lumbra::project {

// The two derived trees that sort the same nodes by colour tag; never saved.
struct TagTrees {
    TreeNode withSmartbins;
    TreeNode withoutSmartbins;
};

// Empty tag trees: a root "Color Tags" with one group per tag, "None" to "Purple"; in the tree
// with smart bins each tag group has a child group "Smart Bins".
[[nodiscard]] TagTrees emptyTagTrees();

// Places the nodes of `bins` under the group of their tag, in both trees; a node's subtree goes
// with it, and a node with the same tag as a group above it is there already and is skipped.
// The top nodes of `smartbins` go under "Smart Bins" of their tag. The nodes are the same
// objects as in the source trees.
[[nodiscard]] TagTrees buildTagTrees(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins);

} // namespace lumbra::project
