#include "project/bin_import.h"
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
    std::vector<std::string> topNames() const { return testing::childNames(*m_project.bins); }

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
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(importExtension(path), expected) << path;
}

TEST_F(BinImportTest, ProjectHeadingReplacesTheFilesAndTheFilesIsKept) {
    m_project.tlResolution = "720";
    m_project.sound = "";
    BinImportResult result = addBinsFromFiles(m_project, {file("clips.ale", aleFile("25", "1080"))});
    ASSERT_EQ(result.bins.size(), 1u);
    Bin& bin = *result.bins[0];
    const tables::ALETable& table = *bin.table();
    // An empty project value takes the file's; no tape id in the project leaves the tape alone.
    EXPECT_EQ(std::tie(table.fps, table.video_format, table.audio_format, table.tape),
              std::make_tuple("25", "720", "48khz", "A001"));
    EXPECT_EQ(std::tie(bin.originalmeta_videoformat, bin.originalmeta_audioformat, bin.originalmeta_tape),
              std::make_tuple("1080", "48khz", "A001"));
    EXPECT_FALSE(bin.originalmeta_filmformat);
    ASSERT_EQ(result.mismatches.size(), 1u);
    EXPECT_EQ(result.mismatches[0].differences, std::vector<std::string>{"vf"});
    EXPECT_EQ(bin.layout, m_project.projectLayouts.baseLayout);
    EXPECT_TRUE(m_project.something_to_save);
}

TEST_F(BinImportTest, MismatchesGroupBySetOfDifferences) {
    m_project.tapeId = "T9";
    BinImportResult result = addBinsFromFiles(m_project, {file("a.ale", aleFile("24", "1080")),
                                                          file("b.ale", aleFile("25", "1080")),
                                                          file("c.ale", aleFile("24", "1080"))});
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
    BinImportResult none = addBinsFromFiles(m_project, {file("a.txt", "x")});
    EXPECT_TRUE(none.bins.empty() && none.notifications.empty());
    EXPECT_FALSE(m_project.something_to_save);
    m_project.maxShowBinToImport = 2;
    std::string good = file("clips.ale", aleFile("25", "1080"));
    std::string bad = (m_folder.path / "missing.ale").string();
    BinImportResult result = addBinsFromFiles(m_project, {good, bad, file("notes.txt", "text"), good, good});
    ASSERT_EQ(result.bins.size(), 3u);
    EXPECT_EQ(topNames(), (std::vector<std::string>{"clips", "clips_02", "clips_03"}));
    EXPECT_EQ(
        std::make_tuple(result.bins[0]->selected(), result.bins[1]->selected(), result.bins[2]->selected()),
        std::make_tuple(true, true, false));
    EXPECT_EQ(result.failures, (std::vector<import::ReadFailure>{{bad, "the file does not exist", {}}}));
    ASSERT_FALSE(result.notifications.empty());
    EXPECT_EQ(result.notifications.back(),
              base::NotificationData("Many bins added", "Didn't show all the added bins to avoid cluttering",
                                     NotificationType::WARNING));
    EXPECT_EQ(m_project.bufferedNotifications.front(),
              base::NotificationData("", "ERROR while opening " + bad + ": the file does not exist",
                                     NotificationType::KO));
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
    EXPECT_EQ(testing::childNames(*group), (std::vector<std::string>{"clips", "x", "y", "clips_02"}));
    EXPECT_EQ(m_project.bins->children.size(), 1u);
    EXPECT_EQ(m_project.bins->toarray.size(), 4u);
}

} // namespace
} // namespace lumbra::project
