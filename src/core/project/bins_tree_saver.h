#pragma once

#include "project/bins_tree_entry.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace lumbra::project {

// Keeps a tree of folders in step with a tree of nodes: a renamed or moved node is one move of
// its folder (its subtree goes with it), a changed node is written again, a removed one goes.
class BinsTreeSaver {
public:
    BinsTreeSaver(std::string baseUrl, BinsTreeEntry& rootEntry);

    // `base` (else the base folder) and one "<name> - <uuid>" per node below the root on the
    // way to the entry; absent when the entry is not in this tree.
    [[nodiscard]] std::optional<std::string> folderOf(BinsTreeEntry& entry,
                                                      const std::optional<std::string>& base = std::nullopt);
    // Moves the entry's folder where it belongs, writes it if it changed or has no folder, then
    // its children. A node that fails (with a notification) is left with its subtree, and the walk
    // goes on with the others; false when any was left (see unwritten()).
    bool saveItem(BinsTreeEntry& entry, base::Notifications* notifications);
    // Saves the tree, then deletes the folders of the removed entries. False only when the save failed.
    bool removeEntries(const std::vector<TreeNode>& entries, base::Notifications* notifications = nullptr);
    // A copy of the subtree under another base; no node loses its changed mark. Goes on past a
    // failure as saveItem does.
    bool saveAll(const std::string& base, BinsTreeEntry& entry, base::Notifications* notifications);

    // Whether the last saveItem or removeEntries wrote or moved anything.
    [[nodiscard]] bool wroteSomething() const noexcept { return m_wrote; }
    // The names of the nodes the last walk could not write, with every node under them.
    [[nodiscard]] const std::vector<std::string>& unwritten() const noexcept { return m_unwritten; }

private:
    bool saveAt(BinsTreeEntry& entry, const std::string& path, base::Notifications* notifications);
    std::optional<std::string> currentFolder(BinsTreeEntry& entry, const std::string& path);
    void movedFolder(const std::string& from, const std::string& to);
    // Notes the node and its subtree as left unwritten; always false.
    bool leftUnwritten(BinsTreeEntry& entry);

    std::string m_baseUrl;
    BinsTreeEntry& m_root;
    // Where each uuid's folder lies, made once per walk the first time a node is not at its place.
    std::optional<std::unordered_map<std::string, std::string>> m_folders;
    bool m_wrote = false;
    std::vector<std::string> m_unwritten;
};

} // namespace lumbra::project
