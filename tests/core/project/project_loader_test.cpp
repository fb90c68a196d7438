#include "base/scripted_interaction.h"
#include "project/legacy_readers.h"
#include "project/project_loader.h"
#include "project/project_saver.h"
#include "project_test_support.h"

#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <sys/wait.h>

namespace lumbra::project {
namespace {

using namespace testing;
using base::PrintCapture;
using Files = std::map<std::string, std::string>;

constexpr const char* uuidA = "AAAAAAAA-0000-0000-0000-000000000001";
constexpr const char* uuidB = "BBBBBBBB-0000-0000-0000-000000000002";
constexpr const char* uuidG = "CCCCCCCC-0000-0000-0000-000000000003";

// The least that a project file holds: the lines every project file has.
const std::string wholeProjectFile =
    "Film\nfps\t25\ntlResolution\t1080\nsound\t48khz\nbaselayout\tName\tTape\n";

// A project folder "Film" under a temporary parent, written by hand.
struct ProjectFolder {
    ProjectFolder() { fs::create_directories(project); }
    void file(const std::string& relative, const std::string& text) const {
        writeFile(project / relative, text);
    }
    // A bin (or, not a bin, a group) in the current layout: its folder with details, table and .bin file.
    void current(const std::string& under, const std::string& name, const char* uuid, bool bin = true,
                 const std::string& binText = {}) const {
        std::string folder = under + "/" + name + " - " + uuid + "/";
        file(folder + "lumbra_details", std::string(uuid) + "\n100.0\n200.0\nNone\ntest");
        if (bin) {
            file(folder + name + ".ale", aleText({name + "_c1"}));
            file(folder + name + ".bin", "tableid\t" + name + "\ndisplayname\t" + name + "\n" + binText);
        }
    }
    // An earlier project: the tree in the project file, bins and layouts flat.
    void earlier() const {
        file("tarelproject", wholeProjectFile + "treeentry\troot\tg1\ntreedisplayname\tg1\tDailies\n"
                                                "projectlayout\tName\tTape\n");
        file("bins/day1.ale", aleText({"c1", "c2"}));
        file("bins/day1.bin", "tableid\tday1\ndisplayname\tDay one\ntreebin\tg1\nselected\n");
        file("bins/day2.ale", aleText({"c3"}));
        file("bins/day2.bin", "tableid\tday2\ndisplayname\tDay two\n");
        file("layouts/mine.layout", "Mine\nName\t80\n");
    }
    // Every file by path and text, less the hidden temporaries of writes that a kill cut short.
    [[nodiscard]] Files files() const {
        Files out;
        for (const auto& entry : fs::recursive_directory_iterator(project)) {
            std::string name = entry.path().filename().string();
            if (!entry.is_regular_file() || (name.front() == '.' && name.find(".tmp") != std::string::npos))
                continue;
            out[fs::relative(entry.path(), project).string()] = readFile(entry.path());
        }
        return out;
    }

    TempFolder parent;
    fs::path project = parent.path / "Film";
};

// A main window that records what the opening asked of it.
struct RecordingWindow : MainWindowLink {
    void showBox(Bin& bin, bool shown) override { boxes.emplace_back(bin.displayName(), shown); }
    std::vector<std::pair<std::string, bool>> boxes;
};

struct Opening {
    explicit Opening(const ProjectFolder& folder) : sharedstuff(&interaction) {
        sharedstuff.currentFolder = folder.parent.str();
        sharedstuff.projectName = "Film";
        interaction.queueAlert("Proceed");
    }
    OpenResult open(std::string* reason = nullptr) {
        OpenHooks hooks;
        hooks.makeMainWindow = [this](SharedStuff& project) {
            windowMadeWithBins = project.bins->toarray.size();
            return &window;
        };
        hooks.closeChooser = [this] { ++chooserClosed; };
        return openProject(sharedstuff, hooks, reason);
    }

    base::ScriptedInteraction interaction;
    SharedStuff sharedstuff;
    RecordingWindow window;
    std::size_t windowMadeWithBins = 0;
    int chooserClosed = 0;
};

TEST(ProjectOpening, AnEarlierProjectIsMigratedOnceAndThenOpensAsItIs) {
    ProjectFolder folder;
    folder.earlier();
    {
        Opening opening(folder);
        ASSERT_EQ(opening.open(), OpenResult::opened);
        ASSERT_EQ(opening.interaction.alerts().size(), 1u);
        EXPECT_EQ(opening.interaction.alerts().front().title, "Legacy saving folders");
        // The window came after the bins and before anything opened; the chooser closed then.
        EXPECT_EQ(opening.windowMadeWithBins, 2u);
        EXPECT_EQ(opening.window.boxes, (std::vector<std::pair<std::string, bool>>{{"Day one", true}}));
        auto& project = opening.sharedstuff;
        EXPECT_EQ(namesOf(project.openBins()), (Names{"Day one"}));
        EXPECT_EQ(project.fps, "25");
        // On disk: the earlier folders are gone and the current ones hold everything.
        Bin* dayOne = project.bins->toarray[0];
        const std::string bin = "_bins_/Dailies - " + project.bins->entryById("g1")->uuid() + "/Day one - " +
                                dayOne->uuid() + "/Day one.";
        const Files files = folder.files();
        EXPECT_FALSE(fs::exists(folder.project / "bins") || fs::exists(folder.project / "layouts"));
        EXPECT_TRUE(files.count(bin + "ale") && files.count(bin + "bin"));
        EXPECT_EQ(files.at("tarelproject").rfind("Film\nfps\t25\n", 0), 0u);
        EXPECT_EQ(files.at("tarelproject").find("treeentry"), std::string::npos);
    }
    auto binTimes = [&] { return fileTimes(folder.project / "_bins_"); };
    const Files before = folder.files();
    const auto timesBefore = binTimes();
    Opening second(folder);
    ASSERT_EQ(second.open(), OpenResult::opened);
    EXPECT_TRUE(second.interaction.alerts().empty());
    EXPECT_EQ(namesOf(second.sharedstuff.openBins()), (Names{"Day one"}));
    EXPECT_EQ(second.sharedstuff.bins->toarray.size(), 2u);
    ASSERT_TRUE(second.sharedstuff.save());
    EXPECT_EQ(folder.files(), before);
    EXPECT_EQ(binTimes(), timesBefore);
}

// An opening that stops leaves every file as it was; one that goes on may leave a folder it cannot read.
TEST(ProjectOpening, WhatEachFolderDoesToTheOpening) {
    const std::string whole = "tarelproject=" + wholeProjectFile, legacy = whole + "treeentry\troot\tg1\n",
                      damaged =
                          "is damaged (no fps line, no tlResolution line, no sound line, no baselayout line)";
    // Files beside a current bin A; a line printed, "@" for the project; the bins; paths kept, "-" gone.
    const std::vector<std::tuple<std::string, OpenResult, std::string, std::size_t, std::string>> cases = {
        {"tarelproject=/", OpenResult::unreadableProject, "ERROR while opening @/tarelproject", 0, ""},
        {"tarelproject=", OpenResult::damagedProject, damaged, 0, ""},
        {"tarelproject=Film\nfps\t", OpenResult::damagedProject,
         "is damaged (no tlResolution line, no sound line, no baselayout line, a cut last line)", 0, ""},
        {whole + "maxNBackup\t1", OpenResult::damagedProject, "is damaged (a cut last line)", 0, ""},
        {whole, OpenResult::opened, "", 1, "_bins_|_smartbins_"},
        {whole + "|bins/Old/Old.ale=" + aleText({"x"}) + "|bins/Old/Old.bin=tableid\tOld\n",
         OpenResult::opened, "", 2, "-bins"},
        {legacy + "|bins/lost.bin=tableid\tlost\n", OpenResult::opened,
         "ERROR: missing ale file for bin lost", 1, "bins/lost.bin"},
        {legacy + "|smartbins/x.smartbin=", OpenResult::binsFailed,
         "ERROR while opening bins in folder @/bins", 0, ""},
        {whole + "|pivot=x", OpenResult::opened, "ERROR while opening pivot tables in folder @/pivot", 1, ""},
        {whole + "|db=x", OpenResult::opened, "ERROR while opening dbs in folder @/db", 1, ""},
    };
    for (const auto& [files, result, line, bins, paths] : cases) {
        SCOPED_TRACE(files);
        ProjectFolder folder;
        folder.current("_bins_", "A", uuidA);
        writeFiles(folder.project, files);
        const Files before = folder.files();
        const auto tree = listTree(folder.project);
        Opening opening(folder);
        PrintCapture capture;
        std::string reason;
        EXPECT_EQ(opening.open(&reason), result);
        std::string printedLine = line;
        if (auto at = printedLine.find('@'); at != std::string::npos)
            printedLine.replace(at, 1, folder.project.string());
        EXPECT_TRUE(line.empty() || printed(capture, printedLine)) << printedLine;
        EXPECT_TRUE(result != OpenResult::damagedProject || reason.find(line) != std::string::npos) << reason;
        EXPECT_EQ(opening.sharedstuff.bins->toarray.size(), bins);
        EXPECT_EQ(opening.chooserClosed, result == OpenResult::opened ? 1 : 0);
        if (result != OpenResult::opened) {
            EXPECT_EQ(std::tie(before, tree), std::make_tuple(folder.files(), listTree(folder.project)));
        }
        for (const auto& path : split(paths))
            EXPECT_EQ(fs::exists(folder.project / (path[0] == '-' ? path.substr(1) : path)), path[0] != '-')
                << path;
    }
}

TEST(ProjectOpening, WhichBinsOpen) {
    const std::vector<std::tuple<const char*, std::optional<std::string>, Names>> cases = {
        {"the bins' own files without a list", std::nullopt, {"A"}},
        {"only what the list names", std::string(uuidB) + "\n", {"B"}},
        {"a deleted bin in the list is passed over",
         "DDDDDDDD-0000-0000-0000-000000000009\n" + std::string(uuidB),
         {"B"}},
        {"a group's uuid opens nothing", std::string(uuidG) + "\n", {}},
        {"an empty list opens nothing", std::string(), {}},
    };
    for (const auto& [name, selectionlist, open] : cases) {
        SCOPED_TRACE(name);
        ProjectFolder folder;
        folder.file("tarelproject", wholeProjectFile);
        folder.current("_bins_", "A", uuidA, true, "selected\n");
        folder.current("_bins_", "G", uuidG, false);
        folder.current("_bins_/G - " + std::string(uuidG), "B", uuidB);
        if (selectionlist)
            folder.file(".selectionlist", *selectionlist);
        Opening opening(folder);
        ASSERT_EQ(opening.open(), OpenResult::opened);
        EXPECT_EQ(namesOf(opening.sharedstuff.openBins()), open);
        EXPECT_EQ(opening.sharedstuff.bins->toarray.size(), 2u);
    }
}

// A save killed while a file is written leaves it whole, old or new. A new bin's table complete but
// killed before its rename is recovered; cut half-way the bin is reported as broken and never shown as a
// group. A stale temporary goes.
TEST(ProjectOpening, ASaveKilledWhileAFileIsWrittenLeavesItOldOrNew) {
    const std::vector<std::tuple<const char*, base::WriteStep, Names, std::size_t, const char*>> cases = {
        {"New.ale", base::WriteStep::rename, {"A", "New"}, 0, "50"},
        {"New.ale", base::WriteStep::write, {"A"}, 1, "50"},
        {"tarelproject", base::WriteStep::write, {"A"}, 0, "25"}};
    for (const auto& [file, step, bins, temporaries, fps] : cases) {
        SCOPED_TRACE(std::string(file) +
                     (step == base::WriteStep::write ? " half-way" : " before its rename"));
        ProjectFolder folder;
        folder.file("tarelproject", wholeProjectFile);
        folder.current("_bins_", "A", uuidA);
        folder.file("_bins_/A - " + std::string(uuidA) + "/.A.ale.tmp12.5", "stale");
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PrintCapture quiet;
            Opening opening(folder);
            static_cast<void>(opening.open());
            base::setWriteFaultHook(
                [&, step = step, file = file](const std::string& path, base::WriteStep at) {
                    if (at == step && path.ends_with(file))
                        ::raise(SIGKILL);
                    return false;
                });
            opening.sharedstuff.fps = "50";
            opening.sharedstuff.addBin(makeBin("New", &opening.sharedstuff));
            static_cast<void>(opening.sharedstuff.save());
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));

        PrintCapture capture;
        Opening reopened(folder);
        ASSERT_EQ(reopened.open(), OpenResult::opened);
        Names names = childNames(*reopened.sharedstuff.bins);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, bins);
        EXPECT_EQ(reopened.sharedstuff.fps, fps);
        EXPECT_EQ(printed(capture, "ERROR: broken bin in "), temporaries == 1);
        std::size_t left = 0;
        for (const auto& path : listTree(folder.project))
            left += base::parseTemporaryFileName(fs::path(path).filename().string()).has_value();
        EXPECT_EQ(left, temporaries);
    }
}

// Updating an earlier project on a full disk: the first failed write stops it, the earlier layout
// stays as it was and nothing of the update is left; saves into the folder are refused.
TEST(ProjectOpening, AFailedUpdateOfTheEarlierLayoutLeavesItAsItWas) {
    ProjectFolder folder;
    folder.earlier();
    const Files before = folder.files();
    int writes = 0;
    base::setWriteFaultHook([&](const std::string&, base::WriteStep step) {
        return step == base::WriteStep::rename && ++writes == 4;
    });
    Opening opening(folder);
    PrintCapture quiet;
    std::string reason;
    const OpenResult result = opening.open(&reason);
    base::setWriteFaultHook({});
    EXPECT_EQ(result, OpenResult::migrationFailed);
    EXPECT_NE(reason.find("the project was left in its earlier layout"), std::string::npos) << reason;
    auto after = folder.files();
    std::erase_if(after, [](const auto& file) { return file.first.starts_with("_"); });
    EXPECT_EQ(after, before);
    EXPECT_EQ(listTree(folder.project / "_bins_"), (std::set<std::string>{"lumbra_details"}));
    EXPECT_FALSE(opening.sharedstuff.save());

    Opening again(folder);
    ASSERT_EQ(again.open(), OpenResult::opened);
    EXPECT_EQ(again.sharedstuff.bins->toarray.size(), 2u);
    EXPECT_FALSE(fs::exists(folder.project / "bins"));
}

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
    writeFiles(
        dir.path,
        "a.ale=" + aleText({"c1", "c2", "c3"}) +
            "|a.bin=tableid\tDay1\ndisplayname\tDay one\ntreebin\tg2\nlocked\tName\ntags\tx\nselected\n"
            "|b.bin=tableid\tOrphan\n|c.ale=" +
            aleText({"c9"}) + "|c.bin=title\tDay2\ntreebin\tgone\nselected\n|d.ale=" + aleText({"c7"}) +
            "|d.bin=/|notes.txt=not a bin\n");
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
    EXPECT_EQ(root.allNames(), (Names{"root", "g1", "Rushes", "Day one", "Day2", "d"}));
    Bin& day1 = *root.entryById("Day1")->bin;
    EXPECT_EQ(day1.table()->data.size(), 3u);
    EXPECT_EQ(std::tie(day1.lockedColumns, day1.tags, day1.created),
              std::make_tuple(Names{"Name"}, Names{"x"}, 42.0));
    EXPECT_TRUE(day1.hasChanged);
    // Bins that were open wait for the main window, closed.
    EXPECT_EQ(host.toOpen, (std::vector<Bin*>{&day1, root.children[1]->bin.get()}));
    EXPECT_FALSE(day1.selected());
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

TEST(LegacyFolders, SmartBinsLayoutsAndOtherObjects) {
    TempFolder dir;
    writeFiles(
        dir.path,
        "s1.smartbin=x|bad.smartbin=x|s1.bin=not a smart bin|b.layout=Beta\nName\t120.5\nTape\n"
        "|a.layout=Alpha\nScene\n|empty.layout=|readme.txt=Gamma\nName\n|broken.layout=/|Group one/group=");
    SmartReadingHost host;
    PrintCapture capture;
    auto read = readLegacySmartbins(dir.str(), *host.smartbins,
                                    {{"smarttreeentry", "smartbins", "sg"},
                                     {"treeentry", "smartbins", "plain"},
                                     {"smarttreedisplayname", "sg", "Selects"}},
                                    &host, nullptr);
    EXPECT_EQ(read, LegacyRead::partial);
    EXPECT_TRUE(capture.contains("ERROR while opening " + (dir.path / "bad.smartbin").string()));
    // The flat files come at the root after the smart groups.
    EXPECT_EQ(childIds(*host.smartbins), (Names{"sg", "s1"}));
    EXPECT_EQ(host.smartbins->children[0]->name(), "Selects");
    EXPECT_EQ(host.smartbins->toarray.size(), 1u);

    tables::ProjectLayouts layouts;
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

    // A folder counts as a group when it holds a "group" file, as a file otherwise.
    auto content = listLegacyFolder(dir.str());
    ASSERT_TRUE(content);
    EXPECT_EQ(std::make_pair(content->files, content->groups),
              std::make_pair(std::size_t{8}, std::size_t{1}));
    std::string missing = (dir.path / "bins").string();
    EXPECT_EQ(readLegacyBins(missing, *host.bins, {}, &host, nullptr), LegacyRead::failed);
    EXPECT_TRUE(capture.contains("ERROR: cannot get files list from folder " + missing));
    EXPECT_TRUE(host.bins->children.empty());
    EXPECT_EQ(readLegacyLayouts(missing, layouts, nullptr), LegacyRead::failed);
    EXPECT_FALSE(listLegacyFolder(missing));
}

} // namespace
} // namespace lumbra::project
