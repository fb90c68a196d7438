#pragma once

#include "base/saveable.h"
#include "project/bin.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {

enum class BinsTreeOrderingMode { alphabetical = 0, bytag = 1, lastmodified = 2, lastcreated = 3 };

class BinsTreeEntry;
// Nodes are shared: the colour tag trees and the selection copies hold the same nodes.
using TreeNode = std::shared_ptr<BinsTreeEntry>;

// A node of a tree of bins: a group (no bin, with children) or a leaf that holds a bin.
// On disk one folder "<name> - <uuid>" per node, a child's inside its parent's.
class BinsTreeEntry : public base::Saveable {
public:
    BinsTreeEntry(std::string id, std::shared_ptr<Bin> bin, std::vector<TreeNode> children = {},
                  BinsHost* sharedstuff = nullptr);
    // A shallow copy for windows that show the tree in selections of their own: same id, bin,
    // children; no project; dates and uuid of its own; the source's tag written to the bin.
    [[nodiscard]] static TreeNode shallowCopy(const BinsTreeEntry& source);

    // A leaf and its bin are one identity on disk: the bin's uuid, dates and changed mark.
    [[nodiscard]] base::Saveable& identity() noexcept;
    [[nodiscard]] const base::Saveable& identity() const noexcept;
    [[nodiscard]] const std::string& nodeUuid() { return identity().uuid(); }

    // The bin's name, else the group's name, else the id.
    [[nodiscard]] std::string name() const;
    void setName(std::string name);

    // A group writes its details; a leaf saves its bin.
    bool save(const std::string& folder, bool isCopy, base::Notifications* notifications) override;
    // Reads the details; the group's name is the folder's less " - <uuid>".
    bool load(const std::string& folder, base::Notifications* notifications) override;

    // Whether this node comes after `other` in the mode.
    [[nodiscard]] bool isAfter(const BinsTreeEntry& other, BinsTreeOrderingMode mode) const;
    // Stable and recursive; groups before bins in both senses; `ascending` false puts the
    // smallest first. Remembers nothing: lastordered and lastascending belong to the caller.
    void sort(BinsTreeOrderingMode mode, bool ascending);
    void resort() { sort(lastordered, lastascending); }
    // Marks every node from here down to the bin as modified now and changed.
    void touch(const Bin& bin);

    // Depth-first searches; nullptr when nothing matches.
    [[nodiscard]] BinsTreeEntry* entry(const Bin& bin);
    [[nodiscard]] BinsTreeEntry* entryByUuid(std::string_view uuid);
    [[nodiscard]] BinsTreeEntry* entryById(std::string_view id);
    // The shared handle of a node of this subtree; empty when it is not here.
    [[nodiscard]] TreeNode handleOf(const BinsTreeEntry* node) const;

    // Pre-order, this node first.
    [[nodiscard]] std::vector<BinsTreeEntry*> flatten();
    [[nodiscard]] std::vector<std::string> allIds() const;
    [[nodiscard]] std::vector<std::string> allNames() const;

    // At `index` when it is within the children, otherwise at the end.
    void addChild(TreeNode entry, long index = -1);
    // A new leaf named after the table, appended.
    BinsTreeEntry& addBin(std::shared_ptr<Bin> bin);
    // By identity, also deeper down when recursive; true if found.
    bool removeChild(const BinsTreeEntry* entry, bool recursive);
    // `node` is a direct child of this node.
    [[nodiscard]] bool isChild(const BinsTreeEntry* node) const;
    // `node` is anywhere below this node.
    [[nodiscard]] bool isDescendant(const BinsTreeEntry* node) const;
    // The node of this subtree whose child `node` is.
    [[nodiscard]] BinsTreeEntry* parent(const BinsTreeEntry* node);

    // Called on a root: moves the items into the group `target` from `index` on. An item
    // that holds the target, is the target, or is a locked bin stays where it is. Sorts again,
    // and lets the smart bins whose domain the move crosses test their rows again.
    void moveItems(const std::vector<BinsTreeEntry*>& items, BinsTreeEntry* target, long index,
                   BinsHost* sharedstuff);
    // A leaf has the smart table test its bin; a group goes on in the children out of the domain.
    void reevaluateSmartbins(SmartTableLink& table);

    // Rebuilds `toarray` of this subtree: the node's bin first, then each child's bins.
    void rebuildArray();

    // From this node down to the target; empty when the target is not in this subtree.
    [[nodiscard]] std::vector<BinsTreeEntry*> pathTo(const Bin& bin);
    [[nodiscard]] std::vector<BinsTreeEntry*> pathTo(const BinsTreeEntry* entry);

    // New groups with the same names and shape, bins left out, under `into`, else under this
    // node's parent, else under the project's tree. Nothing without a project.
    void copyGroupStructure(BinsHost* sharedstuff, BinsTreeEntry* into);
    void copySmartGroupStructure(BinsHost* sharedstuff, BinsTreeEntry* into);

    std::string id;
    std::shared_ptr<Bin> bin;
    BinsHost* sharedstuff = nullptr; // does not own
    std::vector<TreeNode> children;
    std::vector<Bin*> toarray; // does not own
    BinsTreeOrderingMode lastordered = BinsTreeOrderingMode::alphabetical;
    bool lastascending = false;

private:
    bool pathTo(const BinsTreeEntry* target, const Bin* bin, std::vector<BinsTreeEntry*>& path);
    void collectBins(std::vector<Bin*>& out) const;
    void copyStructure(BinsHost* sharedstuff, BinsTreeEntry* into, bool smart);

    std::optional<std::string> m_groupname;
};

} // namespace lumbra::project
