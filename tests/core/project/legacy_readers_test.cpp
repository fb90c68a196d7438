#include "project/legacy_readers.h"
#include "project_test_support.h"

#include <gtest/gtest.h>

namespace lumbra::project {
namespace {

using namespace testing;
using base::PrintCapture;

// The ids of a node's children, in order.
Names childIds(const BinsTreeEntry& node) {
    Names out;
    for (const auto& child : node.children)
        out.push_back(child->id);
    return out;
}

TEST(LegacyTreeLines, GroupsAreMadeAtTheStartOfTheirParent) {
    using Lines = std::vector<TreeLine>;
    const std::vector<std::tuple<const char*, Lines, Names>> cases = {
        {"a group under the root", {{"treeentry", "root", "g1"}}, {"g1", "old"}},
        {"each new group goes first",
         {{"treeentry", "root", "g1"}, {"treeentry", "root", "g2"}},
         {"g2", "g1", "old"}},
        {"a child group under its parent",
         {{"treeentry", "root", "g1"}, {"treeentry", "g1", "g2"}},
         {"g1", "g2", "old"}},
        {"an unknown parent gives the root", {{"treeentry", "nowhere", "g1"}}, {"g1", "old"}},
        {"the last two tokens count", {{"treeentry", "x", "root", "g1"}}, {"g1", "old"}},
        {"two tokens add nothing", {{"treeentry", "g1"}}, {"old"}},
        {"a node already there adds nothing", {{"treeentry", "root", "old"}}, {"old"}},
        {"a bin's id makes no group", {{"treeentry", "root", "bin1"}}, {"old"}},
        {"smart lines are not plain lines", {{"smarttreeentry", "root", "g1"}}, {"old"}},
    };
    for (auto [name, lines, ids] : cases) {
        SCOPED_TRACE(name);
        auto root = makeGroup("root", {makeGroup("old")});
        applyTreeEntryLines(*root, lines, treeKeys(false), {"bin1"}, nullptr);
        ids.insert(ids.begin(), "root");
        EXPECT_EQ(root->allIds(), ids);
    }
}

TEST(LegacyTreeLines, ValuesGoToTheNodesTheyName) {
    auto root = makeGroup("root", {makeGroup("g1"), makeLeaf("clips")});
    applyTreeValueLines(*root,
                        {{"smarttreedisplayname", "g1", "Wrong"},
                         {"treedisplayname", "g1", "Dailies"},
                         {"treecreated", "g1", "100.5"},
                         {"treemodified", "g1", "200"},
                         {"treecreated", "clips", "300"},
                         {"treemodified", "clips", "soon"},
                         {"treedisplayname", "missing", "Nobody"},
                         {"treedisplayname", "g1"}},
                        treeKeys(false));
    const auto& group = *root->children[0];
    EXPECT_EQ(std::make_tuple(group.name(), group.created, group.modified),
              std::make_tuple("Dailies", 100.5, 200.0));
    const auto& leaf = *root->children[1];
    EXPECT_EQ(leaf.bin->created, 300.0);
    EXPECT_NE(leaf.bin->modified, 0.0);
}

TEST(LegacyBins, FlatFolderIntoTheGroupsOfTheTreeLines) {
    TempFolder dir;
    writeFile(dir.path / "a.ale", aleText({"c1", "c2", "c3"}));
    writeFile(dir.path / "a.bin",
              "tableid\tDay1\ndisplayname\tDay one\ntreebin\tg2\nlocked\tName\ntags\tx\nselected\n");
    writeFile(dir.path / "b.bin", "tableid\tOrphan\n");
    writeFile(dir.path / "c.ale", aleText({"c9"}));
    writeFile(dir.path / "c.bin", "title\tDay2\ntreebin\tgone\nselected\n");
    writeFile(dir.path / "d.ale", aleText({"c7"}));
    fs::create_directories(dir.path / "d.bin");
    writeFile(dir.path / "notes.txt", "not a bin\n");
    RecordingHost host;
    PrintCapture capture;
    auto read = readLegacyBins(dir.str(), *host.bins,
                               {{"treeentry", "root", "g1"},
                                {"treeentry", "g1", "g2"},
                                {"treeentry", "root", "Day1"},
                                {"treedisplayname", "g2", "Rushes"},
                                {"treecreated", "Day1", "42"}},
                               &host, nullptr);
    EXPECT_EQ(read, LegacyRead::partial);
    EXPECT_TRUE(capture.contains("ERROR: missing ale file for bin b"));
    EXPECT_TRUE(capture.contains("ERROR while opening " + (dir.path / "d.bin").string()));
    auto& root = *host.bins;
    EXPECT_EQ(root.allIds(), (Names{"root", "g1", "g2", "Day1", "Day2", "d"}));
    EXPECT_EQ(root.children[0]->children[0]->name(), "Rushes");
    Bin& day1 = *root.entryById("Day1")->bin;
    EXPECT_EQ(namesOf(root.toarray), (Names{"Day one", "Day2", "d"}));
    EXPECT_EQ(day1.table()->data.size(), 3u);
    EXPECT_EQ(std::tie(day1.lockedColumns, day1.tags), std::make_tuple(Names{"Name"}, Names{"x"}));
    EXPECT_EQ(day1.created, 42.0);
    EXPECT_TRUE(day1.hasChanged);
    // Bins that were open wait for the main window, closed.
    EXPECT_EQ(host.toOpen, (std::vector<Bin*>{&day1, root.children[1]->bin.get()}));
    EXPECT_FALSE(day1.selected());
}

TEST(LegacyFolders, ListingCountsFilesAndGroupsAndAnUnlistableFolderFails) {
    TempFolder dir;
    writeFile(dir.path / "lookup.db", "x");
    writeFile(dir.path / "Group one" / "group", "");
    writeFile(dir.path / "Other" / "thing", "");
    auto content = listLegacyFolder(dir.str());
    ASSERT_TRUE(content);
    EXPECT_EQ(std::make_pair(content->files, content->groups),
              std::make_pair(std::size_t{2}, std::size_t{1}));

    RecordingHost host;
    PrintCapture capture;
    std::string missing = (dir.path / "bins").string();
    EXPECT_EQ(readLegacyBins(missing, *host.bins, {}, &host, nullptr), LegacyRead::failed);
    EXPECT_TRUE(capture.contains("ERROR: cannot get files list from folder " + missing));
    EXPECT_TRUE(host.bins->children.empty());
    tables::ProjectLayouts layouts;
    EXPECT_EQ(readLegacyLayouts(missing, layouts, nullptr), LegacyRead::failed);
    EXPECT_FALSE(listLegacyFolder(missing));
}

// A project that reads a .smartbin file as a table named after the file, and refuses "bad" ones.
struct SmartReadingHost : RecordingHost {
    bool readSmartbinFile(Bin& bin, const std::string& path, base::Notifications*) override {
        std::string name = fs::path(path).stem().string();
        if (name == "bad")
            return false;
        bin.setTable(makeTable(name));
        return true;
    }
};

TEST(LegacySmartbins, FlatFilesAtTheRootAfterTheSmartGroups) {
    TempFolder dir;
    writeFile(dir.path / "s1.smartbin", "x");
    writeFile(dir.path / "bad.smartbin", "x");
    writeFile(dir.path / "s1.bin", "not a smart bin");
    SmartReadingHost host;
    PrintCapture capture;
    auto read = readLegacySmartbins(dir.str(), *host.smartbins,
                                    {{"smarttreeentry", "smartbins", "sg"},
                                     {"treeentry", "smartbins", "plain"},
                                     {"smarttreedisplayname", "sg", "Selects"}},
                                    &host, nullptr);
    EXPECT_EQ(read, LegacyRead::partial);
    EXPECT_TRUE(capture.contains("ERROR while opening " + (dir.path / "bad.smartbin").string()));
    EXPECT_EQ(childIds(*host.smartbins), (Names{"sg", "s1"}));
    EXPECT_EQ(host.smartbins->children[0]->name(), "Selects");
    EXPECT_EQ(host.smartbins->toarray.size(), 1u);
}

TEST(LegacyLayouts, FlatLayoutFilesSortedByName) {
    TempFolder dir;
    writeFile(dir.path / "b.layout", "Beta\nName\t120.5\nTape\n");
    writeFile(dir.path / "a.layout", "Alpha\nScene\n");
    writeFile(dir.path / "empty.layout", "");
    writeFile(dir.path / "readme.txt", "Gamma\nName\n");
    fs::create_directories(dir.path / "broken.layout");
    tables::ProjectLayouts layouts;
    PrintCapture capture;
    EXPECT_EQ(readLegacyLayouts(dir.str(), layouts, nullptr), LegacyRead::partial);
    EXPECT_TRUE(
        capture.contains("error while reading " + (dir.path / "empty.layout").string() + ": empty file"));
    EXPECT_TRUE(capture.contains("error while opening layout file " + (dir.path / "broken.layout").string()));
    ASSERT_EQ(layouts.layouts.size(), 2u);
    EXPECT_EQ(std::tie(layouts.layouts[0]->name, layouts.layouts[0]->columns),
              std::make_tuple("Alpha", Names{"Scene"}));
    EXPECT_EQ(std::tie(layouts.layouts[1]->name, layouts.layouts[1]->columns),
              std::make_tuple("Beta", Names{"Name", "Tape"}));
    EXPECT_EQ(layouts.layouts[1]->colwidths.at("Name"), 120.5);
}

} // namespace
} // namespace lumbra::project
