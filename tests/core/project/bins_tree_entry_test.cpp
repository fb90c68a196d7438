#include "core/project/project_test_support.h"
#include "project/name_makers.h"
#include "project/tag_trees.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
namespace base = lumbra::base;
using Path = std::vector<BinsTreeEntry*>;

TEST(BinsTreeEntry, NameAndIdentity) {
    auto leaf = makeLeaf("bin_01");
    leaf->bin->setDisplayName("Interviews");
    EXPECT_EQ(leaf->name(), "Interviews");
    EXPECT_EQ(leaf->nodeUuid(), leaf->bin->uuid());
    leaf->tag = base::Tag::pink;
    auto copy = BinsTreeEntry::shallowCopy(*leaf);
    EXPECT_EQ(std::tie(copy->bin, leaf->bin->tag), std::make_tuple(leaf->bin, base::Tag::pink));
    EXPECT_EQ(copy->sharedstuff, nullptr);
}

// The group named "Same" stands before the bin named "Same" in every order.
TEST(BinsTreeEntry, SortPutsGroupsFirstInBothSenses) {
    const std::vector<std::tuple<BinsTreeOrderingMode, bool, Names>> cases = {
        {BinsTreeOrderingMode::alphabetical, false, {"Alpha", "Same", "Same", "Zulu"}},
        {BinsTreeOrderingMode::alphabetical, true, {"Same", "Alpha", "Zulu", "Same"}},
        {BinsTreeOrderingMode::bytag, false, {"Alpha", "Same", "Same", "Zulu"}},
    };
    for (const auto& [mode, ascending, expected] : cases) {
        SCOPED_TRACE(static_cast<int>(mode) * 2 + ascending);
        auto zulu = makeLeaf("Zulu"), same = makeLeaf("Same"), groupSame = makeGroup("Same");
        zulu->tag = base::Tag::blue;
        same->tag = base::Tag::red;
        groupSame->tag = base::Tag::purple;
        auto root = makeGroup("root", {zulu, same, groupSame, makeGroup("Alpha")});
        root->sort(mode, ascending);
        EXPECT_EQ(childNames(*root), expected);
        EXPECT_EQ(root->children[expected[0] == "Same" ? 0 : 1], groupSame);
    }
}

TEST(BinsTreeEntry, SortKeepsEqualNodesInOrderRecursesAndReadsDates) {
    auto inner = makeGroup("g", {makeLeaf("b"), makeLeaf("a")});
    auto first = makeLeaf("x"), second = makeLeaf("x");
    auto root = makeGroup("root", {first, inner, second});
    root->sort(BinsTreeOrderingMode::alphabetical, false);
    EXPECT_EQ(root->children, (std::vector<TreeNode>{inner, first, second}));
    EXPECT_EQ(childNames(*inner), (Names{"a", "b"}));
    EXPECT_EQ(namesOf(root->toarray), (Names{"a", "b", "x", "x"}));

    first->bin->modified = 200;
    second->bin->modified = 100;
    first->bin->created = 50;
    second->bin->created = 300;
    auto dated = makeGroup("root", {first, second});
    dated->sort(BinsTreeOrderingMode::lastmodified, false);
    EXPECT_EQ(dated->children, (std::vector<TreeNode>{second, first}));
    dated->sort(BinsTreeOrderingMode::lastcreated, false);
    EXPECT_EQ(dated->children, (std::vector<TreeNode>{first, second}));
}

TEST(BinsTreeEntry, ChildrenArraysAndSearches) {
    auto b1 = makeLeaf("b1"), b2 = makeLeaf("b2"), b3 = makeLeaf("b3");
    auto sub = makeGroup("sub", {b2});
    auto group = makeGroup("group", {sub, b3});
    auto root = makeGroup("root", {b1, group});
    EXPECT_EQ(namesOf(root->toarray), (Names{"b1", "b2", "b3"}));
    EXPECT_EQ(root->allIds(), (Names{"root", "b1", "group", "sub", "b2", "b3"}));
    EXPECT_EQ(root->entry(*b2->bin), b2.get());
    EXPECT_EQ(root->entryById("sub"), sub.get());
    EXPECT_EQ(root->entryByUuid(b3->nodeUuid()), b3.get());
    EXPECT_EQ(root->parent(b2.get()), sub.get());
    EXPECT_TRUE(root->isDescendant(b2.get()) && !root->isChild(b2.get()));
    EXPECT_EQ(root->pathTo(*b2->bin), (Path{root.get(), group.get(), sub.get(), b2.get()}));
    auto other = makeGroup("smartbins", {makeLeaf("s")});
    EXPECT_TRUE(root->pathTo(other->children[0].get()).empty());

    group->addChild(makeLeaf("b4"), 0);
    group->addChild(makeLeaf("b5"), 99);
    EXPECT_EQ(childNames(*group), (Names{"b4", "sub", "b3", "b5"}));
    EXPECT_TRUE(root->removeChild(b2.get(), true));
    EXPECT_FALSE(root->removeChild(b2.get(), true));
    root->rebuildArray();
    EXPECT_EQ(namesOf(root->toarray), (Names{"b1", "b4", "b3", "b5"}));
}

TEST(BinsTreeEntry, MovesRefuseTheirOwnSubtreeAndLockedBinsAndSortAgain) {
    auto child = makeGroup("child");
    auto deep = makeLeaf("deep");
    auto group = makeGroup("group", {child, deep});
    auto locked = makeLeaf("locked"), free = makeLeaf("free"), a = makeLeaf("a");
    locked->bin->setLock(true);
    auto target = makeGroup("target", {makeLeaf("x"), makeLeaf("y")});
    RecordingHost host;
    host.bins->children = {group, target, locked, free, a};
    host.bins->rebuildArray();
    BinsTreeEntry& root = *host.bins;

    root.moveItems({group.get()}, child.get(), 0, &host);
    root.moveItems({group.get()}, group.get(), 0, &host);
    EXPECT_TRUE(root.isChild(group.get()) && group->isChild(child.get()));

    free->bin->hasChanged = false;
    target->hasChanged = false;
    root.moveItems({locked.get(), free.get(), a.get()}, target.get(), 1, &host);
    EXPECT_TRUE(root.isChild(locked.get()));
    EXPECT_TRUE(free->bin->hasChanged && target->hasChanged);
    // The root's last sense and mode sort the children again after the move.
    EXPECT_EQ(childNames(*target), (Names{"a", "free", "x", "y"}));

    root.moveItems({group.get()}, target.get(), -1, &host);
    EXPECT_EQ(root.pathTo(*deep->bin), (Path{&root, target.get(), group.get(), deep.get()}));
    EXPECT_EQ(namesOf(root.toarray), (Names{"deep", "a", "free", "x", "y", "locked"}));
    // Plain bins moved: no tag tree rebuild is needed.
    EXPECT_EQ(host.tagTreeRebuilds, 0);
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
    EXPECT_EQ(copy.allIds(), (Names{"Group_03", "Group_04"}));
    EXPECT_EQ(copy.allNames(), (Names{"Day", "Sub"}));
    EXPECT_TRUE(copy.toarray.empty());
}

TEST(NameMakers, NumberedNamesAndUniqueNames) {
    auto bins = makeGroup("root", {makeLeaf("bin_01"), makeGroup("Group_01", {makeLeaf("bin_03")})});
    auto smart = makeGroup("smartbins", {makeLeaf("bin_02"), makeLeaf("smartbin_01")});
    bins->children[0]->bin->setDisplayName("Rushes");
    NameIndex index(*bins, *smart, NameIndex::Key::id);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {nextBinName(*bins, *smart), "bin_04"}, // skips the ids of both trees
        {nextGroupName(*bins, *smart), "Group_02"},
        {nextSmartbinName(*bins, *smart), "smartbin_02"},
        {uniqueId("Rushes", *bins, *smart), "Rushes"},
        {uniqueId("bin_01", *bins, *smart), "bin_01_02"}, // a taken id counts from 2
        {uniqueName("Rushes", *bins, *smart), "Rushes_02"},
        {uniqueName("bin_01", *bins, *smart), "bin_01"}, // an id is no display name once renamed
        {index.next("bin_%02d"), "bin_04"},
        {index.next("bin_%02d"), "bin_05"},
        {index.unique("bin_04"), "bin_04_02"},
    };
    for (const auto& [actual, expected] : cases)
        EXPECT_EQ(actual, expected);
}

TEST(TagTrees, GroupCarriesSubtreeAndOtherTagsStandAlone) {
    auto blue = makeLeaf("blue bin"), greenInside = makeLeaf("green inside"), plain = makeLeaf("plain");
    blue->tag = base::Tag::blue;
    greenInside->tag = base::Tag::green;
    auto green = makeGroup("green group", {blue, greenInside});
    green->tag = base::Tag::green;
    auto bins = makeGroup("root", {green, plain});
    auto smartLeaf = makeLeaf("smart");
    smartLeaf->tag = base::Tag::red;
    auto smart = makeGroup("smartbins", {smartLeaf});

    auto trees = buildTagTrees(*bins, *smart);
    auto& without = *trees.withoutSmartbins;
    auto tagged = [](BinsTreeEntry& tree, base::Tag t) -> BinsTreeEntry& {
        return *tree.children[static_cast<int>(t)];
    };
    EXPECT_EQ(without.id, "Color Tags");
    EXPECT_EQ(without.allIds().size(), 8u + 4u + 1u);
    EXPECT_EQ(tagged(without, base::Tag::green).children, (std::vector<TreeNode>{green}));
    EXPECT_EQ(tagged(without, base::Tag::blue).children, (std::vector<TreeNode>{blue}));
    EXPECT_EQ(tagged(without, base::Tag::none).children, (std::vector<TreeNode>{plain}));
    EXPECT_TRUE(tagged(without, base::Tag::red).children.empty());
    EXPECT_EQ(namesOf(tagged(without, base::Tag::green).toarray), (Names{"blue bin", "green inside"}));
    // The source node keeps its own children.
    EXPECT_EQ(green->children.size(), 2u);

    auto& redSmart = *tagged(*trees.withSmartbins, base::Tag::red).children.front();
    EXPECT_EQ(redSmart.id, "Smart Bins");
    EXPECT_EQ(redSmart.children, (std::vector<TreeNode>{smartLeaf}));
    EXPECT_EQ(trees.withSmartbins->toarray.size(), 5u);
}
