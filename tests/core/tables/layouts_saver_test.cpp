#include "base/console.h"
#include "base/saveable.h"
#include "base/text_file.h"
#include "layout_test_support.h"
#include "tables/layouts_loader.h"
#include "tables/layouts_saver.h"

#include <gtest/gtest.h>

using namespace lumbra::tables;
using namespace lumbra::tables::testing;
namespace base = lumbra::base;
namespace fs = std::filesystem;

namespace {

constexpr const char* dailiesId = "11111111-1111-4111-8111-111111111111";
constexpr const char* emptyId = "22222222-2222-4222-8222-222222222222";

// Two layouts with fixed uuids, saved once under `base`.
struct SavedProject {
    explicit SavedProject(std::string folder) : base(std::move(folder)) {
        auto dailies =
            std::make_shared<ColumnsLayout>("Dailies", std::vector<std::string>{"Name", "Start", "Take"});
        dailies->colwidths = {{"Start", 100.0}, {"Take", 42.5}};
        dailies->setUuid(dailiesId);
        auto empty = std::make_shared<ColumnsLayout>("Empty");
        empty->setUuid(emptyId);
        p.layouts = {dailies, empty};
    }
    bool save(base::Notifications* notes = nullptr) { return LayoutsSaver(p, base).saveAll(notes); }
    bool saveReadOnly(base::Notifications* notes) {
        ReadOnlyFolder locked(base);
        return save(notes);
    }
    ColumnsLayout& dailies() { return *p.layouts[0]; }

    ProjectLayouts p;
    std::string base;
};

const std::string dailiesFolder = std::string("Dailies - ") + dailiesId;
const std::string emptyFolder = std::string("Empty - ") + emptyId;

} // namespace

TEST(LayoutsSaver, FirstSaveWritesOneFolderPerLayoutAndASecondTouchesNoFile) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    base::PrintCapture capture;
    ASSERT_TRUE(project.save());
    EXPECT_EQ(listTree(project.base),
              (std::set<std::string>{dailiesFolder + "/", dailiesFolder + "/lumbra_details",
                                     dailiesFolder + "/Dailies.layout", emptyFolder + "/",
                                     emptyFolder + "/lumbra_details", emptyFolder + "/Empty.layout"}));
    EXPECT_EQ(fileBytes(project.base + "/" + dailiesFolder + "/Dailies.layout"),
              "Dailies\nName\nStart\t100.0\nTake\t42.5");
    EXPECT_EQ(fileBytes(project.base + "/" + emptyFolder + "/Empty.layout"), "Empty");
    EXPECT_EQ(lumbra::base::readDetailsLine(project.base + "/" + emptyFolder, 1), emptyId);
    EXPECT_EQ(capture.lines(), (std::vector<std::string>{"saving layout Dailies", "saving layout Empty"}));
    EXPECT_FALSE(project.dailies().hasChanged);

    LayoutList back = LayoutsLoader(project.base).loadAll(nullptr);
    ProjectLayouts loaded;
    loaded.layouts = back;
    loaded.sortLayouts();
    ASSERT_EQ(loaded.layouts.size(), 2u);
    EXPECT_EQ(loaded.layouts[0]->name, "Dailies");
    EXPECT_EQ(loaded.layouts[0]->columns, project.dailies().columns);
    EXPECT_EQ(loaded.layouts[0]->colwidths, project.dailies().colwidths);
    EXPECT_EQ(loaded.layouts[0]->uuid(), dailiesId);
    EXPECT_EQ(loaded.layouts[1]->name, "Empty");

    auto tree = listTree(project.base);
    auto times = ageFiles(project.base);
    base::PrintCapture second;
    ASSERT_TRUE(project.save());
    EXPECT_EQ(listTree(project.base), tree);
    EXPECT_EQ(fileTimes(project.base), times);
    EXPECT_TRUE(second.lines().empty());
}

TEST(LayoutsSaver, ARenameMovesTheFolderAndWritesTheNewFile) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    ASSERT_TRUE(project.save());
    project.dailies().name = "Rushes";
    project.dailies().hasChanged = true;
    base::PrintCapture capture;
    ASSERT_TRUE(project.save());
    std::string from = project.base + "/" + dailiesFolder;
    std::string to = project.base + "/Rushes - " + dailiesId;
    EXPECT_TRUE(capture.contains("moving " + from + " to " + to));
    EXPECT_EQ(
        listTree(project.base),
        (std::set<std::string>{"Rushes - " + std::string(dailiesId) + "/",
                               "Rushes - " + std::string(dailiesId) + "/lumbra_details",
                               "Rushes - " + std::string(dailiesId) + "/Rushes.layout", emptyFolder + "/",
                               emptyFolder + "/lumbra_details", emptyFolder + "/Empty.layout"}));
    EXPECT_EQ(fileBytes(to + "/Rushes.layout"), "Rushes\nName\nStart\t100.0\nTake\t42.5");
    auto back = LayoutsLoader(project.base).loadLayout(to, nullptr);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->name, "Rushes");
}

TEST(LayoutsSaver, AFolderRenamedByHandIsMovedBackWithoutWriting) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    ASSERT_TRUE(project.save());
    fs::rename(project.base + "/" + dailiesFolder, project.base + "/renamed by hand");
    auto times = ageFiles(project.base);
    ASSERT_TRUE(project.save());
    EXPECT_FALSE(fs::exists(project.base + "/renamed by hand"));
    using Times = std::map<std::string, fs::file_time_type>;
    Times moved;
    for (auto [path, time] : times) {
        if (auto at = path.find("renamed by hand"); at != std::string::npos)
            path.replace(at, 15, dailiesFolder);
        moved.emplace(path, time);
    }
    auto after = fileTimes(project.base);
    EXPECT_EQ(Times(after.begin(), after.end()), moved);
}

TEST(LayoutsSaver, FoldersOfLayoutsNoLongerListedAreRemoved) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    ASSERT_TRUE(project.save());
    dir.write("layout/Foreign - F/lumbra_details", "FFFFFFFF-0000-4000-8000-000000000000");
    dir.write("layout/no details/keep.txt", "kept");
    dir.write("layout/loose.layout", "kept");
    project.p.layouts.erase(project.p.layouts.begin());
    ASSERT_TRUE(project.save());
    EXPECT_EQ(listTree(project.base),
              (std::set<std::string>{emptyFolder + "/", emptyFolder + "/lumbra_details",
                                     emptyFolder + "/Empty.layout", "no details/", "no details/keep.txt",
                                     "loose.layout"}));
}

TEST(LayoutsSaver, AFailedMoveIsReportedAndChangesNothing) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    ASSERT_TRUE(project.save());
    project.dailies().name = "Rushes";
    project.dailies().hasChanged = true;
    auto tree = listTree(project.base);
    base::Notifications notes;
    base::PrintCapture capture;
    bool saved = project.saveReadOnly(&notes);
    EXPECT_FALSE(saved);
    EXPECT_EQ(listTree(project.base), tree);
    std::string where = "Rushes from " + project.base + "/" + dailiesFolder + " to " + project.base +
                        "/Rushes - " + dailiesId;
    EXPECT_TRUE(capture.contains("ERROR moving folder for " + where));
    ASSERT_FALSE(notes.empty());
    EXPECT_EQ(notes.front(), base::NotificationData("Moving error", "Error moving folder for " + where,
                                                    base::NotificationType::KO));
    EXPECT_TRUE(project.dailies().hasChanged);
}

TEST(LayoutsSaver, AFailedSaveIsReportedAndTheOthersStillSave) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    ASSERT_TRUE(project.save());
    project.dailies().columns.push_back("Scene");
    project.dailies().hasChanged = true;
    auto extra = std::make_shared<ColumnsLayout>("Extra", std::vector<std::string>{"Tape"});
    project.p.layouts.push_back(extra);
    base::Notifications notes;
    base::setWriteFailureHook([](const std::string& path) { return path.ends_with("Dailies.layout"); });
    bool saved = project.save(&notes);
    base::setWriteFailureHook({});
    EXPECT_FALSE(saved);
    std::string path = project.base + "/" + dailiesFolder + "/Dailies.layout";
    EXPECT_EQ(fileBytes(path), "Dailies\nName\nStart\t100.0\nTake\t42.5");
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0], base::NotificationData("Error saving layout", "Error saving " + path,
                                               base::NotificationType::KO));
    EXPECT_EQ(fileBytes(project.base + "/Extra - " + extra->uuid() + "/Extra.layout"), "Extra\nTape");
    // The change is still to be saved, and the next save writes it.
    EXPECT_TRUE(project.dailies().hasChanged);
    EXPECT_FALSE(extra->hasChanged);
    ASSERT_TRUE(project.save());
    EXPECT_EQ(fileBytes(path), "Dailies\nName\nStart\t100.0\nTake\t42.5\nScene");
}

TEST(LayoutsSaver, AFolderThatCannotBeRemovedIsOnlyPrinted) {
    TempDir dir;
    SavedProject project(dir.file("layout"));
    ASSERT_TRUE(project.save());
    project.p.layouts.pop_back();
    base::Notifications notes;
    base::PrintCapture capture;
    bool saved = project.saveReadOnly(&notes);
    EXPECT_TRUE(saved);
    EXPECT_TRUE(notes.empty());
    EXPECT_TRUE(capture.contains("ERROR removing " + project.base + "/" + emptyFolder));
    EXPECT_TRUE(fs::exists(project.base + "/" + emptyFolder + "/Empty.layout"));
}

TEST(LayoutsSaver, FolderUuidsComeFromTheDetailsOfDirectSubfolders) {
    TempDir dir;
    dir.write("base/a/lumbra_details", "AAA\n1.0");
    dir.write("base/b/lumbra_details", "\n");
    dir.write("base/c/x.txt", "x");
    dir.write("base/a/deep/lumbra_details", "DEEP");
    dir.write("base/file/lumbra_details.txt", "FILE");
    dir.write("base/lumbra_details", "BASE");
    ProjectLayouts p;
    EXPECT_EQ(LayoutsSaver(p, dir.file("base")).folderUuids(), std::vector<std::string>{"AAA"});
    EXPECT_TRUE(LayoutsSaver(p, dir.file("missing")).folderUuids().empty());
}

TEST(LayoutsSaver, ASlashInANameStaysOutOfThePaths) {
    TempDir dir;
    ProjectLayouts p;
    auto layout = std::make_shared<ColumnsLayout>("Day/Night", std::vector<std::string>{"A"});
    p.layouts.push_back(layout);
    ASSERT_TRUE(LayoutsSaver(p, dir.path()).saveAll(nullptr));
    std::string folder = "Day_Night - " + layout->uuid();
    EXPECT_EQ(listTree(dir.path()), (std::set<std::string>{folder + "/", folder + "/lumbra_details",
                                                           folder + "/Day_Night.layout"}));
    LayoutList back = LayoutsLoader(dir.path()).loadAll(nullptr);
    ASSERT_EQ(back.size(), 1u);
    EXPECT_EQ(back[0]->name, "Day/Night");
}
