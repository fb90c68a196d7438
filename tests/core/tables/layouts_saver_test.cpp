#include "base/console.h"
#include "base/saveable.h"
#include "base/text_file.h"
#include "layout_test_support.h"
#include "tables/layouts_saver.h"

#include <gtest/gtest.h>

using namespace lumbra::tables;
using namespace lumbra::tables::testing;
namespace base = lumbra::base;
namespace fs = std::filesystem;
using Tree = std::set<std::string>;

namespace {

const std::string dailiesId = "11111111-1111-4111-8111-111111111111";
const std::string dailiesFolder = "Dailies - " + dailiesId;
const std::string emptyFolder = "Empty - 22222222-2222-4222-8222-222222222222";
const std::string dailiesText = "Dailies\nName\nStart\t100.0\nTake\t42.5";

// The files of a saved layout folder.
Tree layoutFolder(const std::string& folder, const std::string& file) {
    return {folder + "/", folder + "/lumbra_details", folder + "/" + file};
}

Tree operator+(Tree a, const Tree& b) {
    a.insert(b.begin(), b.end());
    return a;
}

// Two layouts with fixed uuids, saved once under `base`.
struct SavedProject {
    explicit SavedProject(const TempDir& dir) : base(dir.file("layout")) {
        p.layouts = {
            std::make_shared<ColumnsLayout>("Dailies", std::vector<std::string>{"Name", "Start", "Take"}),
            std::make_shared<ColumnsLayout>("Empty")};
        dailies().colwidths = {{"Start", 100.0}, {"Take", 42.5}};
        dailies().setUuid(dailiesId);
        p.layouts[1]->setUuid("22222222-2222-4222-8222-222222222222");
        EXPECT_TRUE(save());
    }
    bool save(base::Notifications* notes = nullptr) { return LayoutsSaver(p, base).saveAll(notes); }
    bool saveReadOnly(base::Notifications* notes) {
        ReadOnlyFolder locked(base);
        return save(notes);
    }
    ColumnsLayout& dailies() { return *p.layouts[0]; }
    void renameDailies() {
        dailies().name = "Rushes";
        dailies().hasChanged = true;
    }

    ProjectLayouts p;
    std::string base;
};

} // namespace

TEST(LayoutsSaver, FirstSaveWritesOneFolderPerLayoutAndASecondTouchesNoFile) {
    TempDir dir;
    base::PrintCapture capture;
    SavedProject project(dir);
    EXPECT_EQ(listTree(project.base),
              layoutFolder(dailiesFolder, "Dailies.layout") + layoutFolder(emptyFolder, "Empty.layout"));
    EXPECT_EQ(fileBytes(project.base + "/" + dailiesFolder + "/Dailies.layout"), dailiesText);
    EXPECT_EQ(capture.lines(), (std::vector<std::string>{"saving layout Dailies", "saving layout Empty"}));
    EXPECT_FALSE(project.dailies().hasChanged);

    auto times = ageFiles(project.base);
    base::PrintCapture second;
    ASSERT_TRUE(project.save());
    EXPECT_EQ(fileTimes(project.base), times);
    EXPECT_TRUE(second.lines().empty());
}

TEST(LayoutsSaver, ARenameMovesTheFolderAndAFolderRenamedByHandIsMovedBackWithoutWriting) {
    TempDir dir;
    SavedProject project(dir);
    fs::rename(project.base + "/" + dailiesFolder, project.base + "/renamed by hand");
    auto times = ageFiles(project.base);
    ASSERT_TRUE(project.save());
    std::map<std::string, fs::file_time_type> moved;
    for (auto [path, time] : times) {
        if (auto at = path.find("renamed by hand"); at != std::string::npos)
            path.replace(at, 15, dailiesFolder);
        moved.emplace(path, time);
    }
    auto after = fileTimes(project.base);
    EXPECT_EQ(decltype(moved)(after.begin(), after.end()), moved);

    project.renameDailies();
    base::PrintCapture capture;
    ASSERT_TRUE(project.save());
    const std::string to = project.base + "/Rushes - " + dailiesId;
    EXPECT_TRUE(capture.contains("moving " + project.base + "/" + dailiesFolder + " to " + to));
    EXPECT_EQ(listTree(project.base), layoutFolder("Rushes - " + dailiesId, "Rushes.layout") +
                                          layoutFolder(emptyFolder, "Empty.layout"));
    EXPECT_EQ(fileBytes(to + "/Rushes.layout"), "Rushes\nName\nStart\t100.0\nTake\t42.5");
}

TEST(LayoutsSaver, FoldersOfLayoutsNoLongerListedAreRemovedOrPrinted) {
    TempDir dir;
    SavedProject project(dir);
    dir.write("layout/Foreign - F/lumbra_details", "FFFFFFFF-0000-4000-8000-000000000000");
    dir.write("layout/no details/keep.txt", "kept");
    dir.write("layout/loose.layout", "kept");
    project.p.layouts.erase(project.p.layouts.begin());
    ASSERT_TRUE(project.save());
    EXPECT_EQ(listTree(project.base), (layoutFolder(emptyFolder, "Empty.layout") +
                                       Tree{"no details/", "no details/keep.txt", "loose.layout"}));

    // A folder that cannot be removed is only printed.
    project.p.layouts.clear();
    base::Notifications notes;
    base::PrintCapture capture;
    EXPECT_TRUE(project.saveReadOnly(&notes));
    EXPECT_TRUE(notes.empty());
    EXPECT_TRUE(capture.contains("ERROR removing " + project.base + "/" + emptyFolder));
    EXPECT_TRUE(fs::exists(project.base + "/" + emptyFolder + "/Empty.layout"));
}

TEST(LayoutsSaver, AFailedMoveIsReportedAndChangesNothing) {
    TempDir dir;
    SavedProject project(dir);
    project.renameDailies();
    auto tree = listTree(project.base);
    base::Notifications notes;
    base::PrintCapture capture;
    EXPECT_FALSE(project.saveReadOnly(&notes));
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
    SavedProject project(dir);
    project.dailies().columns.push_back("Scene");
    project.dailies().hasChanged = true;
    auto extra = std::make_shared<ColumnsLayout>("Extra/X", std::vector<std::string>{"Tape"});
    project.p.layouts.push_back(extra);
    base::Notifications notes;
    base::setWriteFailureHook([](const std::string& path) { return path.ends_with("Dailies.layout"); });
    EXPECT_FALSE(project.save(&notes));
    base::setWriteFailureHook({});
    std::string path = project.base + "/" + dailiesFolder + "/Dailies.layout";
    EXPECT_EQ(fileBytes(path), dailiesText);
    EXPECT_EQ(notes, base::Notifications{base::NotificationData("Error saving layout", "Error saving " + path,
                                                                base::NotificationType::KO)});
    // A slash of the name stays out of the paths.
    EXPECT_EQ(fileBytes(project.base + "/Extra_X - " + extra->uuid() + "/Extra_X.layout"), "Extra/X\nTape");
    // The change is still to be saved, and the next save writes it.
    EXPECT_TRUE(project.dailies().hasChanged);
    EXPECT_FALSE(extra->hasChanged);
    ASSERT_TRUE(project.save());
    EXPECT_EQ(fileBytes(path), dailiesText + "\nScene");
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
