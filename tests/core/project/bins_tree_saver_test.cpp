#include "core/project/project_test_support.h"
#include "project/bins_tree_loader.h"
#include "project/bins_tree_saver.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
namespace base = lumbra::base;
using base::NotificationData;
using base::Notifications;
using base::NotificationType;
using base::PrintCapture;

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
            out.insert({folder + "/", folder + "/lumbra_details"});
            if (child->bin)
                out.insert({folder + "/" + child->name() + ".ale", folder + "/" + child->name() + ".bin"});
            self(self, *child, folder + "/");
        }
    };
    walk(walk, root, "");
    return out;
}

// Two groups of the same name, "Day", and a bin beside them, saved into a temporary folder.
struct Project {
    Project() {
        day1->setName("Day");
        day2->setName("Day");
    }
    TreeNode day1 = makeGroup("Group_01", {makeLeaf("bin_01"), makeLeaf("bin_02")});
    TreeNode day2 = makeGroup("Group_02", {makeLeaf("bin_03")});
    TreeNode loose = makeLeaf("bin_04");
    TreeNode root = makeGroup("root", {day1, day2, loose});
    TempFolder dir;
    BinsTreeSaver saver{dir.str(), *root};
};

// How many nodes of the tree are marked as changed.
long changed(BinsTreeEntry& root) {
    auto nodes = root.flatten();
    return std::count_if(nodes.begin(), nodes.end(), [](auto* node) { return node->identity().hasChanged; });
}

} // namespace

TEST(BinsTreeSaver, FoldersAreNamedAfterNodesAndASecondSaveWritesNothing) {
    Project p;
    Notifications notes;
    ASSERT_TRUE(p.saver.saveItem(*p.root, &notes));
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(listTree(p.dir.path), expectedFiles(*p.root));
    EXPECT_EQ(*p.saver.folderOf(*p.day1->children[0]),
              (p.dir.path / folderName(*p.day1) / folderName(*p.day1->children[0])).string());
    EXPECT_EQ(changed(*p.root), 0);
    auto before = fileTimes(p.dir.path);
    ASSERT_TRUE(p.saver.saveItem(*p.root, nullptr));
    EXPECT_FALSE(p.saver.wroteSomething());
    EXPECT_EQ(fileTimes(p.dir.path), before);
    // Equal names lie in folders of their own.
    Names names = BinsTreeLoader(p.dir.str()).load(nullptr, std::nullopt, nullptr)->allNames();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{"Day", "Day", "bin_01", "bin_02", "bin_03", "bin_04", "root"}));
}

TEST(BinsTreeSaver, UserSessionLeavesDiskMatchingTheTree) {
    Project p;
    ASSERT_TRUE(p.saver.saveItem(*p.root, nullptr));
    // Rename a bin twice between saves, move a group into another, delete a group with bins.
    Bin& renamed = *p.day1->children[0]->bin;
    for (const char* name : {"Interviews", "Interviews final"}) {
        renamed.setDisplayName(name);
        p.root->touch(renamed);
    }
    const std::string bin03 = *p.saver.folderOf(*p.day2->children[0]) + "/bin_03.ale";
    const auto written = fs::last_write_time(bin03);
    p.root->moveItems({p.day2.get()}, p.day1.get(), -1, nullptr);
    {
        // A group moves as one folder, and a renamed bin's folder as one: nothing inside is written again.
        PrintCapture capture;
        ASSERT_TRUE(p.saver.saveItem(*p.root, nullptr));
        EXPECT_EQ(std::count_if(capture.lines().begin(), capture.lines().end(),
                                [](const std::string& line) { return line.starts_with("moving "); }),
                  2);
    }
    EXPECT_EQ(fs::last_write_time(*p.saver.folderOf(*p.day2->children[0]) + "/bin_03.ale"), written);
    EXPECT_FALSE(fs::exists(bin03));
    TreeNode removed = p.day2;
    ASSERT_TRUE(p.root->removeChild(removed.get(), true));
    Notifications notes;
    ASSERT_TRUE(p.saver.removeEntries({removed}, &notes));
    EXPECT_EQ(listTree(p.dir.path), expectedFiles(*p.root));

    RecordingHost host;
    auto loaded = BinsTreeLoader(p.dir.str()).load(&host, std::nullopt, &notes);
    EXPECT_TRUE(notes.empty());
    loaded->sort(BinsTreeOrderingMode::alphabetical, false);
    p.root->sort(BinsTreeOrderingMode::alphabetical, false);
    EXPECT_EQ(loaded->allNames(), p.root->allNames());
    Names ids;
    for (Bin* bin : loaded->toarray)
        ids.push_back(bin->table()->tablename);
    // By name as people read it: "bin_02" before "Interviews final" (bin_01), case aside.
    EXPECT_EQ(ids, (Names{"bin_02", "bin_01", "bin_04"}));
    EXPECT_EQ(loaded->nodeUuid(), p.root->nodeUuid());
    auto* reloaded = loaded->entryByUuid(renamed.uuid());
    ASSERT_TRUE(reloaded && reloaded->bin);
    EXPECT_EQ(reloaded->bin->displayName(), "Interviews final");
    EXPECT_EQ(reloaded->bin->table()->data.size(), 2u);
    EXPECT_EQ(changed(*loaded), 0);
}

TEST(BinsTreeSaver, NodeOutsideTheTreeIsReported) {
    Project p;
    auto stranger = makeLeaf("smart");
    Notifications notes;
    PrintCapture capture;
    EXPECT_FALSE(p.saver.saveItem(*stranger, &notes));
    EXPECT_FALSE(p.saver.folderOf(*stranger).has_value());
    EXPECT_TRUE(capture.contains("ERROR: cannot save item that is outside this tree"));
    EXPECT_EQ(notes, (Notifications{{"Unknown item",
                                     "Error: cannot save entry smart because it is outside of this tree",
                                     NotificationType::KO}}));
}

TEST(BinsTreeSaver, ReadOnlyFolderReportsTheMoveAndKeepsTheOldFolder) {
    Project p;
    ASSERT_TRUE(p.saver.saveItem(*p.root, nullptr));
    std::string oldFolder = *p.saver.folderOf(*p.day1);
    auto listing = listTree(p.dir.path);
    p.day1->setName("Day one");
    p.day1->hasChanged = true;
    fs::permissions(p.dir.path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    Notifications notes;
    bool saved;
    {
        Unprivileged asUser;
        saved = p.saver.saveItem(*p.root, &notes);
    }
    EXPECT_FALSE(saved);
    ASSERT_FALSE(notes.empty());
    EXPECT_EQ(notes.back(), (NotificationData{"Moving error",
                                              "Error moving folder for Day one from " + oldFolder + " to " +
                                                  *p.saver.folderOf(*p.day1),
                                              NotificationType::KO}));
    EXPECT_EQ(listTree(p.dir.path), listing);
    EXPECT_TRUE(p.day1->hasChanged);
}

TEST(BinsTreeLoader, FolderNamesOpenBinsAndFailedBins) {
    TempFolder dir;
    const fs::path inner = dir.path / "Plain group" / "Inner - not a uuid";
    writeFile(inner / "clips.ale", aleText({"a"}));
    writeFile(inner / "clips.bin", "tableid\tbin_07\nlayout\tDefault\tName\ndisplayname\tclips\nselected\n");
    writeFile(dir.path / "broken" / "bin_04.ale", "not an ale file\n");
    writeFile(dir.path / "broken" / "bin_04.bin", "tableid\tbin_04\n");
    RecordingHost host;
    Notifications notes;
    auto root = BinsTreeLoader(dir.str()).load(&host, std::nullopt, &notes);
    EXPECT_EQ(root->allNames(), (Names{"root", "Plain group", "Inner - not a uuid", "broken"}));
    auto& group = *root->children[0];
    EXPECT_EQ(group.bin, nullptr);
    auto& leaf = *group.children.at(0);
    ASSERT_NE(leaf.bin, nullptr);
    EXPECT_EQ(leaf.id, "bin_07");
    EXPECT_EQ(host.toOpen, (std::vector<Bin*>{leaf.bin.get()}));
    EXPECT_FALSE(leaf.bin->selected());
    // Folders without details got them on load.
    EXPECT_EQ(base::readDetailsLine((dir.path / "Plain group").string(), 1), group.nodeUuid());
    // A bin whose table fails stays in the tree.
    EXPECT_EQ(root->toarray.size(), 2u);
    EXPECT_EQ(notes, (Notifications{
                         {"Loading error",
                          "Something went wrong loading " + (dir.path / "broken").string() + "/bin_04.ale",
                          NotificationType::WARNING}}));
    EXPECT_EQ(SmartbinsTreeLoader(dir.str() + "/none").load(nullptr, std::nullopt, nullptr)->allIds(),
              (Names{"smartbins"}));
}

namespace {

// A project whose smart bins files are written and read by a stand-in.
class SmartHost : public RecordingHost {
public:
    bool writeSmartbinFile(Bin& bin, const std::string& folder, lumbra::base::Notifications*) override {
        written.push_back(folder);
        writeFile(fs::path(folder) / (bin.displayName() + ".smartbin"),
                  "title\t" + bin.table()->tablename + "\n");
        return true;
    }
    bool readSmartbinFile(Bin& bin, const std::string& path, lumbra::base::Notifications*) override {
        auto table = std::make_unique<RecordingSmartTable>();
        table->tablename = "smartbin_01";
        table->domainUuids = domainUuids;
        bin.setTable(std::move(table));
        read.push_back(path);
        return true;
    }
    std::vector<std::string> written;
    std::vector<std::string> read;
    std::vector<std::string> domainUuids;
};

} // namespace

TEST(SmartBinsInTree, MovesRetestWhatTheDomainsAndTheSmartBinsCover) {
    SmartHost host;
    auto inDomain = makeGroup("in"), elsewhere = makeGroup("elsewhere"), folder = makeGroup("folder");
    auto moving = makeLeaf("moving");
    auto outside = makeGroup("out", {moving});
    host.bins->children = {inDomain, outside, elsewhere};
    host.bins->rebuildArray();
    auto smart = makeSmartLeaf("smartbin_01", 2), second = makeSmartLeaf("smartbin_02", 1);
    smartTable(*smart->bin).domain = {inDomain.get()};
    host.smartbins->children = {smart, second, folder};
    host.smartbins->rebuildArray();

    host.bins->moveItems({moving.get()}, elsewhere.get(), -1, &host);
    EXPECT_TRUE(smartTable(*smart->bin).bins.empty());
    host.bins->moveItems({moving.get()}, inDomain.get(), -1, &host);
    EXPECT_EQ(smartTable(*smart->bin).bins, (std::vector<Bin*>{moving->bin.get()}));
    // A node the domain names itself is covered wherever it goes.
    smartTable(*smart->bin).domain.push_back(outside.get());
    host.bins->moveItems({outside.get()}, inDomain.get(), -1, &host);
    EXPECT_EQ(smartTable(*smart->bin).bins.size(), 1u);
    EXPECT_EQ(host.tagTreeRebuilds, 0);

    // Every row of every smart bin of the tree is tested by each smart bin when smart bins move.
    host.smartbins->moveItems({smart.get()}, folder.get(), -1, &host);
    EXPECT_TRUE(folder->isChild(smart.get()));
    EXPECT_EQ(smartTable(*smart->bin).rows.size(), 3u);
    EXPECT_EQ(smartTable(*second->bin).rows.size(), 3u);
    EXPECT_EQ(host.tagTreeRebuilds, 1);
}

TEST(SmartBinsInTree, SmartBinFilesGoThroughTheProject) {
    TempFolder dir;
    SmartHost host;
    auto domainGroup = makeGroup("Group_01");
    host.bins->children = {domainGroup};
    host.domainUuids = {domainGroup->nodeUuid(), "UNKNOWN"};
    auto leaf = makeSmartLeaf("smartbin_01", 4, &host);
    leaf->bin->setDisplayName("Selects");
    auto root = makeGroup("smartbins", {leaf});
    BinsTreeSaver saver(dir.str(), *root);
    ASSERT_TRUE(saver.saveItem(*root, nullptr));
    std::string folder = *saver.folderOf(*leaf);
    EXPECT_EQ(host.written, (std::vector<std::string>{folder}));
    // A smart bin's rows belong to other bins: no table file of its own.
    EXPECT_EQ(listTree(folder), (std::set<std::string>{"lumbra_details", "Selects.smartbin"}));

    auto loaded = SmartbinsTreeLoader(dir.str()).load(&host, std::nullopt, nullptr);
    EXPECT_EQ(host.read, (std::vector<std::string>{folder + "/Selects.smartbin"}));
    ASSERT_EQ(namesOf(loaded->toarray), (Names{"Selects"}));
    EXPECT_EQ(smartTable(*loaded->toarray[0]).domain, (std::vector<const BinsTreeEntry*>{domainGroup.get()}));

    // Without a project a smart bin is not written.
    auto alone = makeSmartLeaf("smartbin_01", 1);
    EXPECT_FALSE(alone->bin->save(dir.str(), false, nullptr));
    EXPECT_TRUE(alone->bin->hasChanged);
}
