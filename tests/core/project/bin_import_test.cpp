#include "base/console.h"
#include "project/bin_import.h"
#include "project/shared_stuff.h"
#include "project_test_support.h"

#include <gtest/gtest.h>

namespace lumbra::project {
namespace {

using base::NotificationType;
using testing::TempFolder;
using testing::writeFile;

std::string aleFile(const std::string& fps, const std::string& videoFormat) {
    return "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t" + videoFormat + "\nFPS\t" + fps +
           "\nAUDIO_FORMAT\t48khz\nTAPE\tA001\n\nColumn\nName\tStart\n\nData\nC1\t10:00:00:00\nC2\t10:00:01:"
           "00\n";
}

class BinImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_project.autosave = false;
        m_project.fps = "25";
        m_project.tlResolution = "1080";
        m_project.projectLayouts.baseLayout = std::make_shared<tables::ColumnsLayout>("Default");
    }
    std::string file(const std::string& name, const std::string& text) {
        writeFile(m_folder.path / name, text);
        return (m_folder.path / name).string();
    }
    std::vector<std::string> topNames() const {
        std::vector<std::string> names;
        for (const auto& child : m_project.bins->children)
            names.push_back(child->name());
        return names;
    }

    TempFolder m_folder;
    SharedStuff m_project;
    base::PrintCapture m_quiet;
};

TEST(BinImportExtension, LastFourOrSevenCharactersInLowerCase) {
    const std::vector<std::pair<std::string, std::string>> cases{{"/a/clips.ALE", ".ale"},
                                                                 {"x.FCPXML", ".fcpxml"},
                                                                 {"edit.xml", ".xml"},
                                                                 {"ab", "ab"},
                                                                 {"/a/.ale", ".ale"}};
    for (const auto& [path, expected] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(importExtension(path), expected);
    }
}

TEST_F(BinImportTest, ProjectHeadingReplacesTheFilesAndTheFilesIsKept) {
    m_project.tlResolution = "720";
    m_project.sound = "";
    std::string path = file("clips.ale", aleFile("25", "1080"));
    BinImportResult result = addBinsFromFiles(m_project, {path});
    ASSERT_EQ(result.bins.size(), 1u);
    Bin& bin = *result.bins[0];
    const tables::ALETable& table = *bin.table();
    EXPECT_EQ(table.fps, "25");
    EXPECT_EQ(table.video_format, "720");
    // An empty project value takes the file's; no tape id in the project leaves the tape alone.
    EXPECT_EQ(table.audio_format, "48khz");
    EXPECT_EQ(table.tape, "A001");
    EXPECT_EQ(bin.originalmeta_videoformat, "1080");
    EXPECT_EQ(bin.originalmeta_audioformat, "48khz");
    EXPECT_EQ(bin.originalmeta_tape, "A001");
    EXPECT_FALSE(bin.originalmeta_filmformat);
    ASSERT_EQ(result.mismatches.size(), 1u);
    EXPECT_EQ(result.mismatches[0].differences, std::vector<std::string>{"vf"});
    EXPECT_EQ(bin.layout, m_project.projectLayouts.baseLayout);
    EXPECT_TRUE(m_project.something_to_save);
}

TEST_F(BinImportTest, MismatchesGroupBySetOfDifferences) {
    m_project.tapeId = "T9";
    std::vector<std::string> paths{file("a.ale", aleFile("24", "1080")), file("b.ale", aleFile("25", "1080")),
                                   file("c.ale", aleFile("24", "1080"))};
    BinImportResult result = addBinsFromFiles(m_project, paths);
    ASSERT_EQ(result.mismatches.size(), 2u);
    EXPECT_EQ(result.mismatches[0].differences, (std::vector<std::string>{"fps", "tape"}));
    EXPECT_EQ(result.mismatches[0].bins.size(), 2u);
    EXPECT_EQ(result.mismatches[1].differences, std::vector<std::string>{"tape"});
    EXPECT_EQ(result.bins[1]->table()->tape, "T9");
    const base::Notifications expected{
        {"Metadata mismatch", "2 Bins Metadata Mismatch. Click here to view/correct",
         NotificationType::WARNING},
        {"Metadata mismatch", "1 Bins Metadata Mismatch. Click here to view/correct",
         NotificationType::WARNING},
        {"Load OK", "Successfully loaded 3 bins", NotificationType::OK}};
    EXPECT_EQ(result.notifications, expected);
    EXPECT_EQ(m_project.bufferedNotifications, expected);
}

TEST_F(BinImportTest, CapOpensTheFirstBinsAndBadFilesDoNotStopTheBatch) {
    m_project.maxShowBinToImport = 2;
    std::string good = file("clips.ale", aleFile("25", "1080"));
    std::string bad = (m_folder.path / "missing.ale").string();
    std::string unknown = file("notes.txt", "text");
    BinImportResult result = addBinsFromFiles(m_project, {good, bad, unknown, good, good});
    ASSERT_EQ(result.bins.size(), 3u);
    EXPECT_EQ(topNames(), (std::vector<std::string>{"clips", "clips_02", "clips_03"}));
    EXPECT_TRUE(result.bins[0]->selected());
    EXPECT_TRUE(result.bins[1]->selected());
    EXPECT_FALSE(result.bins[2]->selected());
    EXPECT_EQ(result.failures, (std::vector<import::ReadFailure>{{bad, "the file does not exist", {}}}));
    EXPECT_EQ(m_project.bins->toarray.size(), 3u);
    ASSERT_FALSE(result.notifications.empty());
    EXPECT_EQ(result.notifications.back(),
              base::NotificationData("Many bins added", "Didn't show all the added bins to avoid cluttering",
                                     NotificationType::WARNING));
    EXPECT_EQ(m_project.bufferedNotifications.front(),
              base::NotificationData("", "ERROR while opening " + bad + ": the file does not exist",
                                     NotificationType::KO));
}

TEST_F(BinImportTest, NothingReadableChangesNothing) {
    BinImportResult result = addBinsFromFiles(m_project, {file("a.txt", "x")});
    EXPECT_TRUE(result.bins.empty());
    EXPECT_TRUE(result.notifications.empty());
    EXPECT_FALSE(m_project.something_to_save);
}

TEST_F(BinImportTest, DroppedOnAGroupOrOnABinInIt) {
    auto group = std::make_shared<BinsTreeEntry>("Group_01", nullptr, std::vector<TreeNode>{}, &m_project);
    m_project.bins->addChild(group);
    std::string path = file("clips.ale", aleFile("25", "1080"));
    addBinsFromFiles(m_project, {path, path}, {group.get(), -1});
    ASSERT_EQ(group->children.size(), 2u);
    // Dropped on the first bin of the group at place 1: both new bins go in there, in file order.
    addBinsFromFiles(m_project, {file("x.ale", aleFile("25", "1080")), file("y.ale", aleFile("25", "1080"))},
                     {group->children[0].get(), 1});
    std::vector<std::string> names;
    for (const auto& child : group->children)
        names.push_back(child->name());
    EXPECT_EQ(names, (std::vector<std::string>{"clips", "x", "y", "clips_02"}));
    EXPECT_EQ(m_project.bins->children.size(), 1u);
    EXPECT_EQ(m_project.bins->toarray.size(), 4u);
}

} // namespace
} // namespace lumbra::project
