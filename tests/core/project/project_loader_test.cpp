#include "base/console.h"
#include "base/scripted_interaction.h"
#include "project/project_loader.h"
#include "project/project_saver.h"
#include "project/shared_stuff.h"
#include "project_test_support.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/wait.h>
#include <thread>

namespace lumbra::project {
namespace {

using namespace testing;
using base::PrintCapture;
using Names = std::vector<std::string>;

constexpr const char* uuidA = "AAAAAAAA-0000-0000-0000-000000000001";
constexpr const char* uuidB = "BBBBBBBB-0000-0000-0000-000000000002";
constexpr const char* uuidG = "CCCCCCCC-0000-0000-0000-000000000003";

// A project folder "Film" under a temporary parent, written by hand.
struct ProjectFolder {
    ProjectFolder() { fs::create_directories(project); }

    void file(const std::string& relative, const std::string& text) const {
        writeFile(project / relative, text);
    }
    // A bin in the current layout: its folder with details, table and .bin file.
    void currentBin(const std::string& under, const std::string& name, const char* uuid,
                    const std::string& binText = {}) const {
        std::string folder = under + "/" + name + " - " + uuid + "/";
        file(folder + "lumbra_details", std::string(uuid) + "\n100.0\n200.0\nNone\ntest");
        file(folder + name + ".ale", aleText({name + "_c1"}));
        file(folder + name + ".bin", "tableid\t" + name + "\ndisplayname\t" + name + "\n" + binText);
    }
    void currentGroup(const std::string& under, const std::string& name, const char* uuid) const {
        file(under + "/" + name + " - " + uuid + "/lumbra_details",
             std::string(uuid) + "\n100.0\n200.0\nNone\ntest");
    }

    TempFolder parent;
    fs::path project = parent.path / "Film";
};

// A main window that records what the opening asked of it.
struct RecordingWindow : MainWindowLink {
    void reloadBinsLists() override { ++reloads; }
    void showBox(Bin& bin, bool shown) override { boxes.emplace_back(bin.displayName(), shown); }
    int reloads = 0;
    std::vector<std::pair<std::string, bool>> boxes;
};

struct Opening {
    explicit Opening(const ProjectFolder& folder) : sharedstuff(&interaction) {
        sharedstuff.currentFolder = folder.parent.str();
        sharedstuff.projectName = "Film";
    }
    OpenResult open() {
        OpenHooks hooks;
        hooks.makeMainWindow = [this](SharedStuff& project) {
            windowMadeWithBins = project.bins->toarray.size();
            return &window;
        };
        hooks.closeChooser = [this] { ++chooserClosed; };
        return openProject(sharedstuff, hooks);
    }
    // Names of the bins that are open, plain bins first.
    Names openNames() const {
        Names out;
        for (Bin* bin : sharedstuff.openBins())
            out.push_back(bin->displayName());
        return out;
    }

    base::ScriptedInteraction interaction;
    SharedStuff sharedstuff;
    RecordingWindow window;
    std::size_t windowMadeWithBins = 0;
    int chooserClosed = 0;
};

const std::string legacyAlertText = "Legacy saving folders/saving_system detected. By continuing, the "
                                    "project will be updated to the new saving "
                                    "system.\n\nIt is recommended to BACKUP your data before proceeding.";

// The least that a project file holds: the lines every project file has.
const std::string wholeProjectFile =
    "Film\nfps\t25\ntlResolution\t1080\nsound\t48khz\nbaselayout\tName\tTape\n";

// An earlier project: the tree in the project file, bins and layouts flat.
void writeEarlierProject(const ProjectFolder& folder) {
    folder.file("tarelproject", wholeProjectFile + "treeentry\troot\tg1\ntreedisplayname\tg1\tDailies\n"
                                                   "projectlayout\tName\tTape\n");
    folder.file("bins/day1.ale", aleText({"c1", "c2"}));
    folder.file("bins/day1.bin", "tableid\tday1\ndisplayname\tDay one\ntreebin\tg1\nselected\n");
    folder.file("bins/day2.ale", aleText({"c3"}));
    folder.file("bins/day2.bin", "tableid\tday2\ndisplayname\tDay two\n");
    folder.file("layouts/mine.layout", "Mine\nName\t80\n");
}

TEST(ProjectOpening, AnEarlierProjectIsMigratedAndSaved) {
    ProjectFolder folder;
    writeEarlierProject(folder);
    Opening opening(folder);
    opening.interaction.queueAlert("Proceed");
    ASSERT_EQ(opening.open(), OpenResult::opened);

    ASSERT_EQ(opening.interaction.alerts().size(), 1u);
    const auto& alert = opening.interaction.alerts().front();
    EXPECT_EQ(alert.title, "Legacy saving folders");
    EXPECT_EQ(alert.text, legacyAlertText);
    EXPECT_EQ(alert.buttons, (Names{"Proceed", "Cancel"}));

    // The window came after the bins and before anything opened; the chooser closed then.
    EXPECT_EQ(opening.windowMadeWithBins, 2u);
    EXPECT_EQ(opening.chooserClosed, 1);
    EXPECT_GE(opening.window.reloads, 1);
    EXPECT_EQ(opening.window.boxes, (std::vector<std::pair<std::string, bool>>{{"Day one", true}}));
    EXPECT_EQ(opening.openNames(), (Names{"Day one"}));

    auto& project = opening.sharedstuff;
    EXPECT_EQ(project.fps, "25");
    ASSERT_EQ(project.projectLayouts.layouts.size(), 1u);
    EXPECT_EQ(project.projectLayouts.layouts[0]->name, "Mine");

    // On disk: the earlier folders are gone and the current ones hold everything.
    EXPECT_FALSE(fs::exists(folder.project / "bins"));
    EXPECT_FALSE(fs::exists(folder.project / "layouts"));
    BinsTreeEntry* group = project.bins->entryById("g1");
    ASSERT_TRUE(group);
    Bin* dayOne = project.bins->toarray[0];
    std::string groupFolder = "_bins_/Dailies - " + group->uuid() + "/";
    std::string binFolder = groupFolder + "Day one - " + dayOne->uuid() + "/";
    auto tree = listTree(folder.project);
    EXPECT_TRUE(tree.count(binFolder + "Day one.ale"));
    EXPECT_TRUE(tree.count(binFolder + "Day one.bin"));
    EXPECT_TRUE(tree.count("layout/Mine - " + project.projectLayouts.layouts[0]->uuid() + "/Mine.layout"));
    EXPECT_EQ(readFile(folder.project / "layout" / ("Mine - " + project.projectLayouts.layouts[0]->uuid()) /
                       "Mine.layout"),
              "Mine\nName\t80.0");
    EXPECT_EQ(readFile(folder.project / ".selectionlist"), dayOne->uuid() + "\n");
    EXPECT_EQ(readFile(folder.project / "tarelproject").rfind("Film\nfps\t25\n", 0), 0u);
    EXPECT_EQ(readFile(folder.project / "tarelproject").find("treeentry"), std::string::npos);
}

TEST(ProjectOpening, ASecondOpenAsksNothingAndRewritesNoBin) {
    ProjectFolder folder;
    writeEarlierProject(folder);
    {
        Opening first(folder);
        first.interaction.queueAlert("Proceed");
        ASSERT_EQ(first.open(), OpenResult::opened);
    }
    auto binFiles = [&] {
        std::map<std::string, std::pair<std::string, fs::file_time_type>> out;
        for (const auto& [path, time] : fileTimes(folder.project / "_bins_"))
            out[path] = {readFile(path), time};
        return out;
    };
    auto before = binFiles();
    auto treeBefore = listTree(folder.project);

    Opening second(folder);
    ASSERT_EQ(second.open(), OpenResult::opened);
    EXPECT_TRUE(second.interaction.alerts().empty());
    EXPECT_EQ(second.openNames(), (Names{"Day one"}));
    EXPECT_EQ(second.sharedstuff.bins->toarray.size(), 2u);
    EXPECT_EQ(listTree(folder.project), treeBefore);
    EXPECT_EQ(binFiles(), before);
    ASSERT_TRUE(second.sharedstuff.save());
    EXPECT_EQ(binFiles(), before);
}

TEST(ProjectOpening, CancelAtTheLegacyAlertChangesNothing) {
    ProjectFolder folder;
    writeEarlierProject(folder);
    auto snapshot = [&] {
        std::map<std::string, std::string> out;
        for (const auto& path : listTree(folder.project))
            out[path] = path.back() == '/' ? "" : readFile(folder.project / path);
        return out;
    };
    auto before = snapshot();
    Opening opening(folder);
    opening.interaction.queueAlert("Cancel");
    EXPECT_EQ(opening.open(), OpenResult::cancelled);
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(opening.chooserClosed, 0);
    EXPECT_TRUE(opening.sharedstuff.bins->children.empty());
}

TEST(ProjectOpening, AnUnreadableProjectFileEndsTheOpen) {
    ProjectFolder folder;
    fs::create_directories(folder.project / "tarelproject");
    folder.currentBin("_bins_", "A", uuidA);
    auto before = listTree(folder.project);
    Opening opening(folder);
    PrintCapture capture;
    EXPECT_EQ(opening.open(), OpenResult::unreadableProject);
    EXPECT_TRUE(capture.contains("ERROR while opening " + (folder.project / "tarelproject").string()));
    EXPECT_EQ(listTree(folder.project), before);
    EXPECT_EQ(opening.chooserClosed, 0);
    EXPECT_TRUE(opening.sharedstuff.bins->children.empty());
}

TEST(ProjectOpening, ADamagedProjectFileIsKeptAndNothingOpens) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "no fps line, no tlResolution line, no sound line, no baselayout line"},
        {"Film\n", "no fps line, no tlResolution line, no sound line, no baselayout line"},
        {"Film\nfps\t", "no tlResolution line, no sound line, no baselayout line, a cut last line"},
        {wholeProjectFile + "timeInMinBackup\t1", "a cut last line"},
    };
    for (const auto& [text, damage] : cases) {
        SCOPED_TRACE(text);
        ProjectFolder folder;
        folder.file("tarelproject", text);
        folder.currentBin("_bins_", "A", uuidA);
        Opening opening(folder);
        std::string reason;
        EXPECT_EQ(openProject(opening.sharedstuff, {}, &reason), OpenResult::damagedProject);
        EXPECT_NE(reason.find("is damaged (" + damage + ")"), std::string::npos) << reason;
        EXPECT_EQ(readFile(folder.project / "tarelproject"), text);
    }
}

TEST(ProjectOpening, WhichBinsOpen) {
    struct Case {
        std::string name;
        std::optional<std::string> selectionlist;
        Names open;
    };
    const std::vector<Case> cases = {
        {"the bins' own files without a list", std::nullopt, {"A"}},
        {"only what the list names", std::string(uuidB) + "\n", {"B"}},
        {"a deleted bin in the list is passed over",
         "DDDDDDDD-0000-0000-0000-000000000009\n" + std::string(uuidB) + "\n",
         {"B"}},
        {"a group's uuid opens nothing", std::string(uuidG) + "\n", {}},
        {"an empty list opens nothing", std::string(), {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ProjectFolder folder;
        folder.file("tarelproject", wholeProjectFile);
        folder.currentBin("_bins_", "A", uuidA, "selected\n");
        folder.currentGroup("_bins_", "G", uuidG);
        folder.currentBin("_bins_/G - " + std::string(uuidG), "B", uuidB);
        if (c.selectionlist)
            folder.file(".selectionlist", *c.selectionlist);
        Opening opening(folder);
        ASSERT_EQ(opening.open(), OpenResult::opened);
        EXPECT_EQ(opening.openNames(), c.open);
        EXPECT_EQ(opening.sharedstuff.bins->toarray.size(), 2u);
    }
}

TEST(ProjectOpening, BinsAndCurrentBinsEndInOneTree) {
    ProjectFolder folder;
    folder.file("tarelproject", wholeProjectFile);
    folder.currentBin("bins", "Old", uuidA);
    folder.currentBin("_bins_", "New", uuidB);
    Opening opening(folder);
    opening.interaction.queueAlert("Proceed");
    ASSERT_EQ(opening.open(), OpenResult::opened);
    Names names;
    for (Bin* bin : opening.sharedstuff.bins->toarray)
        names.push_back(bin->displayName());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{"New", "Old"}));
    EXPECT_FALSE(fs::exists(folder.project / "bins"));
    auto tree = listTree(folder.project);
    EXPECT_TRUE(tree.count("_bins_/Old - " + std::string(uuidA) + "/Old.ale"));
    EXPECT_TRUE(tree.count("_bins_/New - " + std::string(uuidB) + "/New.ale"));
}

TEST(ProjectOpening, AProjectWithoutBinsGetsAnEmptyFolder) {
    ProjectFolder folder;
    folder.file("tarelproject", wholeProjectFile);
    Opening opening(folder);
    ASSERT_EQ(opening.open(), OpenResult::opened);
    EXPECT_TRUE(fs::is_directory(folder.project / "_bins_"));
    EXPECT_TRUE(fs::is_directory(folder.project / "_smartbins_"));
    EXPECT_TRUE(opening.sharedstuff.bins->children.empty());
    EXPECT_EQ(readFile(folder.project / "tarelproject").rfind("Film\n", 0), 0u);
}

TEST(ProjectOpening, AFailedEarlierReadKeepsItsFolder) {
    ProjectFolder folder;
    writeEarlierProject(folder);
    folder.file("bins/lost.bin", "tableid\tlost\n");
    Opening opening(folder);
    opening.interaction.queueAlert("Proceed");
    PrintCapture capture;
    ASSERT_EQ(opening.open(), OpenResult::opened);
    EXPECT_TRUE(capture.contains("ERROR: missing ale file for bin lost"));
    EXPECT_EQ(opening.sharedstuff.bins->toarray.size(), 2u);
    EXPECT_TRUE(fs::exists(folder.project / "bins" / "lost.bin"));
    EXPECT_FALSE(fs::exists(folder.project / "layouts"));
}

TEST(ProjectOpening, EarlierBinsThatCannotBeReadEndTheOpen) {
    ProjectFolder folder;
    folder.file("tarelproject", wholeProjectFile + "treeentry\troot\tg1\n");
    folder.file("smartbins/x.smartbin", "");
    Opening opening(folder);
    opening.interaction.queueAlert("Proceed");
    PrintCapture capture;
    EXPECT_EQ(opening.open(), OpenResult::binsFailed);
    EXPECT_TRUE(capture.contains("ERROR while opening bins in folder " + (folder.project / "bins").string()));
    EXPECT_EQ(opening.chooserClosed, 0);
    EXPECT_TRUE(fs::exists(folder.project / "smartbins" / "x.smartbin"));
}

TEST(ProjectOpening, FailingLaterFoldersLeaveTheProjectOpen) {
    ProjectFolder folder;
    folder.file("tarelproject", wholeProjectFile);
    folder.currentBin("_bins_", "A", uuidA);
    folder.file("pivot", "not a folder");
    folder.file("db", "not a folder");
    Opening opening(folder);
    PrintCapture capture;
    ASSERT_EQ(opening.open(), OpenResult::opened);
    EXPECT_TRUE(capture.contains("ERROR while opening pivot tables in folder " +
                                 (folder.project / "pivot").string()));
    EXPECT_TRUE(capture.contains("ERROR while opening dbs in folder " + (folder.project / "db").string()));
    EXPECT_EQ(opening.sharedstuff.bins->toarray.size(), 1u);
}

// Kill-safety: a save killed at any moment leaves each file whole, old or new.
constexpr int killBins = 16;
constexpr int oldRows = 1500;

Names clipNames(const std::string& bin, int rows) {
    Names out;
    out.reserve(static_cast<std::size_t>(rows));
    for (int i = 0; i < rows; ++i)
        out.push_back(bin + "_clip_" + std::to_string(i));
    return out;
}

void writeLargeProject(const fs::path& parent) {
    fs::create_directories(parent);
    SharedStuff project;
    project.currentFolder = parent.string();
    project.projectName = "Film";
    for (int g = 0; g < 4; ++g) {
        auto group = std::make_shared<BinsTreeEntry>("group" + std::to_string(g), nullptr,
                                                     std::vector<TreeNode>{}, &project);
        for (int b = 0; b < killBins / 4; ++b) {
            std::string name = "bin" + std::to_string(g) + "_" + std::to_string(b);
            group->addBin(
                std::make_shared<Bin>(makeTable(name, clipNames(name, oldRows)), &project, nullptr, true));
        }
        project.bins->addChild(group);
    }
    ASSERT_TRUE(project.save());
}

// What the killed process does: open the project, change every bin and a setting, save.
void openChangeAndSave(const fs::path& parent) {
    SharedStuff project;
    project.currentFolder = parent.string();
    project.projectName = "Film";
    if (openProject(project) != OpenResult::opened)
        return;
    for (Bin* bin : project.bins->toarray) {
        std::string name = bin->table()->tablename;
        bin->setTable(makeTable(name, clipNames(name + "_new", oldRows + 1)));
        bin->hasChanged = true;
    }
    project.fps = "50";
    project.save();
}

// Every file of the project by path, less the hidden temporaries of writes that a kill cut short.
std::map<std::string, std::string> projectFiles(const fs::path& project) {
    std::map<std::string, std::string> out;
    for (const auto& entry : fs::recursive_directory_iterator(project)) {
        std::string name = entry.path().filename().string();
        if (!entry.is_regular_file() || (name.front() == '.' && name.find(".tmp") != std::string::npos))
            continue;
        out[fs::relative(entry.path(), project).string()] = readFile(entry.path());
    }
    return out;
}

TEST(ProjectOpening, ASaveKilledAtAnyMomentLeavesEachFileOldOrNew) {
    TempFolder root;
    const fs::path pristine = root.path / "pristine";
    const fs::path reference = root.path / "reference";
    const fs::path run = root.path / "run";
    {
        PrintCapture quiet;
        writeLargeProject(pristine);
    }
    ASSERT_FALSE(HasFatalFailure());
    const auto oldFiles = projectFiles(pristine / "Film");

    fs::copy(pristine, reference, fs::copy_options::recursive);
    auto started = std::chrono::steady_clock::now();
    {
        PrintCapture quiet;
        openChangeAndSave(reference);
    }
    auto fullRun =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started);
    const auto newFiles = projectFiles(reference / "Film");
    Names oldPaths;
    Names newPaths;
    for (const auto& [path, text] : oldFiles)
        oldPaths.push_back(path);
    for (const auto& [path, text] : newFiles)
        newPaths.push_back(path);
    ASSERT_EQ(oldPaths, newPaths);
    ASSERT_NE(oldFiles, newFiles);

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<long> delay(0, fullRun.count() * 6 / 5);
    for (int round = 0; round < 8; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        fs::remove_all(run);
        fs::copy(pristine, run, fs::copy_options::recursive);
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            int devnull = ::open("/dev/null", O_WRONLY);
            ::dup2(devnull, STDOUT_FILENO);
            ::dup2(devnull, STDERR_FILENO);
            openChangeAndSave(run);
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);

        for (const auto& [path, text] : projectFiles(run / "Film")) {
            SCOPED_TRACE(path);
            auto oldText = oldFiles.find(path);
            auto newText = newFiles.find(path);
            ASSERT_TRUE(oldText != oldFiles.end() || newText != newFiles.end());
            EXPECT_TRUE((oldText != oldFiles.end() && text == oldText->second) ||
                        (newText != newFiles.end() && text == newText->second));
        }

        SharedStuff reopened;
        reopened.currentFolder = run.string();
        reopened.projectName = "Film";
        PrintCapture quiet;
        ASSERT_EQ(openProject(reopened), OpenResult::opened);
        ASSERT_EQ(reopened.bins->toarray.size(), static_cast<std::size_t>(killBins));
        for (Bin* bin : reopened.bins->toarray) {
            std::size_t rows = bin->table()->data.size();
            EXPECT_TRUE(rows == oldRows || rows == oldRows + 1) << bin->displayName();
        }
    }
}

// A new bin's table cut short by a kill: complete (killed before its rename) it is recovered; cut
// half-way the bin is reported as broken and never shown as a group. A stale temporary goes.
TEST(ProjectOpening, ABinKilledWhileFirstWrittenIsRecoveredOrReported) {
    struct Case {
        const char* name;
        base::WriteStep step;
        Names bins;
        std::size_t temporaries;
    };
    const std::vector<Case> cases = {
        {"complete, killed before its rename", base::WriteStep::rename, {"A", "New"}, 0},
        {"killed half-way", base::WriteStep::write, {"A"}, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ProjectFolder folder;
        folder.file("tarelproject", wholeProjectFile);
        folder.currentBin("_bins_", "A", uuidA);
        folder.file("_bins_/A - " + std::string(uuidA) + "/.A.ale.tmp12.5", "stale");
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PrintCapture quiet;
            Opening opening(folder);
            static_cast<void>(opening.open());
            base::setWriteFaultHook([&](const std::string& path, base::WriteStep step) {
                if (step == c.step && path.ends_with("New.ale"))
                    ::raise(SIGKILL);
                return false;
            });
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
        Names names;
        for (const auto& node : reopened.sharedstuff.bins->children)
            names.push_back(node->name());
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, c.bins);
        EXPECT_EQ(
            std::any_of(capture.lines().begin(), capture.lines().end(),
                        [](const std::string& line) { return line.starts_with("ERROR: broken bin in "); }),
            c.temporaries == 1);
        std::size_t temporaries = 0;
        for (const auto& path : listTree(folder.project))
            temporaries += base::parseTemporaryFileName(fs::path(path).filename().string()).has_value();
        EXPECT_EQ(temporaries, c.temporaries);
    }
}

// Updating an earlier project on a full disk: the first failed write stops it, the earlier layout
// stays as it was and nothing of the update is left; saves into the folder are refused.
TEST(ProjectOpening, AFailedUpdateOfTheEarlierLayoutLeavesItAsItWas) {
    ProjectFolder folder;
    writeEarlierProject(folder);
    const auto before = projectFiles(folder.project);
    int writes = 0;
    base::setWriteFaultHook([&](const std::string&, base::WriteStep step) {
        return step == base::WriteStep::rename && ++writes == 4;
    });
    Opening opening(folder);
    opening.interaction.queueAlert("Proceed");
    PrintCapture quiet;
    std::string reason;
    const OpenResult result = openProject(opening.sharedstuff, {}, &reason);
    base::setWriteFaultHook({});
    EXPECT_EQ(result, OpenResult::migrationFailed);
    EXPECT_NE(reason.find("the project was left in its earlier layout"), std::string::npos) << reason;
    auto after = projectFiles(folder.project);
    std::erase_if(after, [](const auto& file) { return file.first.starts_with("_"); });
    EXPECT_EQ(after, before);
    EXPECT_EQ(listTree(folder.project / "_bins_"), (std::set<std::string>{"lumbra_details"}));
    EXPECT_FALSE(opening.sharedstuff.save());

    Opening again(folder);
    again.interaction.queueAlert("Proceed");
    ASSERT_EQ(again.open(), OpenResult::opened);
    EXPECT_EQ(again.sharedstuff.bins->toarray.size(), 2u);
    EXPECT_FALSE(fs::exists(folder.project / "bins"));
}

} // namespace
} // namespace lumbra::project
