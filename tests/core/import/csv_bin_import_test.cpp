#include "base/console.h"
#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "import/csv_options.h"
#include "project/bin.h"
#include "project/bin_import.h"
#include "project/shared_stuff.h"

#include <gtest/gtest.h>

namespace lumbra::import {
namespace {

using base::NotificationData;
using base::NotificationType;
using project::testing::TempFolder;
using project::testing::writeFile;

const std::string aleText = "Heading\nFIELD_DELIM\tTABS\nFPS\t25\n\nColumn\nName\n\nData\nC1\n";

class CsvBinImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_project.autosave = false;
        m_project.projectLayouts.baseLayout = std::make_shared<tables::ColumnsLayout>("Default");
    }
    std::string file(const std::string& name, const std::string& text) {
        writeFile(m_folder.path / name, text);
        return (m_folder.path / name).string();
    }
    std::vector<std::map<std::string, std::string>> rowsOf(const project::Bin& bin) const {
        std::vector<std::map<std::string, std::string>> rows;
        for (const auto& entry : bin.table()->data)
            rows.push_back(entry->data().toMap());
        return rows;
    }

    TempFolder m_folder;
    base::ScriptedInteraction m_user;
    project::SharedStuff m_project{&m_user};
    base::PrintCapture m_quiet;
};

TEST_F(CsvBinImportTest, OneQuestionServesEveryCsvOfTheBatchAndEachTsvAsksItsOwn) {
    CsvOptions semicolon;
    semicolon.separator = U';';
    CsvOptions tab;
    tab.separator = U'\t';
    m_user.queueCsvOptions(semicolon);
    m_user.queueCsvOptions(tab);
    auto result = project::addBinsFromFiles(
        m_project, {file("one.csv", "Name;Tape\r\nA;B\r\n"), file("two.ale", aleText),
                    file("three.CSV", "X;Y\n1;2\n"), file("four.tsv", "P\tQ\n3\t4\n")});
    ASSERT_EQ(m_user.csvRequests().size(), 2u);
    EXPECT_EQ(m_user.csvRequests()[0].first, "Name;Tape\nA;B\n");
    EXPECT_EQ(m_user.csvRequests()[0].second, CsvOptions{});
    EXPECT_EQ(m_user.csvRequests()[1].first, "P\tQ\n3\t4\n");
    EXPECT_EQ(m_user.csvRequests()[1].second, tab);
    EXPECT_EQ(m_user.unexpected(), 0);

    ASSERT_EQ(result.bins.size(), 4u);
    EXPECT_EQ(result.bins[0]->table()->cols, (std::vector<std::string>{"Name", "Tape"}));
    EXPECT_EQ(rowsOf(*result.bins[0]),
              (std::vector<std::map<std::string, std::string>>{{{"Name", "A"}, {"Tape", "B"}}}));
    EXPECT_EQ(rowsOf(*result.bins[2]),
              (std::vector<std::map<std::string, std::string>>{{{"X", "1"}, {"Y", "2"}}}));
    EXPECT_EQ(rowsOf(*result.bins[3]),
              (std::vector<std::map<std::string, std::string>>{{{"P", "3"}, {"Q", "4"}}}));
    // A table of the CSV reader gets a layout of all its columns, named after it.
    EXPECT_EQ(result.bins[2]->table()->tablename, "three");
    EXPECT_EQ(result.bins[2]->layout->name, "*three");
    EXPECT_EQ(result.bins[2]->layout->columns, (std::vector<std::string>{"X", "Y"}));
}

TEST_F(CsvBinImportTest, CancelledQuestionLoadsNothingOfTheBatch) {
    CsvOptions aborted;
    aborted.user_aborted = true;
    m_user.queueCsvOptions(aborted);
    auto result = project::addBinsFromFiles(
        m_project, {file("two.ale", aleText), file("one.csv", "A\n1\n"), file("three.csv", "A\n1\n")});
    EXPECT_TRUE(result.bins.empty());
    EXPECT_TRUE(m_project.bins->children.empty());
    EXPECT_EQ(m_user.csvRequests().size(), 1u);
    const NotificationData expected("Loading aborted", "User aborted the import operation",
                                    NotificationType::KO);
    EXPECT_EQ(result.notifications, base::Notifications{expected});
    EXPECT_EQ(m_project.bufferedNotifications, base::Notifications{expected});
}

TEST_F(CsvBinImportTest, CancelledTsvIsSkippedAndAddedColumnsAreTold) {
    CsvOptions aborted;
    aborted.user_aborted = true;
    m_user.queueCsvOptions(CsvOptions{});
    m_user.queueCsvOptions(aborted);
    const std::string tsv = file("four.tsv", "P\tQ\n");
    const std::string csv = file("one.csv", "A\n1,2\n");
    auto result = project::addBinsFromFiles(m_project, {csv, tsv});
    ASSERT_EQ(result.bins.size(), 1u);
    ASSERT_EQ(result.failures.size(), 1u);
    EXPECT_EQ(result.failures[0].path, tsv);
    EXPECT_TRUE(m_quiet.contains("ERROR while opening " + tsv + ": User aborted the import operation"));
    ASSERT_GE(result.notifications.size(), 2u);
    EXPECT_EQ(result.notifications[0],
              NotificationData("Bizarre columns count",
                               "1 columns were added to fit the data. Is the CSV well formatted?",
                               NotificationType::WARNING));
    EXPECT_EQ(result.notifications[1],
              NotificationData("Columns without a name",
                               csv + ": the file does not name the columns newcol_001, so Lumbra named them",
                               NotificationType::WARNING));
}

} // namespace
} // namespace lumbra::import
