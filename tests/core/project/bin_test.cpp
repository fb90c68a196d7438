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

std::shared_ptr<ColumnsLayout> layoutOf(const std::string& name, Names columns) {
    return std::make_shared<ColumnsLayout>(name, std::move(columns));
}

// What a .bin file keeps of a bin, in one line: table, name, tags, lock, layout, locked columns, heading.
std::string summary(const Bin& bin) {
    auto join = [](const Names& values) {
        std::string out;
        for (const auto& value : values)
            out += (out.empty() ? "" : ",") + value;
        return out;
    };
    std::string out = bin.table()->tablename + " " + bin.displayName() + " " + join(bin.tags) +
                      (bin.isLock() ? " L " : " ") + bin.layout->name + ":" + join(bin.layout->columns) +
                      " " + join(bin.lockedColumns) + " ";
    for (const auto* meta :
         {&bin.originalmeta_fps, &bin.originalmeta_videoformat, &bin.originalmeta_audioformat,
          &bin.originalmeta_tape, &bin.originalmeta_filmformat})
        out += *meta ? "=" + **meta : std::string("-");
    return out;
}

} // namespace

TEST(BinFile, WritesEveryKeyInOrderAndAPlainBinOnlyTheStandingOnes) {
    TempFolder dir;
    RecordingHost host;
    host.base = layoutOf("Default", {});
    Bin plain(makeTable("bin_01"), &host, nullptr, true);
    EXPECT_EQ(plain.layout, host.base);
    Bin bin(makeTable("bin_07"), &host, layoutOf("Default", {"Name", "Tape"}), false);
    bin.setDisplayName("Rushes");
    bin.tags = {"day1", "wide"};
    bin.setLock(true);
    bin.lockedColumns = {"Tape"};
    bin.originalmeta_fps = "25";
    bin.originalmeta_tape = "";
    ASSERT_TRUE(bin.writeBinFile(dir.str(), nullptr) && plain.writeBinFile(dir.str(), nullptr));
    EXPECT_EQ(readFile(dir.path / "Rushes.bin"),
              "tableid\tbin_07\nlayout\tDefault\tName\tTape\ndisplayname\tRushes\n"
              "selected\ntags\tday1\twide\nislock\nlocked\tTape\n"
              "originalmeta_fps\t25\noriginalmeta_tape\t\n");
    EXPECT_EQ(readFile(dir.path / "bin_01.bin"), "tableid\tbin_01\nlayout\tDefault\ndisplayname\tbin_01\n");
}

TEST(BinFile, ReadsKeysInFileOrder) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"title\tbin_09\n", "bin_09 bin_09  Default:  -----"}, // title stands for tableid
        {"colour\tred\ndisplayname\tX\n", "bin_01 X  Default:  -----"},
        {"tableid\ndisplayname\tX\n", "bin_01 X  Default:  -----"},
        {"islock\ndisplayname\tX\n", "bin_01 bin_01  L Default:  -----"},
        {"displayname\tX\nislock\n", "bin_01 X  L Default:  -----"},
        {"displayname\tX\r\ntags\ta\tb\r\n", "bin_01 X a,b Default:  -----"},
        {"tags\ta\ntags\tb\n", "bin_01 bin_01 a,b Default:  -----"},
        {"layout\tMine\tA\tB\n", "bin_01 bin_01  Mine:A,B  -----"},
        {"", "bin_01 bin_01  Default:  -----"},
        {"locked\tName\tTape\noriginalmeta_fps\t24\noriginalmeta_videoformat\t1080\noriginalmeta_tape\t\n",
         "bin_01 bin_01  Default: Name,Tape =24=1080-=-"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        TempFolder dir;
        writeFile(dir.path / "x.bin", text);
        RecordingHost host;
        host.base = layoutOf("Default", {});
        Bin bin(makeTable("bin_01"), &host, nullptr, true);
        ASSERT_TRUE(bin.readBinFile((dir.path / "x.bin").string(), nullptr));
        EXPECT_FALSE(bin.hasChanged);
        EXPECT_EQ(summary(bin), expected);
    }
    // An open bin waits for the project to show its box.
    TempFolder dir;
    writeFile(dir.path / "x.bin", "selected\n");
    RecordingHost host;
    Bin bin(makeTable("t"), &host, nullptr, true);
    ASSERT_TRUE(bin.readBinFile((dir.path / "x.bin").string(), nullptr));
    EXPECT_TRUE(bin.selected());
    EXPECT_EQ(host.shownBoxes, (std::vector<std::pair<std::string, bool>>{{"t", true}}));
}

TEST(Bin, LockSubBinsAndTransitionBins) {
    Bin bin(makeTable("src", {"a", "b", "c"}), nullptr, nullptr, true);
    auto& row = *bin.table()->data[0];
    bin.setLock(true);
    EXPECT_FALSE(row.setData({{"Name", "changed"}}));
    bin.setDisplayName("New");
    EXPECT_EQ(bin.displayName(), "src");
    bin.setLock(false);
    EXPECT_TRUE(row.setData({{"Name", "changed"}}));
    bin.table()->tablename = "renamed";
    EXPECT_EQ(bin.displayName(), "renamed");

    auto sub = bin.subBin({2, 0, 3, -1});
    EXPECT_EQ(sub->displayName(), "sub-renamed");
    ASSERT_EQ(sub->table()->data.size(), 2u);
    EXPECT_EQ(sub->table()->data[0], bin.table()->data[2]);
    EXPECT_EQ(sub->table()->data[1], bin.table()->data[0]);
    EXPECT_TRUE(sub->table()->cols.empty());
    // The rows still answer to their own bin's lock.
    bin.setLock(true);
    EXPECT_FALSE(sub->table()->data[1]->setData({{"Name", "x"}}));

    EXPECT_EQ(TransitionBin(nullptr, nullptr).displayName(), "Unknown");
    bin.setLock(false);
    bin.setDisplayName("Selects");
    TransitionBin transition(&bin, nullptr);
    transition.setDisplayName("ignored");
    EXPECT_EQ(transition.displayName(), "Selects");
    EXPECT_EQ(transition.table()->data, bin.table()->data);
    Names cols = transition.table()->cols;
    std::sort(cols.begin(), cols.end());
    EXPECT_EQ(cols, (Names{"Lumbra_Color_Tag", "Name", "Tape"}));
}

TEST(Bin, InterpretsItsTokens) {
    Bin bin(makeTable("bin_01"), nullptr, nullptr, true);
    bin.setDisplayName("Rushes");
    Bin empty(nullptr);
    const std::vector<std::tuple<const Bin*, std::string, std::optional<std::string>>> cases = {
        {&bin, "binname", "Rushes"},
        {&bin, "binfps", "25"},
        {&empty, "binfps", ""},
        {&bin, "clipname", std::nullopt}};
    for (const auto& [which, token, expected] : cases) {
        SCOPED_TRACE(token);
        EXPECT_EQ(which->interpretBinToken(token), expected);
    }
}

TEST(Bin, LoadWarnsAndGoesOnOrRefuses) {
    using Files = std::vector<std::pair<std::string, std::string>>; // name, text; "dir" makes a folder
    const std::string ale = aleText({"a"}), defaults = ". Default values used for bin.";
    // Files of a bin folder "clips", none for no folder; whether it loads; the last note, "@" for the folder.
    const std::vector<std::tuple<Files, bool, std::string, std::string>> cases = {
        {{{"clips.ale", ale}}, true, "No .bin file", "No .bin file in @" + defaults},
        {{{"clips.bin", "displayname\tx\n"}}, false, "Loading error", "No .ale or .smartbin file in @"},
        {{{"clips.ale", ale}, {"clips.bin", "dir"}},
         true,
         ".BIN file error",
         "Error reading @/clips.bin" + defaults},
        {{{"clips.ale", "x"}, {"clips.bin", ""}},
         true,
         "Loading error",
         "Something went wrong loading @/clips.ale"},
        {{}, false, "Loading error", "Error loading from @"},
        {{{"clips.ale", ale}, {"zz.ale", ale}, {"yy.ale", "x"}, {"clips.bin", ""}},
         true,
         "Files ignored",
         "The bin in @ reads only its own files and ignores yy.ale, zz.ale"},
    };
    for (const auto& [files, loads, title, body] : cases) {
        SCOPED_TRACE(title);
        TempFolder parent;
        const fs::path dir = parent.path / "clips";
        for (const auto& [file, text] : files)
            text == "dir" ? static_cast<void>(fs::create_directories(dir / file))
                          : writeFile(dir / file, text);
        Bin bin(nullptr);
        Notifications notes;
        PrintCapture capture;
        EXPECT_EQ(bin.load(dir.string(), &notes), loads);
        ASSERT_FALSE(notes.empty());
        std::string expected = body;
        expected.replace(expected.find('@'), 1, dir.string());
        EXPECT_EQ(notes.back(), NotificationData(title, expected,
                                                 loads ? NotificationType::WARNING : NotificationType::KO));
        EXPECT_FALSE(bin.hasChanged);
        EXPECT_EQ(fs::exists(dir / "lumbra_details"), !files.empty());
        if (files.empty()) {
            EXPECT_TRUE(capture.contains("ERROR loading from " + dir.string()));
        }
        if (title == "No .bin file") {
            EXPECT_TRUE(capture.contains("Warning: no bin file, default values used"));
            EXPECT_EQ(readFile(dir / "clips.bin"), "tableid\tclips\nlayout\ndisplayname\tclips\n");
            EXPECT_EQ(bin.table()->bin, &bin);
        }
    }
}

TEST(Bin, SaveRoundTripsAndDropsFilesOfOldNames) {
    TempFolder dir;
    RecordingHost host;
    host.base = layoutOf("Default", {"Name"});
    Bin bin(makeTable("bin_01"), &host, layoutOf("Mine", {"Tape", "Name"}), true);
    bin.tags = {"a"};
    bin.lockedColumns = {"Name"};
    bin.originalmeta_audioformat = "48khz";
    // An edit list titled "Reel 1/2" names its files with "_"; the name itself comes back whole.
    for (const char* name : {"First", "Reel 1/2"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
        EXPECT_FALSE(bin.hasChanged);
        bin.setDisplayName(name);
        ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
        const std::string file = name[0] == 'F' ? "First" : "Reel 1_2";
        EXPECT_EQ(listTree(dir.path),
                  (std::set<std::string>{"lumbra_details", file + ".ale", file + ".bin"}));
        Bin loaded(&host);
        ASSERT_TRUE(loaded.load(dir.str(), nullptr));
        EXPECT_EQ(loaded.uuid(), bin.uuid());
        EXPECT_EQ(summary(loaded), "bin_01 " + std::string(name) + " a Mine:Tape,Name Name --=48khz--");
        ASSERT_EQ(loaded.table()->data.size(), 2u);
        EXPECT_EQ(loaded.table()->data[1]->value("Name"), "c2");
    }
}

// A .bin file that fails says nothing of its own; the table file, written first, is reported.
TEST(Bin, AFailedSaveKeepsThePreviousFiles) {
    const std::vector<std::tuple<const char*, std::string, bool>> cases = {
        {"read-only folder", "", true}, {"table file", ".ale", true}, {"bin file", ".bin", false}};
    for (const auto& [name, failing, noted] : cases) {
        SCOPED_TRACE(name);
        TempFolder dir;
        Bin bin(makeTable("bin_01"), nullptr, nullptr, true);
        ASSERT_TRUE(bin.save(dir.str(), false, nullptr));
        const std::string ale = readFile(dir.path / "bin_01.ale"),
                          binFile = readFile(dir.path / "bin_01.bin");
        bin.table()->data[0]->setData({{"Name", "changed"}});
        bin.tags = {"new"};
        bin.hasChanged = true;
        Notifications notes;
        PrintCapture capture;
        bool saved = false;
        if (failing.empty()) {
            fs::permissions(dir.path,
                            fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                            fs::perm_options::remove);
            Unprivileged asUser;
            saved = bin.save(dir.str(), false, &notes);
        } else {
            lumbra::base::setWriteFailureHook(
                [&](const std::string& path) { return path.ends_with(failing); });
            saved = bin.save(dir.str(), false, &notes);
            lumbra::base::setWriteFailureHook({});
        }
        EXPECT_FALSE(saved);
        EXPECT_TRUE(bin.hasChanged);
        const std::string path = (dir.path / "bin_01").string();
        ASSERT_EQ(notes.size(), noted ? 1u : 0u);
        if (noted) {
            EXPECT_EQ(notes[0].title, "Error saving");
        }
        if (failing == ".ale") {
            EXPECT_TRUE(capture.contains("ERROR while saving file " + path));
            EXPECT_EQ(notes[0],
                      (NotificationData{"Error saving", "Error writing to " + path, NotificationType::KO}));
        }
        EXPECT_EQ(readFile(dir.path / "bin_01.bin"), binFile);
        EXPECT_EQ(readFile(dir.path / "bin_01.ale") == ale, noted);
        EXPECT_EQ(listTree(dir.path), (std::set<std::string>{"lumbra_details", "bin_01.ale", "bin_01.bin"}));
    }
}
