#include "base/console.h"
#include "base/scripted_interaction.h"
#include "base/text_file.h"
#include "core/project/project_test_support.h"
#include "project/project_file.h"
#include "project/project_saver.h"
#include "project/shared_stuff.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <zip.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
using lumbra::base::NotificationType;
using lumbra::base::PrintCapture;
using lumbra::base::ScriptedInteraction;

namespace {

// A saved project "Film" under a temporary folder, with an open bin and a closed one.
struct Project {
    explicit Project(lumbra::base::UserInteraction* interaction = nullptr) : s(interaction) {
        s.currentFolder = dir.str();
        s.projectName = "Film";
        s.autosave = false;
        open = makeBin("bin_01", &s);
        open->setSelected(true);
        closed = makeBin("bin_02", &s);
        s.bins->addBin(open);
        s.bins->addBin(closed);
    }
    [[nodiscard]] fs::path folder() const { return dir.path / "Film"; }

    TempFolder dir;
    SharedStuff s;
    std::shared_ptr<Bin> open;
    std::shared_ptr<Bin> closed;
};

struct RecordingWindow : MainWindowLink {
    void setFog(bool shown) override { calls.push_back(shown ? "fog on" : "fog off"); }
    void refreshTitle() override { calls.push_back("title"); }
    void reloadBinsLists() override { calls.push_back("lists"); }
    std::vector<std::string> calls;
};

// The entry names of an archive, in its order, and the text of one entry.
struct ZipListing {
    std::vector<std::string> names;
    std::string projectFile;
};

ZipListing readZip(const std::string& path, const std::string& projectFileEntry) {
    ZipListing out;
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
    if (!archive)
        return out;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i)
        out.names.emplace_back(zip_get_name(archive, static_cast<zip_uint64_t>(i), 0));
    if (zip_file_t* file = zip_fopen(archive, projectFileEntry.c_str(), 0)) {
        char buffer[4096];
        for (zip_int64_t n; (n = zip_fread(file, buffer, sizeof buffer)) > 0;)
            out.projectFile.append(buffer, static_cast<std::size_t>(n));
        zip_fclose(file);
    }
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
};

std::size_t temporaryArchiveFolders() {
    std::size_t n = 0;
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path()))
        n += entry.path().filename().string().rfind("lumbra-archive-", 0) == 0;
    return n;
}

} // namespace

TEST(ProjectSaver, SaveWritesTheFolderInOrderAndDropsTheCache) {
    Project p;
    writeFile(p.folder() / "cache" / "scratch", "x");
    PrintCapture capture;
    ASSERT_TRUE(p.s.save());

    const std::vector<std::string> expected = {"saving project Film",
                                               "-- saving bins",
                                               "-- saving smartbins",
                                               "-- saving export presets",
                                               "-- saving report presets",
                                               "-- saving layout mapping presets",
                                               "-- saving dbs",
                                               "-- saving layouts",
                                               "-- saving pivots"};
    std::vector<std::string> seen;
    std::copy_if(capture.lines().begin(), capture.lines().end(), std::back_inserter(seen),
                 [&](const std::string& l) {
                     return std::find(expected.begin(), expected.end(), l) != expected.end();
                 });
    EXPECT_EQ(seen, expected);

    const auto tree = listTree(p.folder());
    EXPECT_EQ(tree.count("cache/"), 0u);
    EXPECT_EQ(readFile(p.folder() / "tarelproject"), projectFileText(p.s));
    EXPECT_EQ(readFile(p.folder() / ".selectionlist"), p.open->uuid() + "\n");
    for (Bin* bin : {p.open.get(), p.closed.get()}) {
        const std::string folder = "_bins_/" + binFolder(*bin) + "/";
        EXPECT_EQ(tree.count(folder + bin->displayName() + ".ale"), 1u) << folder;
        EXPECT_EQ(tree.count(folder + bin->displayName() + ".bin"), 1u) << folder;
    }
}

TEST(ProjectSaver, ASecondSaveRewritesNoBin) {
    Project p;
    ASSERT_TRUE(p.s.save());
    auto before = fileTimes(p.folder() / "_bins_");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    p.s.projectTags = {"changed"};
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(fileTimes(p.folder() / "_bins_"), before);
    EXPECT_EQ(readFile(p.folder() / "tarelproject"), projectFileText(p.s));
}

TEST(ProjectSaver, AFailedSaveKeepsTheRemovalsForTheNextSave) {
    Project p;
    ASSERT_TRUE(p.s.save());
    const fs::path deleted = p.folder() / "_bins_" / binFolder(*p.closed);
    TreeNode node = p.s.bins->handleOf(p.s.bins->entry(*p.closed));
    p.s.bins->removeChild(node.get(), true);
    p.s.saver().entriesToRemove.push_back(node);
    p.open->hasChanged = true;

    lumbra::base::setWriteFailureHook(
        [](const std::string& path) { return path.find("bin_01.ale") != std::string::npos; });
    const SaveResult saved = p.s.save();
    lumbra::base::setWriteFailureHook({});

    EXPECT_FALSE(saved);
    EXPECT_EQ(saved.unwritten, (std::vector<std::string>{p.open->displayName()}));
    EXPECT_EQ(p.s.saver().entriesToRemove.size(), 1u);
    EXPECT_TRUE(fs::exists(deleted));
    const auto& notes = p.s.bufferedNotifications;
    EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [&](const auto& n) {
        return n.title == "Save Failed" &&
               n.body == "Error while saving bins, not written: " + p.open->displayName() &&
               n.type == NotificationType::KO;
    }));

    EXPECT_TRUE(p.s.save());
    EXPECT_TRUE(p.s.saver().entriesToRemove.empty());
    EXPECT_FALSE(fs::exists(deleted));
}

TEST(ProjectSaver, AProjectFileThatCannotBeWrittenFailsTheSave) {
    Project p;
    ASSERT_TRUE(p.s.save());
    const std::string before = readFile(p.folder() / "tarelproject");
    p.s.gang = true;
    PrintCapture capture;
    lumbra::base::setWriteFailureHook(
        [](const std::string& path) { return path.find("tarelproject") != std::string::npos; });
    const bool saved = p.s.save();
    lumbra::base::setWriteFailureHook({});
    EXPECT_FALSE(saved);
    EXPECT_TRUE(capture.contains("ERROR while saving file " + p.folder().string() + "/tarelproject"));
    EXPECT_EQ(readFile(p.folder() / "tarelproject"), before);
}

TEST(ProjectSaver, ACopyTakesTheNextFreeNameAndLeavesTheProjectAsItWas) {
    Project p;
    ASSERT_TRUE(p.s.save());
    const TempFolder out;
    fs::create_directories(out.path / "Film");
    TreeNode gone = p.s.bins->handleOf(p.s.bins->entry(*p.closed));
    p.s.saver().entriesToRemove.push_back(gone);
    p.open->hasChanged = true;

    std::string copy;
    ASSERT_TRUE(p.s.saveCopy(out.str(), &copy));
    EXPECT_EQ(copy, (out.path / "Film_02").string());
    const auto tree = listTree(copy);
    EXPECT_EQ(tree.count("tarelproject"), 1u);
    EXPECT_EQ(tree.count("_bins_/" + binFolder(*p.closed) + "/bin_02.ale"), 1u);
    EXPECT_TRUE(p.open->hasChanged);
    EXPECT_EQ(p.s.saver().entriesToRemove.size(), 1u);
    EXPECT_EQ(p.s.projectName, "Film");
    EXPECT_EQ(p.s.currentFolder, p.dir.str());
}

TEST(ProjectSaver, CompressedCopiesKeepTheProjectNameAsTheirTopFolder) {
    const PrivateTempDir privateTemp;
    Project p;
    ASSERT_TRUE(p.s.save());
    const TempFolder out;
    const std::size_t temporaries = temporaryArchiveFolders();

    std::string first;
    std::string second;
    ASSERT_TRUE(p.s.saveCompressed(out.str(), &first));
    ASSERT_TRUE(p.s.saveCompressed(out.str(), &second));
    EXPECT_EQ(first, (out.path / "Film.zip").string());
    EXPECT_EQ(second, (out.path / "Film_02.zip").string());
    EXPECT_EQ(temporaryArchiveFolders(), temporaries);

    for (const std::string& archive : {first, second}) {
        SCOPED_TRACE(archive);
        const ZipListing zip = readZip(archive, "Film/tarelproject");
        const std::set<std::string> names(zip.names.begin(), zip.names.end());
        const std::string bin = "Film/_bins_/" + binFolder(*p.open) + "/";
        for (const std::string& wanted :
             {std::string("Film/"), std::string("Film/tarelproject"), std::string("Film/.selectionlist"),
              std::string("Film/_bins_/"), bin, bin + "lumbra_details", bin + "bin_01.ale",
              bin + "bin_01.bin"})
            EXPECT_EQ(names.count(wanted), 1u) << wanted;
        EXPECT_TRUE(std::all_of(zip.names.begin(), zip.names.end(),
                                [](const std::string& n) { return n.rfind("Film/", 0) == 0; }));
        EXPECT_EQ(zip.projectFile, projectFileText(p.s));
    }
}

TEST(ProjectSaver, BackupNamesArePaddedSoTheySortByTime) {
    struct Case {
        const char* name;
        int year, month, day, hour, minute, second;
        const char* expected;
    };
    const Case cases[] = {
        {"single digits", 2025, 3, 7, 9, 5, 3, "20250307_090503-name.zip"},
        {"double digits", 2024, 12, 31, 23, 59, 59, "20241231_235959-name.zip"},
        {"midnight", 2026, 1, 10, 0, 0, 0, "20260110_000000-name.zip"},
        // Unpadded, these two moments would both be "2025111_111-name.zip".
        {"11 January 01:01:01", 2025, 1, 11, 1, 1, 1, "20250111_010101-name.zip"},
        {"1 November 11:01:01", 2025, 11, 1, 11, 1, 1, "20251101_110101-name.zip"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::tm time{};
        time.tm_year = c.year - 1900;
        time.tm_mon = c.month - 1;
        time.tm_mday = c.day;
        time.tm_hour = c.hour;
        time.tm_min = c.minute;
        time.tm_sec = c.second;
        EXPECT_EQ(backupArchiveName(time, "name"), c.expected);
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
    EXPECT_EQ(archives().size(), 7u);
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
    EXPECT_EQ(
        std::count_if(after.begin(), after.end(), [](const std::string& n) { return n.find('-') != n.npos; }),
        6);
}

TEST(ProjectSaver, TheBackupTimerFollowsThePreferences) {
    SharedStuff s;
    RecordingWindow window;
    s.mainWindow = &window;
    EXPECT_FALSE(s.timer.valid);
    s.restartBackupTimer();
    EXPECT_TRUE(s.timer.valid);
    EXPECT_EQ(s.timer.intervalSeconds, 900.0);
    s.timeInMinBackup = 0.5;
    s.restartBackupTimer();
    EXPECT_EQ(s.timer.intervalSeconds, 30.0);
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
    EXPECT_EQ(user.alerts()[0].buttons, (std::vector<std::string>{"Proceed", "Cancel"}));
    EXPECT_EQ(user.folderRequests().at(0).title, "Select parent folder where to save the project");
    EXPECT_EQ(user.folderRequests().at(0).message,
              "Project's path not reachable: please select new parent folder");
    EXPECT_EQ(p.s.currentFolder, chosen.string());
    EXPECT_EQ(p.s.projectName, "Film");
    EXPECT_EQ(window.calls, (std::vector<std::string>{"fog on", "title", "lists", "fog off"}));
    const ScriptedInteraction::LogLine success{"Successfully saved to " + (chosen / "Film").string(), true,
                                               "Project Saved", NotificationType::OK};
    EXPECT_EQ(user.logLines().at(0), success);
    EXPECT_EQ(readFile(chosen / "Film" / "tarelproject"), projectFileText(p.s));
    EXPECT_FALSE(fs::exists(p.dir.path / "unmounted"));
    EXPECT_EQ(user.unexpected(), 0);
}

TEST(ProjectSaver, AnUnreachableProjectStaysUnsavedWhenTheUserDeclines) {
    ScriptedInteraction cancels;
    Project refused(&cancels);
    RecordingWindow window;
    refused.s.mainWindow = &window;
    refused.s.currentFolder = (refused.dir.path / "gone" / "away").string();
    cancels.queueAlert("Cancel");
    EXPECT_FALSE(refused.s.save());
    EXPECT_TRUE(cancels.folderRequests().empty());

    ScriptedInteraction noFolder;
    Project unchosen(&noFolder);
    unchosen.s.mainWindow = &window;
    unchosen.s.currentFolder = (unchosen.dir.path / "gone" / "away").string();
    noFolder.queueAlert("Proceed");
    noFolder.queueFolder(std::nullopt);
    EXPECT_FALSE(unchosen.s.save());
    const ScriptedInteraction::LogLine line{"No new path specified, cannot save", false, "",
                                            NotificationType::KO};
    EXPECT_EQ(noFolder.logLines(), std::vector<ScriptedInteraction::LogLine>{line});
    EXPECT_EQ(unchosen.s.currentFolder, (unchosen.dir.path / "gone" / "away").string());
}

TEST(ProjectSaver, AHandWrittenProjectFileOpensAndSavesInTheCurrentForm) {
    Project p;
    writeFile(p.folder() / "tarelproject",
              "Old Name\r\n"
              "fps\t24\r\n"
              "sound\t48000\r\n"
              "filmformat\t35mm\r\n"
              "gang\t2\r\n"
              "autosave\t0\r\n"
              "columnsdefaultwidth\tfittocontent\r\n"
              "baselayout\tName\tTape\r\n"
              "legacykey\tvalue\r\n"
              "maxNBackup\tmany\r\n"
              "statusBarRule\tcolumn\tTape\ttext\t: \toperation\tCOUNT ENTRIES\r\n");
    ASSERT_TRUE(readProjectFile((p.folder() / "tarelproject").string(), p.s, nullptr).has_value());
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(readFile(p.folder() / "tarelproject"), "Film\n"
                                                     "fps\t24\n"
                                                     "tlResolution\n"
                                                     "sound\t48000\n"
                                                     "filmformat\t35mm\n"
                                                     "gang\t0\n"
                                                     "saveff\t0\n"
                                                     "autosave\t0\n"
                                                     "archiveOriginalData\t1\n"
                                                     "columnsdefaultwidth\tfittocontent\n"
                                                     "baselayout\tName\tTape\n"
                                                     "projectlayout\tName\tTape\n"
                                                     "timeInMinBackup\t15.0\n"
                                                     "maxNBackup\t1\n"
                                                     "maxShowBinToImport\t5\n"
                                                     "statusBarRule2.0\t@{Tape}: #{COUNT ENTRIES}\n"
                                                     "binNamingRule\t@{All Bin Name}\n");
}

TEST(ProjectSaver, ABackupIsAnArchiveOfTheProjectInItsBackupFolder) {
    const PrivateTempDir privateTemp;
    Project p;
    ASSERT_TRUE(p.s.save());
    const std::size_t temporaries = temporaryArchiveFolders();
    std::string archive;
    ASSERT_TRUE(p.s.backup(&archive));
    EXPECT_EQ(fs::path(archive).parent_path(), p.folder() / "backup");
    const std::string name = fs::path(archive).filename().string();
    EXPECT_NE(name.find('_'), std::string::npos);
    EXPECT_EQ(name.substr(name.find('-')), "-Film.zip");
    const ZipListing zip = readZip(archive, "Film/tarelproject");
    EXPECT_EQ(zip.projectFile, projectFileText(p.s));
    EXPECT_EQ(temporaryArchiveFolders(), temporaries);
    // Backups within one second each keep an archive of their own.
    std::string second, third;
    ASSERT_TRUE(p.s.backup(&second));
    ASSERT_TRUE(p.s.backup(&third));
    EXPECT_EQ(std::set<std::string>({archive, second, third}).size(), 3u);
    EXPECT_EQ(std::distance(fs::directory_iterator(p.folder() / "backup"), fs::directory_iterator()), 3);
}
