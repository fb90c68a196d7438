#include "app/picker_trees.h"

#include "app/fields_selection.h"
#include "project/shared_stuff.h"

#include <algorithm>

namespace lumbra::app {

namespace {

LayoutMixedTreeEntry heading(std::string_view title) {
    LayoutMixedTreeEntry entry;
    entry.id = std::string(title);
    entry._groupname = entry.id;
    return entry;
}

LayoutMixedTreeEntry binRow(project::Bin& bin) {
    LayoutMixedTreeEntry entry;
    entry.id = bin.displayName();
    entry.bin = &bin;
    return entry;
}

// A copy of a project tree's node. With a search, a bin stays when its name matches and a group
// when its own name matches (with all it holds) or when something below it stays.
std::optional<LayoutMixedTreeEntry> copyNode(const project::BinsTreeEntry& node, std::string_view search) {
    if (node.bin) {
        if (!matchesFilter(node.bin->displayName(), search)) {
            return std::nullopt;
        }
        return binRow(*node.bin);
    }
    LayoutMixedTreeEntry group = heading(node.name());
    const bool groupMatches = !search.empty() && matchesFilter(node.name(), search);
    for (const auto& child : node.children) {
        if (auto copy = copyNode(*child, groupMatches ? std::string_view{} : search)) {
            group.children.push_back(std::move(*copy));
        }
    }
    if (!search.empty() && !groupMatches && group.children.empty()) {
        return std::nullopt;
    }
    return group;
}

LayoutMixedTreeEntry treeHeading(std::string_view title, const project::BinsTreeEntry* root,
                                 std::string_view search) {
    LayoutMixedTreeEntry entry = heading(title);
    if (root) {
        for (const auto& child : root->children) {
            if (auto copy = copyNode(*child, search)) {
                entry.children.push_back(std::move(*copy));
            }
        }
    }
    return entry;
}

LayoutMixedTreeEntry openBinsHeading(project::SharedStuff& sharedstuff, std::string_view search) {
    LayoutMixedTreeEntry entry = heading(openBinsTitle);
    for (project::Bin* bin : sharedstuff.allBins()) {
        if (bin->selected() && matchesFilter(bin->displayName(), search)) {
            entry.children.push_back(binRow(*bin));
        }
    }
    return entry;
}

void collectLeaves(const project::BinsTreeEntry& node, std::vector<project::TreeNode>& out) {
    for (const auto& child : node.children) {
        if (child->bin) {
            out.push_back(child);
        }
        collectLeaves(*child, out);
    }
}

void flattenInto(const LayoutMixedTreeEntry& entry, std::vector<const LayoutMixedTreeEntry*>& out) {
    out.push_back(&entry);
    for (const auto& child : entry.children) {
        flattenInto(child, out);
    }
}

} // namespace

std::vector<const LayoutMixedTreeEntry*> LayoutMixedTreeEntry::flatten() const {
    std::vector<const LayoutMixedTreeEntry*> out;
    flattenInto(*this, out);
    return out;
}

LayoutMixedTreeEntry binSetterTree(project::SharedStuff& sharedstuff, bool considerSmartbins) {
    LayoutMixedTreeEntry root = heading("");
    root.children.push_back(treeHeading(projectBinsTitle, sharedstuff.bins.get(), {}));
    root.children.push_back(openBinsHeading(sharedstuff, {}));
    if (considerSmartbins) {
        root.children.push_back(treeHeading(smartBinsTitle, sharedstuff.smartbins.get(), {}));
    }
    return root;
}

tables::LayoutList mixedPickerLayouts(const tables::LayoutList& extra,
                                      const project::SharedStuff& sharedstuff) {
    tables::LayoutList layouts = extra;
    const auto& saved = sharedstuff.projectLayouts.layouts;
    layouts.insert(layouts.end(), saved.begin(), saved.end());
    return layouts;
}

LayoutMixedTreeEntry layoutSetterMixedTree(project::SharedStuff& sharedstuff, bool showBin,
                                           const tables::LayoutList& layouts, std::string_view search) {
    LayoutMixedTreeEntry root = heading("");
    LayoutMixedTreeEntry any;
    any.id = std::string(anyColumnTitle);
    any.anyColumns = true;
    root.children.push_back(std::move(any));
    if (showBin) {
        LayoutMixedTreeEntry bins = heading("Bins");
        bins.children.push_back(treeHeading(projectBinsTitle, sharedstuff.bins.get(), search));
        bins.children.push_back(openBinsHeading(sharedstuff, search));
        bins.children.push_back(treeHeading(smartBinsTitle, sharedstuff.smartbins.get(), search));
        root.children.push_back(std::move(bins));
    }
    LayoutMixedTreeEntry layoutsHeading = heading("Layouts");
    for (const auto& layout : layouts) {
        if (layout && matchesFilter(layout->name, search)) {
            LayoutMixedTreeEntry row;
            row.id = layout->name;
            row.columnsLayout = layout;
            layoutsHeading.children.push_back(std::move(row));
        }
    }
    root.children.push_back(std::move(layoutsHeading));
    return root;
}

bool BinTreeEntriesSelection::isChecked(project::BinsTreeEntry& entry) const {
    return m_uuids.contains(entry.nodeUuid());
}

void BinTreeEntriesSelection::toggle(const project::TreeNode& entry) {
    if (!entry) {
        return;
    }
    if (entry->bin || !groupsAreStatic) {
        const std::string& uuid = entry->nodeUuid();
        if (m_uuids.contains(uuid)) {
            removeUuids({uuid});
        } else {
            add(entry);
        }
        return;
    }
    std::vector<project::TreeNode> below;
    collectLeaves(*entry, below);
    const bool allChecked = std::all_of(
        below.begin(), below.end(), [this](const auto& node) { return m_uuids.contains(node->nodeUuid()); });
    if (allChecked) {
        std::unordered_set<std::string> uuids;
        for (const auto& node : below) {
            uuids.insert(node->nodeUuid());
        }
        removeUuids(uuids);
        return;
    }
    for (const auto& node : below) {
        if (!m_uuids.contains(node->nodeUuid())) {
            add(node);
        }
    }
}

void BinTreeEntriesSelection::setSelected(std::vector<project::TreeNode> entries) {
    m_selected.clear();
    m_uuids.clear();
    for (auto& entry : entries) {
        if (entry && !m_uuids.contains(entry->nodeUuid())) {
            add(entry);
        }
    }
}

void BinTreeEntriesSelection::add(const project::TreeNode& entry) {
    m_uuids.insert(entry->nodeUuid());
    m_selected.push_back(entry);
}

void BinTreeEntriesSelection::removeUuids(const std::unordered_set<std::string>& uuids) {
    std::erase_if(m_selected,
                  [&](const project::TreeNode& node) { return uuids.contains(node->nodeUuid()); });
    for (const std::string& uuid : uuids) {
        m_uuids.erase(uuid);
    }
}

} // namespace lumbra::app
