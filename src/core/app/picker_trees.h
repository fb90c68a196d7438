#pragma once

#include "project/bins_tree_entry.h"
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

// One row of the pickers' trees: a layout, a bin, "Any Column", or a heading that only groups.
struct LayoutMixedTreeEntry {
    std::shared_ptr<tables::ColumnsLayout> columnsLayout;
    std::string id;
    project::Bin* bin = nullptr; // does not own
    std::vector<LayoutMixedTreeEntry> children;
    bool anyColumns = false;
    std::optional<std::string> _groupname;

    // A row that answers nothing when chosen.
    [[nodiscard]] bool isGroup() const noexcept { return !columnsLayout && !bin && !anyColumns; }
    // Pre-order, this row first.
    [[nodiscard]] std::vector<const LayoutMixedTreeEntry*> flatten() const;
};

inline constexpr std::string_view projectBinsTitle = "Project Bins";
inline constexpr std::string_view openBinsTitle = "Open Bins";
inline constexpr std::string_view smartBinsTitle = "Smart Bins";
inline constexpr std::string_view anyColumnTitle = "Any Column";
inline constexpr std::string_view anyColumnsName = "Any Columns";

// The bin picker's tree: "Project Bins" (the groups and bins of the project), "Open Bins" (one row
// per open bin) and, when asked, "Smart Bins".
[[nodiscard]] LayoutMixedTreeEntry binSetterTree(project::SharedStuff& sharedstuff, bool considerSmartbins);

// The layouts a mixed picker lists: the caller's own first, then the project's saved layouts.
[[nodiscard]] tables::LayoutList mixedPickerLayouts(const tables::LayoutList& extra,
                                                    const project::SharedStuff& sharedstuff);

// The mixed picker's tree for a search text: "Any Column" first; with showBin "Bins" holding the
// three bin headings; then "Layouts". A non-empty search keeps only the bins and layouts whose
// names contain it (case aside); the fixed rows stay.
[[nodiscard]] LayoutMixedTreeEntry layoutSetterMixedTree(project::SharedStuff& sharedstuff, bool showBin,
                                                         const tables::LayoutList& layouts,
                                                         std::string_view search);

// The checked entries of the tree picker with check boxes; entries are the same when their uuids are.
class BinTreeEntriesSelection {
public:
    explicit BinTreeEntriesSelection(bool groupsAreStatic) : groupsAreStatic(groupsAreStatic) {}

    [[nodiscard]] bool isChecked(project::BinsTreeEntry& entry) const;
    // A static group flips all the bins below it (all checked: all out; else the missing ones in)
    // and never enters itself; a bin or another group flips itself.
    void toggle(const project::TreeNode& entry);
    void setSelected(std::vector<project::TreeNode> entries);

    [[nodiscard]] const std::vector<project::TreeNode>& selectedBinTreeEntries() const noexcept {
        return m_selected;
    }

    const bool groupsAreStatic;

private:
    void add(const project::TreeNode& entry);
    void removeUuids(const std::unordered_set<std::string>& uuids);

    std::vector<project::TreeNode> m_selected;
    std::unordered_set<std::string> m_uuids;
};

} // namespace lumbra::app
