#include "base/console.h"
#include "core/project/project_test_support.h"
#include "tables/columns_layout.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
using lumbra::base::NotificationData;
using lumbra::base::Notifications;
using lumbra::base::NotificationType;
using lumbra::base::PrintCapture;
using lumbra::tables::ColumnsLayout;

namespace {

using Names = std::vector<std::string>;

std::shared_ptr<ColumnsLayout> layoutOf(const std::string& name, Names columns) {
    return std::make_shared<ColumnsLayout>(name, std::move(columns));
}

} // namespace

TEST(BinFile, WritesEveryKeyInOrder) {
    TempFolder dir;
    RecordingHost host;
    Bin bin(makeTable("bin_07"), &host, layoutOf("Default", {"Name", "Tape"}), false);
    bin.setDisplayName("Rushes");
    bin.tags = {"day1", "wide"};
    bin.setLock(true);
    bin.lockedColumns = {"Tape"};
    bin.originalmeta_fps = "25";
    bin.originalmeta_tape = "";
    ASSERT_TRUE(bin.writeBinFile(dir.str(), nullptr));
    EXPECT_EQ(readFile(dir.path / "Rushes.bin"), "tableid\tbin_07\n"
                                                 "layout\tDefault\tName\tTape\n"
                                                 "displayname\tRushes\n"
                                                 "selected\n"
                                                 "tags\tday1\twide\n"
                                                 "islock\n"
                                                 "locked\tTape\n"
                                                 "originalmeta_fps\t25\n"
                                                 "originalmeta_tape\t\n");
}

TEST(BinFile, PlainBinWritesOnlyTheStandingKeys) {
    TempFolder dir;
    RecordingHost host;
    host.base = layoutOf("Default", {});
    Bin bin(makeTable("bin_01"), &host, nullptr, true);
    EXPECT_EQ(bin.layout, host.base);
    ASSERT_TRUE(bin.writeBinFile(dir.str(), nullptr));
    EXPECT_EQ(readFile(dir.path / "bin_01.bin"), "tableid\tbin_01\nlayout\tDefault\ndisplayname\tbin_01\n");
}

TEST(BinFile, ReadsKeysInFileOrder) {
    struct Expected {
        std::string tablename = "bin_01";
        std::string displayName = "bin_01";
        Names tags = {};
        bool locked = false;
        std::string layout = "Default";
        Names layoutColumns = {};
    };
    struct Case {
        std::string name;
        std::string text;
        Expected expected;
    };
    const std::vector<Case> cases = {
        {"title stands for tableid", "title\tbin_09\n", {.tablename = "bin_09", .displayName = "bin_09"}},
        {"unknown key is passed over", "colour\tred\ndisplayname\tX\n", {.displayName = "X"}},
        {"key without its value is passed over", "tableid\ndisplayname\tX\n", {.displayName = "X"}},
        {"islock before displayname keeps the name", "islock\ndisplayname\tX\n", {.locked = true}},
        {"displayname before islock", "displayname\tX\nislock\n", {.displayName = "X", .locked = true}},
        {"carriage returns", "displayname\tX\r\ntags\ta\tb\r\n", {.displayName = "X", .tags = {"a", "b"}}},
        {"tags add up", "tags\ta\ntags\tb\n", {.tags = {"a", "b"}}},
        {"layout", "layout\tMine\tA\tB\n", {.layout = "Mine", .layoutColumns = {"A", "B"}}},
        {"empty file", "", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempFolder dir;
        writeFile(dir.path / "x.bin", c.text);
        RecordingHost host;
        host.base = layoutOf("Default", {});
        Bin bin(makeTable("bin_01"), &host, nullptr, true);
        ASSERT_TRUE(bin.readBinFile((dir.path / "x.bin").string(), nullptr));
        EXPECT_FALSE(bin.hasChanged);
        EXPECT_EQ(bin.table()->tablename, c.expected.tablename);
        EXPECT_EQ(bin.displayName(), c.expected.displayName);
        EXPECT_EQ(bin.tags, c.expected.tags);
        EXPECT_EQ(bin.isLock(), c.expected.locked);
        EXPECT_EQ(bin.layout->name, c.expected.layout);
        EXPECT_EQ(bin.layout->columns, c.expected.layoutColumns);
    }
}

TEST(BinFile, LockedColumnsAndOriginalHeadings) {
    TempFolder dir;
    writeFile(dir.path / "x.bin", "locked\tName\tTape\noriginalmeta_fps\t24\noriginalmeta_videoformat\t1080\n"
                                  "originalmeta_tape\t\nselected\n");
    RecordingHost host;
    Bin bin(makeTable("t"), &host, nullptr, true);
    ASSERT_TRUE(bin.readBinFile((dir.path / "x.bin").string(), nullptr));
    EXPECT_EQ(bin.lockedColumns, (Names{"Name", "Tape"}));
    EXPECT_EQ(bin.originalmeta_fps, "24");
    EXPECT_EQ(bin.originalmeta_videoformat, "1080");
    EXPECT_EQ(bin.originalmeta_tape, "");
    EXPECT_FALSE(bin.originalmeta_audioformat.has_value());
    EXPECT_TRUE(bin.selected());
    EXPECT_EQ(host.shownBoxes, (std::vector<std::pair<std::string, bool>>{{"t", true}}));
}

TEST(Bin, LockedBinDropsRowWritesAndRenames) {
    Bin bin(makeTable("bin_01"), nullptr, nullptr, true);
    auto& row = *bin.table()->data[0];
    bin.setLock(true);
    EXPECT_FALSE(row.setData({{"Name", "changed"}}));
    EXPECT_EQ(row.value("Name"), "c1");
    bin.setDisplayName("New");
    EXPECT_EQ(bin.displayName(), "bin_01");
    bin.setLock(false);
    EXPECT_TRUE(row.setData({{"Name", "changed"}}));
    bin.table()->tablename = "renamed table";
    EXPECT_EQ(bin.displayName(), "renamed table");
}

TEST(Bin, SubBinHoldsTheSameRows) {
    Bin bin(makeTable("src", {"a", "b", "c"}), nullptr, nullptr, true);
    auto sub = bin.subBin({2, 0, 3, -1});
    EXPECT_EQ(sub->displayName(), "sub-src");
    ASSERT_EQ(sub->table()->data.size(), 2u);
    EXPECT_EQ(sub->table()->data[0], bin.table()->data[2]);
    EXPECT_EQ(sub->table()->data[1], bin.table()->data[0]);
    EXPECT_TRUE(sub->table()->cols.empty());
    ASSERT_TRUE(sub->table()->data[0]->setData({{"Name", "edited"}}));
    EXPECT_EQ(bin.table()->data[2]->value("Name"), "edited");
    // The rows still answer to their own bin's lock.
    bin.setLock(true);
    EXPECT_FALSE(sub->table()->data[1]->setData({{"Name", "x"}}));
}

TEST(Bin, TransitionBinStandsForTheSmartBin) {
    TransitionBin alone(nullptr, nullptr);
    EXPECT_EQ(alone.displayName(), "Unknown");
    Bin smart(makeTable("smartbin_01", {"a", "b"}), nullptr, nullptr, true);
    smart.setDisplayName("Selects");
    TransitionBin transition(&smart, nullptr);
    transition.setDisplayName("ignored");
    EXPECT_EQ(transition.displayName(), "Selects");
    EXPECT_EQ(transition.table()->data, smart.table()->data);
    Names cols = transition.table()->cols;
    std::sort(cols.begin(), cols.end());
    EXPECT_EQ(cols, (Names{"Lumbra_Color_Tag", "Name", "Tape"}));
}

TEST(Bin, InterpretsItsTokens) {
    Bin bin(makeTable("bin_01"), nullptr, nullptr, true);
    bin.setDisplayName("Rushes");
    Bin empty(nullptr);
    struct Case {
        std::string name;
        const Bin& bin;
        std::string token;
        std::optional<std::string> expected;
    };
    const std::vector<Case> cases = {
        {"name", bin, "binname", "Rushes"},
        {"fps", bin, "binfps", "25"},
        {"fps without table", empty, "binfps", ""},
        {"unknown token", bin, "clipname", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.bin.interpretBinToken(c.token), c.expected);
    }
}

TEST(Bin, LoadWarnsAndGoesOnOrRefuses) {
    struct Case {
        std::string name;
        std::vector<std::pair<std::string, std::string>> files; // name, text; "dir" makes a folder
        bool loads;
        NotificationData note;
    };
    const std::string ale = aleText({"a"});
    const std::vector<Case> cases = {
        {"no .bin file",
         {{"clips.ale", ale}},
         true,
         {"No .bin file", "No .bin file in @. Default values used for bin.", NotificationType::WARNING}},
        {"no table file",
         {{"clips.bin", "displayname\tx\n"}},
         false,
         {"Loading error", "No .ale or .smartbin file in @", NotificationType::KO}},
        {"unreadable .bin file",
         {{"clips.ale", ale}, {"clips.bin", "dir"}},
         true,
         {".BIN file error", "Error reading @/clips.bin. Default values used for bin.",
          NotificationType::WARNING}},
        {"faulty .ale file",
         {{"clips.ale", "nothing here"}, {"clips.bin", "displayname\tx\n"}},
         true,
         {"Loading error", "Something went wrong loading @/clips.ale", NotificationType::WARNING}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempFolder dir;
        for (const auto& [file, text] : c.files) {
            if (text == "dir")
                fs::create_directories(dir.path / file);
            else
                writeFile(dir.path / file, text);
        }
        Bin bin(nullptr);
        Notifications notes;
        EXPECT_EQ(bin.load(dir.str(), &notes), c.loads);
        ASSERT_EQ(notes.size(), 1u);
        NotificationData expected = c.note;
        expected.body.replace(expected.body.find('@'), 1, dir.str());
        EXPECT_EQ(notes[0], expected);
        EXPECT_FALSE(bin.hasChanged);
        EXPECT_TRUE(fs::exists(dir.path / "lumbra_details"));
    }
}

TEST(Bin, LoadWithoutBinFileWritesOne) {
    TempFolder dir;
    writeFile(dir.path / "clips.ale", aleText({"a"}));
    PrintCapture capture;
    Bin bin(nullptr);
    ASSERT_TRUE(bin.load(dir.str(), nullptr));
    EXPECT_TRUE(capture.contains("Warning: no bin file, default values used"));
    EXPECT_EQ(bin.displayName(), "clips");
    EXPECT_FALSE(bin.selected());
    EXPECT_EQ(readFile(dir.path / "clips.bin"), "tableid\tclips\nlayout\ndisplayname\tclips\n");
    EXPECT_EQ(bin.table()->bin, &bin);
}

TEST(Bin, MissingFolderIsALoadingError) {
    TempFolder dir;
    Bin bin(nullptr);
    Notifications notes;
    std::string missing = (dir.path / "gone").string();
    PrintCapture capture;
    EXPECT_FALSE(bin.load(missing, &notes));
    EXPECT_TRUE(capture.contains("ERROR loading from " + missing));
    ASSERT_FALSE(notes.empty());
    EXPECT_EQ(notes.back(),
              NotificationData("Loading error", "Error loading from " + missing, NotificationType::KO));
}

TEST(Bin, SaveRoundTripsAndDropsFilesOfOldNames) {
    TempFolder dir;
    RecordingHost host;
    host.base = layoutOf("Default", {"Name"});
    Bin bin(makeTable("bin_01"), &host, layoutOf("Mine", {"Tape", "Name"}), true);
    bin.tags = {"a"};
    bin.lockedColumns = {"Name"};
    bin.originalmeta_audioformat = "48khz";
    ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
    EXPECT_FALSE(bin.hasChanged);
    bin.setDisplayName("First");
    ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
    bin.setDisplayName("Second");
    ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
    EXPECT_EQ(listTree(dir.path), (std::set<std::string>{"lumbra_details", "Second.ale", "Second.bin"}));

    Bin loaded(&host);
    ASSERT_TRUE(loaded.load(dir.str(), nullptr));
    EXPECT_EQ(loaded.uuid(), bin.uuid());
    EXPECT_EQ(loaded.displayName(), "Second");
    EXPECT_EQ(loaded.table()->tablename, "bin_01");
    EXPECT_EQ(loaded.layout->name, "Mine");
    EXPECT_EQ(loaded.layout->columns, (Names{"Tape", "Name"}));
    EXPECT_EQ(loaded.tags, (Names{"a"}));
    EXPECT_EQ(loaded.lockedColumns, (Names{"Name"}));
    EXPECT_EQ(loaded.originalmeta_audioformat, "48khz");
    ASSERT_EQ(loaded.table()->data.size(), 2u);
    EXPECT_EQ(loaded.table()->data[1]->value("Name"), "c2");

    // An edit list titled "Reel 1/2" names its files with "_"; the name itself comes back whole.
    bin.setDisplayName("Reel 1/2");
    ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
    EXPECT_EQ(listTree(dir.path), (std::set<std::string>{"lumbra_details", "Reel 1_2.ale", "Reel 1_2.bin"}));
    Bin reel(&host);
    ASSERT_TRUE(reel.load(dir.str(), nullptr));
    EXPECT_EQ(reel.displayName(), "Reel 1/2");
}

TEST(Bin, StrayTableFilesBesideTheBinsOwnAreIgnoredAndNamed) {
    TempFolder dir;
    const std::string uuid = "AAAAAAAA-0000-0000-0000-000000000001";
    const fs::path folder = dir.path / ("day01 - " + uuid);
    writeFile(folder / "lumbra_details", uuid + "\n1\n2\nNone\n");
    writeFile(folder / "day01.ale", aleText({"c1", "c2"}));
    writeFile(folder / "zz.ale", "Heading\n\nColumn\nName\n\nData\n");
    fs::create_symlink("yy.ale", folder / "yy.ale");
    Bin bin(nullptr);
    Notifications notes;
    PrintCapture quiet;
    ASSERT_TRUE(bin.load(folder.string(), &notes));
    EXPECT_EQ(bin.table()->data.size(), 2u);
    ASSERT_FALSE(notes.empty());
    EXPECT_EQ(notes[0].title, "Files ignored");
    EXPECT_TRUE(notes[0].body.ends_with("ignores yy.ale, zz.ale")) << notes[0].body;
}

TEST(Bin, SaveIntoReadOnlyFolderFailsAndKeepsTheFiles) {
    TempFolder dir;
    Bin bin(makeTable("bin_01"), nullptr, nullptr, true);
    ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
    auto before = listTree(dir.path);
    std::string aleBefore = readFile(dir.path / "bin_01.ale");
    bin.table()->data[0]->setData({{"Name", "changed"}});
    bin.modified += 1;
    bin.hasChanged = true;
    fs::permissions(dir.path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    Notifications notes;
    bool saved;
    {
        Unprivileged asUser;
        saved = bin.save(dir.str(), false, &notes);
    }
    EXPECT_FALSE(saved);
    EXPECT_TRUE(bin.hasChanged);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "Error saving");
    EXPECT_EQ(listTree(dir.path), before);
    EXPECT_EQ(readFile(dir.path / "bin_01.ale"), aleBefore);
}

TEST(Bin, FileWriteFailureKeepsThePreviousFiles) {
    struct Case {
        std::string name;
        std::string failing;
        bool noted;
    };
    // A .bin file that fails says nothing of its own; the table file, written first, is reported.
    const std::vector<Case> cases = {{"table file", ".ale", true}, {"bin file", ".bin", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempFolder dir;
        Bin bin(makeTable("bin_01"), nullptr, nullptr, true);
        ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
        std::string aleBefore = readFile(dir.path / "bin_01.ale");
        std::string binBefore = readFile(dir.path / "bin_01.bin");
        bin.table()->data[0]->setData({{"Name", "changed"}});
        bin.tags = {"new"};
        bin.hasChanged = true;
        lumbra::base::setWriteFailureHook([&](const std::string& path) { return path.ends_with(c.failing); });
        Notifications notes;
        PrintCapture capture;
        bool saved = bin.save(dir.str(), false, &notes);
        lumbra::base::setWriteFailureHook({});
        EXPECT_FALSE(saved);
        EXPECT_TRUE(bin.hasChanged);
        std::string path = (dir.path / "bin_01").string();
        if (c.noted) {
            EXPECT_TRUE(capture.contains("ERROR while saving file " + path));
            EXPECT_EQ(notes,
                      (Notifications{{"Error saving", "Error writing to " + path, NotificationType::KO}}));
        } else {
            EXPECT_TRUE(notes.empty());
        }
        EXPECT_EQ(readFile(dir.path / "bin_01.bin"), binBefore);
        EXPECT_EQ(readFile(dir.path / "bin_01.ale") == aleBefore, c.noted);
        EXPECT_EQ(listTree(dir.path), (std::set<std::string>{"lumbra_details", "bin_01.ale", "bin_01.bin"}));
    }
}
