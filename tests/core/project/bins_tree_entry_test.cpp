#include "core/project/project_test_support.h"
#include "project/name_makers.h"
#include "project/tag_trees.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
namespace base = lumbra::base;

namespace {

std::vector<std::string> childNames(const BinsTreeEntry& node) {
    std::vector<std::string> out;
    for (const auto& c : node.children)
        out.push_back(c->name());
    return out;
}

std::vector<std::string> binNames(const std::vector<Bin*>& bins) {
    std::vector<std::string> out;
    for (const Bin* b : bins)
        out.push_back(b->displayName());
    return out;
}

using Names = std::vector<std::string>;

} // namespace

TEST(BinsTreeEntry, NameFollowsBinThenGroupNameThenId) {
    auto leaf = makeLeaf("bin_01");
    EXPECT_EQ(leaf->name(), "bin_01");
    leaf->bin->setDisplayName("Interviews");
    EXPECT_EQ(leaf->name(), "Interviews");
    auto group = makeGroup("Group_01");
    EXPECT_EQ(group->name(), "Group_01");
    group->setName("Day 1");
    EXPECT_EQ(group->name(), "Day 1");
    EXPECT_EQ(group->id, "Group_01");
}

TEST(BinsTreeEntry, LeafAndBinShareOneIdentity) {
    auto leaf = makeLeaf("b");
    EXPECT_EQ(leaf->nodeUuid(), leaf->bin->uuid());
    leaf->bin->hasChanged = false;
    leaf->touch(*leaf->bin);
    EXPECT_TRUE(leaf->bin->hasChanged);
}

TEST(BinsTreeEntry, SortPutsGroupsFirstInBothSenses) {
    struct Case {
        std::string name;
        BinsTreeOrderingMode mode;
        bool ascending;
        Names expected;
    };
    const std::vector<Case> cases = {
        {"alphabetical, smallest first",
         BinsTreeOrderingMode::alphabetical,
         false,
         {"Alpha", "Same", "Same", "Zulu"}},
        {"alphabetical, largest first",
         BinsTreeOrderingMode::alphabetical,
         true,
         {"Same", "Alpha", "Zulu", "Same"}},
        {"by tag, lowest first", BinsTreeOrderingMode::bytag, false, {"Alpha", "Same", "Same", "Zulu"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto root = makeGroup("root");
        auto zulu = makeLeaf("Zulu");
        zulu->tag = base::Tag::blue;
        auto same = makeLeaf("Same");
        same->tag = base::Tag::red;
        auto groupSame = makeGroup("Same");
        groupSame->tag = base::Tag::purple;
        auto alpha = makeGroup("Alpha");
        root->children = {zulu, same, groupSame, alpha};
        root->sort(c.mode, c.ascending);
        EXPECT_EQ(childNames(*root), c.expected);
        // The group named "Same" stands before the bin named "Same" in every order.
        auto pos = [&](const BinsTreeEntry* n) {
            return std::find_if(root->children.begin(), root->children.end(),
                                [&](const TreeNode& x) { return x.get() == n; }) -
                   root->children.begin();
        };
        EXPECT_LT(pos(groupSame.get()), pos(same.get()));
    }
}

TEST(BinsTreeEntry, SortKeepsEqualNodesInOrderAndRecurses) {
    auto inner = makeGroup("g", {makeLeaf("b"), makeLeaf("a")});
    auto first = makeLeaf("x");
    auto second = makeLeaf("x");
    auto root = makeGroup("root", {first, inner, second});
    root->sort(BinsTreeOrderingMode::alphabetical, false);
    EXPECT_EQ(root->children[1], first);
    EXPECT_EQ(root->children[2], second);
    EXPECT_EQ(childNames(*inner), (Names{"a", "b"}));
    EXPECT_EQ(binNames(root->toarray), (Names{"a", "b", "x", "x"}));
}

TEST(BinsTreeEntry, SortByDates) {
    auto old = makeLeaf("old");
    auto recent = makeLeaf("recent");
    old->bin->modified = 100;
    recent->bin->modified = 200;
    old->bin->created = 300;
    recent->bin->created = 50;
    auto root = makeGroup("root", {recent, old});
    root->sort(BinsTreeOrderingMode::lastmodified, false);
    EXPECT_EQ(childNames(*root), (Names{"old", "recent"}));
    root->sort(BinsTreeOrderingMode::lastcreated, false);
    EXPECT_EQ(childNames(*root), (Names{"recent", "old"}));
    EXPECT_TRUE(old->isAfter(*recent, BinsTreeOrderingMode::lastcreated));
}

TEST(BinsTreeEntry, ChildrenArraysAndSearches) {
    auto b1 = makeLeaf("b1");
    auto b2 = makeLeaf("b2");
    auto b3 = makeLeaf("b3");
    auto sub = makeGroup("sub", {b2});
    auto group = makeGroup("group", {sub, b3});
    auto root = makeGroup("root", {b1, group});
    EXPECT_EQ(binNames(root->toarray), (Names{"b1", "b2", "b3"}));
    EXPECT_EQ(root->allIds(), (Names{"root", "b1", "group", "sub", "b2", "b3"}));
    EXPECT_EQ(root->entry(*b2->bin), b2.get());
    EXPECT_EQ(root->entryById("sub"), sub.get());
    EXPECT_EQ(root->entryByUuid(b3->nodeUuid()), b3.get());
    EXPECT_EQ(root->parent(b2.get()), sub.get());
    EXPECT_TRUE(root->isDescendant(b2.get()));
    EXPECT_FALSE(root->isChild(b2.get()));
    EXPECT_EQ(root->pathTo(*b2->bin),
              (std::vector<BinsTreeEntry*>{root.get(), group.get(), sub.get(), b2.get()}));

    auto other = makeGroup("smartbins", {makeLeaf("s")});
    EXPECT_TRUE(root->pathTo(other->children[0].get()).empty());

    group->addChild(makeLeaf("b4"), 0);
    group->addChild(makeLeaf("b5"), 99);
    EXPECT_EQ(childNames(*group), (Names{"b4", "sub", "b3", "b5"}));
    EXPECT_TRUE(root->removeChild(b2.get(), true));
    EXPECT_FALSE(root->removeChild(b2.get(), true));
    root->rebuildArray();
    EXPECT_EQ(binNames(root->toarray), (Names{"b1", "b4", "b3", "b5"}));
}

TEST(BinsTreeEntry, MoveRefusesOwnSubtreeItselfAndLockedBins) {
    auto child = makeGroup("child");
    auto group = makeGroup("group", {child});
    auto locked = makeLeaf("locked");
    locked->bin->setLock(true);
    auto free = makeLeaf("free");
    auto target = makeGroup("target");
    auto root = makeGroup("root", {group, target, locked, free});

    root->moveItems({group.get()}, child.get(), 0, nullptr);
    root->moveItems({group.get()}, group.get(), 0, nullptr);
    EXPECT_TRUE(root->isChild(group.get()));
    EXPECT_TRUE(group->isChild(child.get()));

    free->bin->hasChanged = false;
    target->hasChanged = false;
    root->moveItems({locked.get(), free.get()}, target.get(), 0, nullptr);
    EXPECT_TRUE(root->isChild(locked.get()));
    EXPECT_TRUE(target->isChild(free.get()));
    EXPECT_TRUE(free->bin->hasChanged);
    EXPECT_TRUE(target->hasChanged);
    EXPECT_EQ(binNames(root->toarray), (Names{"free", "locked"}));
}

TEST(BinsTreeEntry, MoveInsertsFromIndexAndSortsAgain) {
    auto a = makeLeaf("a");
    auto b = makeLeaf("b");
    auto target = makeGroup("target", {makeLeaf("x"), makeLeaf("y")});
    auto inner = makeGroup("inner", {a, b});
    auto root = makeGroup("root", {inner, target});
    root->moveItems({a.get(), b.get()}, target.get(), 1, nullptr);
    // The root's last sense and mode sort the children again after the move.
    EXPECT_EQ(childNames(*target), (Names{"a", "b", "x", "y"}));
    EXPECT_TRUE(inner->children.empty());
    EXPECT_EQ(binNames(root->toarray), (Names{"a", "b", "x", "y"}));
}

TEST(BinsTreeEntry, MoveGroupIntoAnotherTakesSubtree) {
    auto leaf = makeLeaf("deep");
    auto moving = makeGroup("moving", {leaf});
    auto target = makeGroup("target");
    RecordingHost host;
    host.bins->children = {moving, target};
    host.bins->rebuildArray();
    host.bins->moveItems({moving.get()}, target.get(), -1, &host);
    EXPECT_EQ(host.bins->pathTo(*leaf->bin),
              (std::vector<BinsTreeEntry*>{host.bins.get(), target.get(), moving.get(), leaf.get()}));
    // Plain bins moved: no tag tree rebuild is needed.
    EXPECT_EQ(host.tagTreeRebuilds, 0);
}

TEST(BinsTreeEntry, ShallowCopySharesChildrenAndBin) {
    auto leaf = makeLeaf("b");
    leaf->tag = base::Tag::pink;
    auto copy = BinsTreeEntry::shallowCopy(*leaf);
    EXPECT_EQ(copy->bin, leaf->bin);
    EXPECT_EQ(leaf->bin->tag, base::Tag::pink);
    EXPECT_EQ(copy->sharedstuff, nullptr);
}

TEST(BinsTreeEntry, CopyGroupStructureLeavesBinsOut) {
    RecordingHost host;
    auto sub = makeGroup("Group_01", {makeLeaf("b1")});
    sub->setName("Sub");
    auto group = makeGroup("Group_02", {sub, makeLeaf("b2")});
    group->setName("Day");
    host.bins->children = {group};
    group->copyGroupStructure(&host, nullptr);
    ASSERT_EQ(host.bins->children.size(), 2u);
    auto& copy = *host.bins->children[1];
    EXPECT_EQ(copy.id, "Group_03");
    EXPECT_EQ(copy.name(), "Day");
    ASSERT_EQ(copy.children.size(), 1u);
    EXPECT_EQ(copy.children[0]->name(), "Sub");
    EXPECT_EQ(copy.children[0]->id, "Group_04");
    EXPECT_TRUE(copy.toarray.empty());
}

TEST(NameMakers, NumberedNamesAndUniqueNames) {
    auto bins = makeGroup("root", {makeLeaf("bin_01"), makeGroup("Group_01", {makeLeaf("bin_03")})});
    auto smart = makeGroup("smartbins", {makeLeaf("bin_02"), makeLeaf("smartbin_01")});
    bins->children[0]->bin->setDisplayName("Rushes");
    struct Case {
        std::string name;
        std::string actual;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"bin names skip ids of both trees", nextBinName(*bins, *smart), "bin_04"},
        {"group names", nextGroupName(*bins, *smart), "Group_02"},
        {"smart bin names", nextSmartbinName(*bins, *smart), "smartbin_02"},
        {"free id stays", uniqueId("Rushes", *bins, *smart), "Rushes"},
        {"taken id counts from 2", uniqueId("bin_01", *bins, *smart), "bin_01_02"},
        {"taken display name", uniqueName("Rushes", *bins, *smart), "Rushes_02"},
        {"id is no display name once renamed", uniqueName("bin_01", *bins, *smart), "bin_01"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.actual, c.expected);
    }
    NameIndex index(*bins, *smart, NameIndex::Key::id);
    EXPECT_EQ(index.next("bin_%02d"), "bin_04");
    EXPECT_EQ(index.next("bin_%02d"), "bin_05");
    EXPECT_EQ(index.unique("bin_04"), "bin_04_02");
}

TEST(TagTrees, GroupCarriesSubtreeAndOtherTagsStandAlone) {
    auto blue = makeLeaf("blue bin");
    blue->tag = base::Tag::blue;
    auto greenInside = makeLeaf("green inside");
    greenInside->tag = base::Tag::green;
    auto green = makeGroup("green group", {blue, greenInside});
    green->tag = base::Tag::green;
    auto plain = makeLeaf("plain");
    auto bins = makeGroup("root", {green, plain});
    auto smartLeaf = makeLeaf("smart");
    smartLeaf->tag = base::Tag::red;
    auto smart = makeGroup("smartbins", {smartLeaf});

    auto trees = buildTagTrees(*bins, *smart);
    auto& without = *trees.withoutSmartbins;
    EXPECT_EQ(without.id, "Color Tags");
    EXPECT_EQ(without.allIds().size(), 8u + 4u + 1u);
    auto groupOf = [](BinsTreeEntry& tree, base::Tag t) -> BinsTreeEntry& {
        return *tree.children[static_cast<int>(t)];
    };
    EXPECT_EQ(groupOf(without, base::Tag::green).children, (std::vector<TreeNode>{green}));
    EXPECT_EQ(groupOf(without, base::Tag::blue).children, (std::vector<TreeNode>{blue}));
    EXPECT_EQ(groupOf(without, base::Tag::none).children, (std::vector<TreeNode>{plain}));
    EXPECT_EQ(binNames(groupOf(without, base::Tag::green).toarray), (Names{"blue bin", "green inside"}));
    // The source node keeps its own children.
    EXPECT_EQ(green->children.size(), 2u);

    auto& with = *trees.withSmartbins;
    auto& redSmart = *groupOf(with, base::Tag::red).children.front();
    EXPECT_EQ(redSmart.id, "Smart Bins");
    EXPECT_EQ(redSmart.children, (std::vector<TreeNode>{smartLeaf}));
    EXPECT_EQ(binNames(with.toarray).size(), 5u);
    EXPECT_TRUE(groupOf(without, base::Tag::red).children.empty());
}
