#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "project/project_file.h"
#include "project/project_saver.h"

#include <chrono>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <thread>
#include <zip.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
using lumbra::base::NotificationType;
using lumbra::base::PrintCapture;
using lumbra::base::ScriptedInteraction;

namespace {

// A saved project "Film" under a temporary folder, with an open bin and a closed one.
struct Project : FilmProject {
    explicit Project(lumbra::base::UserInteraction* interaction = nullptr) : FilmProject(interaction) {
        open->setSelected(true);
        s.bins->addBin(open);
        s.bins->addBin(closed);
    }
    std::shared_ptr<Bin> open = makeBin("bin_01", &s);
    std::shared_ptr<Bin> closed = makeBin("bin_02", &s);
};

struct RecordingWindow : MainWindowLink {
    void setFog(bool shown) override { calls.push_back(shown ? "fog on" : "fog off"); }
    void refreshTitle() override { calls.push_back("title"); }
    void reloadBinsLists() override { calls.push_back("lists"); }
    Names calls;
};

// The entry names of an archive.
std::set<std::string> zipNames(const std::string& path) {
    std::set<std::string> out;
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
    for (zip_int64_t i = 0; archive && i < zip_get_num_entries(archive, 0); ++i)
        out.emplace(zip_get_name(archive, static_cast<zip_uint64_t>(i), 0));
    if (archive)
        zip_discard(archive);
    return out;
}

std::string binFolder(Bin& bin) {
    return bin.displayName() + " - " + bin.uuid();
}

// Archive temporaries go to a folder of the test's own, so tests running side by side do not count each
// other's.
struct PrivateTempDir {
    TempFolder dir;
    std::string previous = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "";
    PrivateTempDir() { setenv("TMPDIR", dir.str().c_str(), 1); }
    ~PrivateTempDir() { previous.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", previous.c_str(), 1); }
    // Whether every archive temporary is gone.
    [[nodiscard]] bool clean() const {
        return std::none_of(fs::directory_iterator(dir.path), fs::directory_iterator(),
                            [](const auto& entry) {
                                return entry.path().filename().string().starts_with("lumbra-archive-");
                            });
    }
};

bool notified(const SharedStuff& s, const std::string& title, const std::string& body) {
    return std::any_of(s.bufferedNotifications.begin(), s.bufferedNotifications.end(), [&](const auto& n) {
        return n.title == title && n.body == body && n.type == NotificationType::KO;
    });
}

} // namespace

TEST(ProjectSaver, SaveWritesTheFolderInOrderDropsTheCacheAndASecondSaveRewritesNoBin) {
    Project p;
    writeFile(p.folder() / "cache" / "scratch", "x");
    PrintCapture capture;
    ASSERT_TRUE(p.s.save());
    std::string seen;
    for (const auto& line : capture.lines())
        seen += line.starts_with("-- saving ") || line.starts_with("saving project") ? line + "|" : "";
    EXPECT_EQ(
        seen,
        "saving project Film|-- saving bins|-- saving smartbins|-- saving export presets|-- saving report "
        "presets|-- saving layout mapping presets|-- saving dbs|-- saving layouts|-- saving pivots|");
    const auto tree = listTree(p.folder());
    EXPECT_EQ(tree.count("cache/"), 0u);
    EXPECT_EQ(readFile(p.folder() / ".selectionlist"), p.open->uuid() + "\n");
    for (Bin* bin : {p.open.get(), p.closed.get()}) {
        const std::string file = "_bins_/" + binFolder(*bin) + "/" + bin->displayName();
        EXPECT_TRUE(tree.count(file + ".ale") && tree.count(file + ".bin")) << file;
    }
    auto before = fileTimes(p.folder() / "_bins_");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    p.s.projectTags = {"changed"};
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(fileTimes(p.folder() / "_bins_"), before);
    EXPECT_EQ(readFile(p.folder() / "tarelproject"), projectFileText(p.s));
}

// A bin that cannot be written, or a project file that cannot, which stops the save before the bins.
TEST(ProjectSaver, AFailedSaveKeepsTheRemovalsAndTheOldFilesForTheNextSave) {
    for (const std::string failing : {"bin_01.ale", "tarelproject"}) {
        SCOPED_TRACE(failing);
        Project p;
        ASSERT_TRUE(p.s.save());
        const std::string projectFile = readFile(p.folder() / "tarelproject");
        const fs::path deleted = p.folder() / "_bins_" / binFolder(*p.closed);
        TreeNode node = p.s.bins->handleOf(p.s.bins->entry(*p.closed));
        p.s.bins->removeChild(node.get(), true);
        p.s.saver().entriesToRemove.push_back(node);
        p.open->hasChanged = true;
        p.s.gang = true;
        PrintCapture capture;
        lumbra::base::setWriteFailureHook([&](const std::string& path) { return path.ends_with(failing); });
        const SaveResult saved = p.s.save();
        lumbra::base::setWriteFailureHook({});
        EXPECT_FALSE(saved);
        EXPECT_EQ(p.s.saver().entriesToRemove.size(), 1u);
        EXPECT_TRUE(fs::exists(deleted));
        if (failing == "tarelproject") {
            EXPECT_EQ(saved.unwritten, Names{"the project file"});
            EXPECT_TRUE(capture.contains("ERROR while saving file " + p.folder().string() + "/tarelproject"));
            EXPECT_EQ(readFile(p.folder() / "tarelproject"), projectFile);
        } else {
            EXPECT_EQ(saved.unwritten, Names{"bin_01"});
            EXPECT_TRUE(notified(p.s, "Save Failed", "Error while saving bins, not written: bin_01"));
        }
        EXPECT_TRUE(p.s.save());
        EXPECT_TRUE(p.s.saver().entriesToRemove.empty());
        EXPECT_FALSE(fs::exists(deleted));
    }
}

TEST(ProjectSaver, ArchivesKeepTheProjectNameAsTheirTopFolder) {
    const PrivateTempDir privateTemp;
    Project p;
    ASSERT_TRUE(p.s.save());
    const TempFolder out;
    std::string first, second, backup, backup2, backup3;
    ASSERT_TRUE(p.s.saveCompressed(out.str(), &first));
    ASSERT_TRUE(p.s.saveCompressed(out.str(), &second));
    ASSERT_TRUE(p.s.backup(&backup));
    EXPECT_EQ(first, (out.path / "Film.zip").string());
    EXPECT_EQ(second, (out.path / "Film_02.zip").string());
    EXPECT_EQ(fs::path(backup).parent_path(), p.folder() / "backup");
    const std::string name = fs::path(backup).filename().string();
    EXPECT_TRUE(name.find('_') < name.find('-') && name.substr(name.find('-')) == "-Film.zip") << name;
    EXPECT_TRUE(privateTemp.clean());
    for (const std::string& archive : {first, backup}) {
        const auto names = zipNames(archive);
        EXPECT_EQ(names.count("Film/_bins_/" + binFolder(*p.open) + "/bin_01.ale"), 1u) << archive;
        EXPECT_TRUE(
            std::all_of(names.begin(), names.end(), [](const auto& n) { return n.starts_with("Film/"); }));
    }
    // Backups within one second each keep an archive of their own.
    ASSERT_TRUE(p.s.backup(&backup2));
    ASSERT_TRUE(p.s.backup(&backup3));
    EXPECT_EQ(std::set<std::string>({backup, backup2, backup3}).size(), 3u);
    EXPECT_EQ(std::distance(fs::directory_iterator(p.folder() / "backup"), fs::directory_iterator()), 3);
}

TEST(ProjectSaver, BackupNamesArePaddedSoTheySortByTime) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"2025-03-07 09:05:03", "20250307_090503-name.zip"},
        // Unpadded, these two moments would both be "2025111_111-name.zip".
        {"2025-01-11 01:01:01", "20250111_010101-name.zip"},
        {"2025-11-01 11:01:01", "20251101_110101-name.zip"},
    };
    for (const auto& [when, expected] : cases) {
        std::tm time{};
        std::istringstream(when) >> std::get_time(&time, "%Y-%m-%d %H:%M:%S");
        EXPECT_EQ(backupArchiveName(time, "name"), expected) << when;
    }
}

TEST(ProjectSaver, PruningRemovesTheOldestArchiveOfTheProjectOnePerCall) {
    Project p;
    ASSERT_TRUE(p.s.save());
    const fs::path backups = p.folder() / "backup";
    writeFile(backups / "notes.txt", "keep");
    // Archives named before padding and after it are pruned alike, by age.
    for (int i = 1; i <= 7; ++i) {
        writeFile(backups / ((i % 2 ? "2025310_10000" : "20250310_10000") + std::to_string(i) + "-Film.zip"),
                  "zip");
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
    auto archives = [&] {
        std::set<std::string> out;
        for (const auto& entry : fs::directory_iterator(backups))
            out.insert(entry.path().filename().string());
        return out;
    };
    p.s.pruneBackups();
    EXPECT_EQ(archives().count("2025310_100001-Film.zip"), 0u);
    p.s.pruneBackups();
    EXPECT_EQ(archives().count("20250310_100002-Film.zip"), 0u);
    p.s.pruneBackups();
    EXPECT_EQ(archives().size(), 6u);
    EXPECT_EQ(archives().count("notes.txt"), 1u);
    // A tick over the limit removes one and adds one.
    writeFile(backups / "2025310_100008-Film.zip", "zip");
    p.s.backupTick();
    const auto after = archives();
    EXPECT_EQ(after.size(), 7u);
    EXPECT_EQ(after.count("2025310_100003-Film.zip"), 0u);
}

TEST(ProjectSaver, TheBackupTimerFollowsThePreferences) {
    SharedStuff s;
    s.timeInMinBackup = 0.5;
    s.restartBackupTimer();
    EXPECT_TRUE(s.timer.valid && s.timer.intervalSeconds == 30.0);
}

TEST(ProjectSaver, AnUnreachableProjectMovesWhereTheUserSays) {
    ScriptedInteraction user;
    Project p(&user);
    RecordingWindow window;
    p.s.mainWindow = &window;
    p.s.currentFolder = (p.dir.path / "unmounted" / "volume").string();
    const fs::path chosen = p.dir.path / "new place";
    fs::create_directories(chosen);
    user.queueAlert("Proceed");
    user.queueFolder(chosen);
    ASSERT_TRUE(p.s.save());
    ASSERT_EQ(user.alerts().size(), 1u);
    EXPECT_EQ(user.alerts()[0].title, "Project path unreachable");
    EXPECT_EQ(user.alerts()[0].text,
              "The project's path is not reachable. Do you want to choose the new project's path?");
    EXPECT_EQ(user.folderRequests().at(0).title, "Select parent folder where to save the project");
    EXPECT_EQ(user.folderRequests().at(0).message,
              "Project's path not reachable: please select new parent folder");
    EXPECT_EQ(p.s.currentFolder, chosen.string());
    EXPECT_EQ(window.calls, (Names{"fog on", "title", "lists", "fog off"}));
    EXPECT_EQ(user.logLines().at(0),
              (ScriptedInteraction::LogLine{"Successfully saved to " + (chosen / "Film").string(), true,
                                            "Project Saved", NotificationType::OK}));
    EXPECT_EQ(readFile(chosen / "Film" / "tarelproject"), projectFileText(p.s));
    EXPECT_FALSE(fs::exists(p.dir.path / "unmounted"));

    // Declined, or no folder chosen: nothing is saved.
    for (const char* answer : {"Cancel", "Proceed"}) {
        SCOPED_TRACE(answer);
        ScriptedInteraction refusing;
        Project unsaved(&refusing);
        unsaved.s.mainWindow = &window;
        unsaved.s.currentFolder = (unsaved.dir.path / "gone").string();
        refusing.queueAlert(answer);
        refusing.queueFolder(std::nullopt);
        EXPECT_FALSE(unsaved.s.save());
        EXPECT_EQ(refusing.folderRequests().size(), answer[0] == 'P' ? 1u : 0u);
        if (answer[0] == 'P') {
            EXPECT_EQ(refusing.logLines().at(0),
                      (ScriptedInteraction::LogLine{"No new path specified, cannot save", false, "",
                                                    NotificationType::KO}));
        }
        EXPECT_EQ(unsaved.s.currentFolder, (unsaved.dir.path / "gone").string());
    }
}
