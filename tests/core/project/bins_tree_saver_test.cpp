#include "base/console.h"
#include "core/project/project_test_support.h"
#include "project/bins_tree_loader.h"
#include "project/bins_tree_saver.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
namespace base = lumbra::base;
using lumbra::base::Notifications;
using lumbra::base::NotificationType;
using lumbra::base::PrintCapture;

namespace {

std::string folderName(BinsTreeEntry& node) {
    return node.name() + " - " + node.nodeUuid();
}

// What the disk must hold for a tree: every node's folder, its details, and a bin's two files.
std::set<std::string> expectedFiles(BinsTreeEntry& root) {
    std::set<std::string> out{"lumbra_details"};
    auto walk = [&](auto& self, BinsTreeEntry& node, const std::string& prefix) -> void {
        for (const auto& child : node.children) {
            std::string folder = prefix + folderName(*child);
            out.insert(folder + "/");
            out.insert(folder + "/lumbra_details");
            if (child->bin) {
                out.insert(folder + "/" + child->name() + ".ale");
                out.insert(folder + "/" + child->name() + ".bin");
            }
            self(self, *child, folder + "/");
        }
    };
    walk(walk, root, "");
    return out;
}

struct Project {
    Project() {
        day1 = makeGroup("Group_01", {makeLeaf("bin_01"), makeLeaf("bin_02")});
        day1->setName("Day 1");
        day2 = makeGroup("Group_02", {makeLeaf("bin_03")});
        day2->setName("Day 2");
        loose = makeLeaf("bin_04");
        root = makeGroup("root", {day1, day2, loose});
    }
    TreeNode root;
    TreeNode day1;
    TreeNode day2;
    TreeNode loose;
};

} // namespace

TEST(BinsTreeSaver, FoldersAreNamedAfterNodesAndASecondSaveWritesNothing) {
    TempFolder dir;
    Project p;
    BinsTreeSaver saver(dir.str(), *p.root);
    Notifications notes;
    ASSERT_TRUE(saver.saveItem(*p.root, &notes));
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(listTree(dir.path), expectedFiles(*p.root));
    EXPECT_EQ(*saver.folderOf(*p.day1->children[0]),
              (dir.path / folderName(*p.day1) / folderName(*p.day1->children[0])).string());
    for (auto* node : p.root->flatten())
        EXPECT_FALSE(node->identity().hasChanged) << node->name();

    auto before = fileTimes(dir.path);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));
    EXPECT_FALSE(saver.wroteSomething());
    EXPECT_EQ(fileTimes(dir.path), before);
    EXPECT_EQ(listTree(dir.path), expectedFiles(*p.root));
}

TEST(BinsTreeSaver, GroupRenameIsOneMoveAndRewritesNoChild) {
    TempFolder dir;
    auto group = makeGroup("Group_01");
    for (int i = 0; i < 10; ++i)
        group->addChild(makeLeaf("bin_" + std::to_string(i)));
    auto root = makeGroup("root", {group});
    BinsTreeSaver saver(dir.str(), *root);
    ASSERT_TRUE(saver.saveItem(*root, nullptr));
    std::string oldFolder = *saver.folderOf(*group);
    auto timesOf = [&](const std::string& folder) {
        std::vector<lumbra::project::testing::fs::file_time_type> out;
        for (const auto& [path, time] : fileTimes(folder))
            out.push_back(time);
        return out;
    };
    auto before = timesOf(oldFolder);

    group->setName("Renamed");
    PrintCapture capture;
    ASSERT_TRUE(saver.saveItem(*root, nullptr));
    std::string newFolder = *saver.folderOf(*group);
    long moves = std::count_if(capture.lines().begin(), capture.lines().end(),
                               [](const std::string& l) { return l.rfind("moving ", 0) == 0; });
    EXPECT_EQ(moves, 1);
    EXPECT_TRUE(capture.contains("moving " + oldFolder + " to " + newFolder));
    EXPECT_FALSE(fs::exists(oldFolder));
    EXPECT_EQ(timesOf(newFolder), before);
    EXPECT_EQ(listTree(dir.path), expectedFiles(*root));
}

TEST(BinsTreeSaver, UserSessionLeavesDiskMatchingTheTree) {
    TempFolder dir;
    Project p;
    BinsTreeSaver saver(dir.str(), *p.root);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));

    // Rename a bin twice between saves, move a group into another, delete a group with bins.
    Bin& renamed = *p.day1->children[0]->bin;
    renamed.setDisplayName("Interviews");
    p.root->touch(renamed);
    renamed.setDisplayName("Interviews final");
    p.root->touch(renamed);
    p.root->moveItems({p.day2.get()}, p.day1.get(), -1, nullptr);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));

    TreeNode removed = p.day2;
    ASSERT_TRUE(p.root->removeChild(removed.get(), true));
    Notifications notes;
    ASSERT_TRUE(saver.removeEntries({removed}, &notes));
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(listTree(dir.path), expectedFiles(*p.root));

    RecordingHost host;
    auto loaded = BinsTreeLoader(dir.str()).load(&host, std::nullopt, &notes);
    EXPECT_TRUE(notes.empty());
    loaded->sort(BinsTreeOrderingMode::alphabetical, false);
    p.root->sort(BinsTreeOrderingMode::alphabetical, false);
    EXPECT_EQ(loaded->allNames(), p.root->allNames());
    std::vector<std::string> ids;
    for (Bin* bin : loaded->toarray)
        ids.push_back(bin->table()->tablename);
    // By name as people read it: "bin_02" before "Interviews final" (bin_01), case aside.
    EXPECT_EQ(ids, (std::vector<std::string>{"bin_02", "bin_01", "bin_04"}));
    EXPECT_EQ(loaded->nodeUuid(), p.root->nodeUuid());
    auto* reloaded = loaded->entryByUuid(renamed.uuid());
    ASSERT_NE(reloaded, nullptr);
    ASSERT_NE(reloaded->bin, nullptr);
    EXPECT_EQ(reloaded->bin->displayName(), "Interviews final");
    EXPECT_EQ(reloaded->bin->table()->data.size(), 2u);
    for (auto* node : loaded->flatten())
        EXPECT_FALSE(node->identity().hasChanged) << node->name();
}

TEST(BinsTreeSaver, EqualNamesLieInFoldersOfTheirOwn) {
    TempFolder dir;
    auto first = makeGroup("Group_01", {makeLeaf("bin_01")});
    auto second = makeGroup("Group_02", {makeLeaf("bin_01")});
    first->setName("Same");
    second->setName("Same");
    auto root = makeGroup("root", {first, second});
    BinsTreeSaver saver(dir.str(), *root);
    ASSERT_TRUE(saver.saveItem(*root, nullptr));
    EXPECT_EQ(listTree(dir.path), expectedFiles(*root));
    auto loaded = BinsTreeLoader(dir.str()).load(nullptr, std::nullopt, nullptr);
    EXPECT_EQ(loaded->allNames(), (std::vector<std::string>{"root", "Same", "bin_01", "Same", "bin_01"}));
}

TEST(BinsTreeSaver, NodeOutsideTheTreeIsReported) {
    TempFolder dir;
    Project p;
    auto stranger = makeLeaf("smart");
    BinsTreeSaver saver(dir.str(), *p.root);
    Notifications notes;
    PrintCapture capture;
    EXPECT_FALSE(saver.saveItem(*stranger, &notes));
    EXPECT_FALSE(saver.folderOf(*stranger).has_value());
    EXPECT_TRUE(capture.contains("ERROR: cannot save item that is outside this tree"));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0],
              lumbra::base::NotificationData(
                  "Unknown item", "Error: cannot save entry smart because it is outside of this tree",
                  NotificationType::KO));
}

TEST(BinsTreeSaver, SaveAllCopiesWithoutClearingChangedMarks) {
    TempFolder dir;
    Project p;
    BinsTreeSaver saver((dir.path / "project").string(), *p.root);
    ASSERT_TRUE(saver.saveAll((dir.path / "copy").string(), *p.root, nullptr));
    for (auto* node : p.root->flatten())
        EXPECT_TRUE(node->identity().hasChanged) << node->name();
    EXPECT_FALSE(fs::exists(dir.path / "project"));
    EXPECT_EQ(listTree(dir.path / "copy"), expectedFiles(*p.root));
}

TEST(BinsTreeSaver, AFailedWriteLeavesThatBinAndWritesTheOthers) {
    TempFolder dir;
    Project p;
    BinsTreeSaver saver(dir.str(), *p.root);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));
    Bin& bin = *p.day1->children[0]->bin;
    std::string alePath = *saver.folderOf(*p.day1->children[0]) + "/bin_01.ale";
    std::string before = readFile(alePath);

    ASSERT_TRUE(bin.table()->data[0]->setData({{"Name", "changed"}}));
    p.root->touch(bin);
    p.root->touch(*p.loose->bin);
    lumbra::base::setWriteFailureHook([&](const std::string& path) { return path == alePath; });
    Notifications notes;
    bool saved = saver.saveItem(*p.root, &notes);
    EXPECT_EQ(saver.unwritten(), (std::vector<std::string>{p.day1->children[0]->name()}));
    lumbra::base::setWriteFailureHook({});
    EXPECT_FALSE(saved);
    EXPECT_EQ(readFile(alePath), before);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "Error saving");
    EXPECT_EQ(notes[0].type, NotificationType::KO);
    // The failed bin is tried again next time; the walk went on to the others.
    EXPECT_TRUE(bin.hasChanged);
    EXPECT_FALSE(p.loose->bin->hasChanged);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));
    EXPECT_NE(readFile(alePath), before);
    EXPECT_EQ(listTree(dir.path), expectedFiles(*p.root));
}

TEST(BinsTreeSaver, ReadOnlyFolderReportsTheMoveAndKeepsTheOldFolder) {
    TempFolder dir;
    Project p;
    BinsTreeSaver saver(dir.str(), *p.root);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));
    std::string oldFolder = *saver.folderOf(*p.day1);
    auto listing = listTree(dir.path);
    p.day1->setName("Day one");
    p.day1->hasChanged = true;
    fs::permissions(dir.path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    Notifications notes;
    bool saved;
    {
        Unprivileged asUser;
        saved = saver.saveItem(*p.root, &notes);
    }
    EXPECT_FALSE(saved);
    ASSERT_FALSE(notes.empty());
    EXPECT_EQ(notes.back().title, "Moving error");
    EXPECT_EQ(notes.back().body,
              "Error moving folder for Day one from " + oldFolder + " to " + *saver.folderOf(*p.day1));
    EXPECT_EQ(listTree(dir.path), listing);
    EXPECT_TRUE(p.day1->hasChanged);
}

TEST(BinsTreeLoader, FolderNamesAndOpenBins) {
    TempFolder dir;
    writeFile(dir.path / "Plain group" / "Inner - not a uuid" / "clips.ale", aleText({"a"}));
    writeFile(dir.path / "Plain group" / "Inner - not a uuid" / "clips.bin",
              "tableid\tbin_07\nlayout\tDefault\tName\ndisplayname\tclips\nselected\n");
    RecordingHost host;
    Notifications notes;
    auto root = BinsTreeLoader(dir.str()).load(&host, std::nullopt, &notes);
    ASSERT_EQ(root->children.size(), 1u);
    auto& group = *root->children[0];
    EXPECT_EQ(group.name(), "Plain group");
    EXPECT_EQ(group.bin, nullptr);
    ASSERT_EQ(group.children.size(), 1u);
    auto& leaf = *group.children[0];
    ASSERT_NE(leaf.bin, nullptr);
    EXPECT_EQ(leaf.name(), "Inner - not a uuid");
    EXPECT_EQ(leaf.id, "bin_07");
    EXPECT_EQ(host.toOpen, (std::vector<Bin*>{leaf.bin.get()}));
    EXPECT_FALSE(leaf.bin->selected());
    // Folders without details got them on load.
    EXPECT_TRUE(fs::exists(dir.path / "Plain group" / "lumbra_details"));
    EXPECT_EQ(base::readDetailsLine((dir.path / "Plain group").string(), 1), group.nodeUuid());
}

TEST(BinsTreeLoader, BinFolderThatFailsStaysInTheTree) {
    TempFolder dir;
    Project p;
    BinsTreeSaver saver(dir.str(), *p.root);
    ASSERT_TRUE(saver.saveItem(*p.root, nullptr));
    std::string folder = *saver.folderOf(*p.loose);
    writeFile(fs::path(folder) / "bin_04.ale", "not an ale file\n");
    Notifications notes;
    auto loaded = BinsTreeLoader(dir.str()).load(nullptr, std::nullopt, &notes);
    auto* node = loaded->entryByUuid(p.loose->nodeUuid());
    ASSERT_NE(node, nullptr);
    ASSERT_NE(node->bin, nullptr);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "Loading error");
    EXPECT_EQ(notes[0].body, "Something went wrong loading " + folder + "/bin_04.ale");
    EXPECT_EQ(notes[0].type, NotificationType::WARNING);
    EXPECT_EQ(loaded->toarray.size(), 4u);
}

TEST(SmartbinsTreeLoader, RootIsSmartbins) {
    TempFolder dir;
    auto root = SmartbinsTreeLoader(dir.str()).load(nullptr, std::nullopt, nullptr);
    EXPECT_EQ(root->id, "smartbins");
    EXPECT_TRUE(root->children.empty());
}
