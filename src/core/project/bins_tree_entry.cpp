#include "project/bins_tree_entry.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_order.h"
#include "project/name_makers.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

namespace lumbra::project {

using base::Notifications;
using base::printLine;

namespace {

// The parent of every node of one tree, kept current while nodes move, so that paths and
// parents inside a loop over moved items cost no walk of the tree.
class ParentIndex {
public:
    explicit ParentIndex(BinsTreeEntry* root) : m_root(root) {
        if (root)
            fill(*root);
    }
    [[nodiscard]] BinsTreeEntry* parentOf(const BinsTreeEntry* node) const {
        auto it = m_parents.find(node);
        return it == m_parents.end() ? nullptr : it->second;
    }
    [[nodiscard]] std::vector<BinsTreeEntry*> pathTo(BinsTreeEntry* node) const {
        if (!m_root || (node != m_root && !parentOf(node)))
            return {};
        std::vector<BinsTreeEntry*> path;
        for (BinsTreeEntry* n = node; n; n = parentOf(n))
            path.push_back(n);
        std::reverse(path.begin(), path.end());
        return path;
    }
    void setParent(const BinsTreeEntry* node, BinsTreeEntry* parent) { m_parents[node] = parent; }

private:
    void fill(BinsTreeEntry& node) {
        for (const auto& child : node.children) {
            m_parents[child.get()] = &node;
            fill(*child);
        }
    }

    BinsTreeEntry* m_root;
    std::unordered_map<const BinsTreeEntry*, BinsTreeEntry*> m_parents;
};

template <typename Entry, typename Visit> void preOrder(Entry& node, Visit&& visit) {
    visit(node);
    for (const auto& child : node.children)
        preOrder(static_cast<Entry&>(*child), visit);
}

template <typename Test> BinsTreeEntry* findDepthFirst(BinsTreeEntry& node, Test&& test) {
    if (test(node))
        return &node;
    for (const auto& child : node.children) {
        if (auto* hit = findDepthFirst(*child, test))
            return hit;
    }
    return nullptr;
}

void markChanged(BinsTreeEntry& node) {
    base::Saveable& identity = node.identity();
    identity.modified = base::nowSeconds();
    identity.hasChanged = true;
}

} // namespace

BinsTreeEntry::BinsTreeEntry(std::string id, std::shared_ptr<Bin> bin, std::vector<TreeNode> children,
                             BinsHost* sharedstuff)
    : id(std::move(id)), bin(std::move(bin)), sharedstuff(sharedstuff), children(std::move(children)) {
    if (this->bin)
        tag = this->bin->tag;
    rebuildArray();
}

TreeNode BinsTreeEntry::shallowCopy(const BinsTreeEntry& source) {
    auto copy = std::make_shared<BinsTreeEntry>(source.id, source.bin, source.children, nullptr);
    copy->tag = source.tag;
    if (copy->bin)
        copy->bin->tag = source.tag;
    return copy;
}

base::Saveable& BinsTreeEntry::identity() noexcept {
    return bin ? static_cast<base::Saveable&>(*bin) : *this;
}

const base::Saveable& BinsTreeEntry::identity() const noexcept {
    return bin ? static_cast<const base::Saveable&>(*bin) : *this;
}

std::string BinsTreeEntry::name() const {
    if (bin)
        return bin->displayName();
    return m_groupname.value_or(id);
}

void BinsTreeEntry::setName(std::string name) {
    if (bin)
        bin->setDisplayName(name);
    m_groupname = std::move(name);
}

bool BinsTreeEntry::save(const std::string& folder, bool isCopy, Notifications* notifications) {
    if (bin)
        return bin->save(folder, isCopy, notifications);
    printLine("saving group " + name());
    return base::Saveable::save(folder, isCopy, notifications);
}

bool BinsTreeEntry::load(const std::string& folder, Notifications* notifications) {
    if (!base::Saveable::load(folder, notifications)) {
        printLine("ERROR loading from " + folder);
        return false;
    }
    m_groupname = base::lastComponent(folder, " - " + uuid());
    if (bin) {
        bin->setUuid(uuid());
        bin->created = created;
        bin->modified = modified;
        bin->hasChanged = hasChanged;
        bin->tag = tag;
    }
    return true;
}

bool BinsTreeEntry::isAfter(const BinsTreeEntry& other, BinsTreeOrderingMode mode) const {
    switch (mode) {
    case BinsTreeOrderingMode::alphabetical:
        return base::readingLess(other.name(), name());
    case BinsTreeOrderingMode::bytag:
        return static_cast<int>(other.tag) < static_cast<int>(tag);
    case BinsTreeOrderingMode::lastmodified:
        return identity().modified > other.identity().modified;
    case BinsTreeOrderingMode::lastcreated:
        return identity().created > other.identity().created;
    }
    return false;
}

void BinsTreeEntry::sort(BinsTreeOrderingMode mode, bool ascending) {
    for (const auto& child : children)
        child->sort(mode, ascending);
    // Keys are made once per child; a stable sort with this order is the insertion sort that
    // swaps a node past its neighbour only while it is strictly after it.
    struct Keyed {
        bool leaf;
        std::string text;
        double number;
        TreeNode node;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(children.size());
    for (auto& child : children) {
        Keyed k{child->bin != nullptr, {}, 0.0, child};
        switch (mode) {
        case BinsTreeOrderingMode::alphabetical:
            k.text = base::readingKey(child->name());
            break;
        case BinsTreeOrderingMode::bytag:
            k.number = static_cast<double>(child->tag);
            break;
        case BinsTreeOrderingMode::lastmodified:
            k.number = child->identity().modified;
            break;
        case BinsTreeOrderingMode::lastcreated:
            k.number = child->identity().created;
            break;
        }
        keyed.push_back(std::move(k));
    }
    bool byText = mode == BinsTreeOrderingMode::alphabetical;
    std::stable_sort(keyed.begin(), keyed.end(), [&](const Keyed& a, const Keyed& b) {
        if (a.leaf != b.leaf)
            return !a.leaf;
        const Keyed& low = ascending ? b : a;
        const Keyed& high = ascending ? a : b;
        return byText ? low.text < high.text : low.number < high.number;
    });
    for (std::size_t i = 0; i < keyed.size(); ++i)
        children[i] = std::move(keyed[i].node);
    rebuildArray();
}

void BinsTreeEntry::touch(const Bin& target) {
    for (auto* node : pathTo(target))
        markChanged(*node);
}

BinsTreeEntry* BinsTreeEntry::entry(const Bin& target) {
    return findDepthFirst(*this, [&](const BinsTreeEntry& n) { return n.bin.get() == &target; });
}

BinsTreeEntry* BinsTreeEntry::entryByUuid(std::string_view wanted) {
    return findDepthFirst(*this, [&](BinsTreeEntry& n) { return n.nodeUuid() == wanted; });
}

BinsTreeEntry* BinsTreeEntry::entryById(std::string_view wanted) {
    return findDepthFirst(*this, [&](const BinsTreeEntry& n) { return n.id == wanted; });
}

TreeNode BinsTreeEntry::handleOf(const BinsTreeEntry* node) const {
    for (const auto& child : children) {
        if (child.get() == node)
            return child;
        if (auto hit = child->handleOf(node))
            return hit;
    }
    return nullptr;
}

std::vector<BinsTreeEntry*> BinsTreeEntry::flatten() {
    std::vector<BinsTreeEntry*> out;
    preOrder(*this, [&](BinsTreeEntry& n) { out.push_back(&n); });
    return out;
}

std::vector<std::string> BinsTreeEntry::allIds() const {
    std::vector<std::string> out;
    preOrder(*this, [&](const BinsTreeEntry& n) { out.push_back(n.id); });
    return out;
}

std::vector<std::string> BinsTreeEntry::allNames() const {
    std::vector<std::string> out;
    preOrder(*this, [&](const BinsTreeEntry& n) { out.push_back(n.name()); });
    return out;
}

void BinsTreeEntry::addChild(TreeNode entry, long index) {
    if (index >= 0 && index < static_cast<long>(children.size()))
        children.insert(children.begin() + index, std::move(entry));
    else
        children.push_back(std::move(entry));
    rebuildArray();
}

BinsTreeEntry& BinsTreeEntry::addBin(std::shared_ptr<Bin> newBin) {
    std::string leafId = newBin && newBin->table() ? newBin->table()->tablename : std::string();
    auto leaf = std::make_shared<BinsTreeEntry>(std::move(leafId), std::move(newBin), std::vector<TreeNode>{},
                                                sharedstuff);
    BinsTreeEntry& added = *leaf;
    addChild(std::move(leaf));
    return added;
}

bool BinsTreeEntry::removeChild(const BinsTreeEntry* entry, bool recursive) {
    auto it =
        std::find_if(children.begin(), children.end(), [&](const TreeNode& c) { return c.get() == entry; });
    bool found = it != children.end();
    if (found) {
        children.erase(it);
    } else if (recursive) {
        for (const auto& child : children) {
            if ((found = child->removeChild(entry, true)))
                break;
        }
    }
    if (found)
        rebuildArray();
    return found;
}

bool BinsTreeEntry::isChild(const BinsTreeEntry* node) const {
    return std::any_of(children.begin(), children.end(), [&](const TreeNode& c) { return c.get() == node; });
}

bool BinsTreeEntry::isDescendant(const BinsTreeEntry* node) const {
    return std::any_of(children.begin(), children.end(),
                       [&](const TreeNode& c) { return c.get() == node || c->isDescendant(node); });
}

BinsTreeEntry* BinsTreeEntry::parent(const BinsTreeEntry* node) {
    return findDepthFirst(*this, [&](const BinsTreeEntry& n) { return n.isChild(node); });
}

void BinsTreeEntry::moveItems(const std::vector<BinsTreeEntry*>& items, BinsTreeEntry* target, long index,
                              BinsHost* host) {
    if (!target)
        return;
    BinsTreeEntry* bins = host && host->binsTree() ? host->binsTree() : this;
    BinsTreeEntry* smartbins = host ? host->smartbinsTree() : nullptr;
    ParentIndex here(this);
    std::optional<ParentIndex> otherTree;
    if (bins != this)
        otherTree.emplace(bins);
    const ParentIndex& binsIndex = otherTree ? *otherTree : here;

    BinsTreeEntry* targetParent = here.parentOf(target);
    auto targetPath = binsIndex.pathTo(target);
    auto anyInDomain = [](const SmartTableLink& link, const std::vector<BinsTreeEntry*>& path) {
        return std::any_of(path.begin(), path.end(),
                           [&](const BinsTreeEntry* n) { return link.domainHolds(*n); });
    };

    for (BinsTreeEntry* item : items) {
        auto oldPath = binsIndex.pathTo(item);
        if (item == target || item->isDescendant(target) || (item->bin && item->bin->isLock()))
            continue;
        BinsTreeEntry* from = here.parentOf(item);
        if (!from)
            continue;
        if (targetParent && from == targetParent) {
            for (const auto& sibling : targetParent->children) {
                if (sibling.get() == item) {
                    --index;
                    break;
                }
                if (sibling.get() == target)
                    break;
            }
        }
        auto it = std::find_if(from->children.begin(), from->children.end(),
                               [&](const TreeNode& c) { return c.get() == item; });
        TreeNode handle = *it;
        from->removeChild(item, false);
        target->addChild(handle, index);
        here.setParent(item, target);
        markChanged(*target);
        markChanged(*item);
        ++index;

        if (!smartbins)
            continue;
        for (Bin* smart : smartbins->toarray) {
            SmartTableLink* link = smartLink(*smart);
            if (!link || !link->hasDomain() || link->domainHolds(*item))
                continue;
            if (anyInDomain(*link, oldPath) != anyInDomain(*link, targetPath))
                item->reevaluateSmartbins(*link);
        }
    }
    sort(lastordered, lastascending);
    rebuildArray();

    bool plainBins = std::any_of(toarray.begin(), toarray.end(), [](const Bin* b) { return !smartLink(*b); });
    if (plainBins || !smartbins)
        return;
    for (Bin* moved : toarray) {
        for (Bin* tester : smartbins->toarray) {
            SmartTableLink* link = smartLink(*tester);
            if (!link)
                continue;
            for (const auto& row : moved->table()->data)
                link->reEvaluate(row);
            if (tester->selected() && tester->box())
                tester->box()->refresh();
        }
    }
    if (host)
        host->rebuildTagTrees();
}

void BinsTreeEntry::reevaluateSmartbins(SmartTableLink& table) {
    if (bin) {
        table.reEvaluateAll(*bin);
        return;
    }
    for (const auto& child : children) {
        if (!table.domainHolds(*child))
            child->reevaluateSmartbins(table);
    }
}

void BinsTreeEntry::collectBins(std::vector<Bin*>& out) const {
    if (bin)
        out.push_back(bin.get());
    for (const auto& child : children)
        child->collectBins(out);
}

void BinsTreeEntry::rebuildArray() {
    // The whole subtree is walked, so that no stale child array can leak into this one.
    toarray.clear();
    collectBins(toarray);
    for (const auto& child : children) {
        if (!child->children.empty())
            child->rebuildArray();
        else
            child->toarray.assign(child->bin ? 1 : 0, child->bin.get());
    }
}

bool BinsTreeEntry::pathTo(const BinsTreeEntry* target, const Bin* wanted,
                           std::vector<BinsTreeEntry*>& path) {
    path.push_back(this);
    if ((target && this == target) || (wanted && bin.get() == wanted))
        return true;
    for (const auto& child : children) {
        if (child->pathTo(target, wanted, path))
            return true;
    }
    path.pop_back();
    return false;
}

std::vector<BinsTreeEntry*> BinsTreeEntry::pathTo(const Bin& target) {
    std::vector<BinsTreeEntry*> path;
    pathTo(nullptr, &target, path);
    return path;
}

std::vector<BinsTreeEntry*> BinsTreeEntry::pathTo(const BinsTreeEntry* target) {
    std::vector<BinsTreeEntry*> path;
    if (target)
        pathTo(target, nullptr, path);
    return path;
}

void BinsTreeEntry::copyGroupStructure(BinsHost* host, BinsTreeEntry* into) {
    copyStructure(host, into, false);
}

void BinsTreeEntry::copySmartGroupStructure(BinsHost* host, BinsTreeEntry* into) {
    copyStructure(host, into, true);
}

void BinsTreeEntry::copyStructure(BinsHost* host, BinsTreeEntry* into, bool smart) {
    if (!host || !host->binsTree() || !host->smartbinsTree())
        return;
    BinsTreeEntry* tree = smart ? host->smartbinsTree() : host->binsTree();
    BinsTreeEntry* place = into ? into : tree->parent(this);
    if (!place)
        place = tree;
    std::string newId = smart ? nextSmartbinName(*host->binsTree(), *host->smartbinsTree())
                              : nextGroupName(*host->binsTree(), *host->smartbinsTree());
    auto group = std::make_shared<BinsTreeEntry>(std::move(newId), nullptr, std::vector<TreeNode>{}, host);
    group->setName(name());
    place->addChild(group);
    // The list is taken first: the copy may land among these very children.
    auto sources = children;
    for (const auto& child : sources) {
        if (!child->bin)
            child->copyStructure(host, group.get(), smart);
    }
}

} // namespace lumbra::project
