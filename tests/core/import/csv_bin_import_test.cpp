#include "base/console.h"
#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "core/tables/table_test_support.h"
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
    // The bin's columns and rows as `shown` shows a table.
    static std::string shownBin(const project::Bin& bin) {
        std::string out = tables::testing::joined(bin.table()->cols);
        for (const auto& entry : bin.table()->data)
            out += " [" + tables::testing::shownRow(entry->data(), bin.table()->cols) + "]";
        return out;
    }

    TempFolder m_folder;
    base::ScriptedInteraction m_user;
    project::SharedStuff m_project{&m_user};
    base::PrintCapture m_quiet;
};

TEST_F(CsvBinImportTest, OneQuestionServesEveryCsvOfTheBatchAndEachTsvAsksItsOwn) {
    const CsvOptions tab{.separator = U'\t'};
    m_user.queueCsvOptions({.separator = U';'});
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
    EXPECT_EQ(shownBin(*result.bins[0]), "Name|Tape [Name=A|Tape=B]");
    EXPECT_EQ(shownBin(*result.bins[2]), "X|Y [X=1|Y=2]");
    EXPECT_EQ(shownBin(*result.bins[3]), "P|Q [P=3|Q=4]");
    // A table of the CSV reader gets a layout of all its columns, named after it.
    EXPECT_EQ(result.bins[2]->table()->tablename, "three");
    EXPECT_EQ(result.bins[2]->layout->name, "*three");
    EXPECT_EQ(result.bins[2]->layout->columns, (std::vector<std::string>{"X", "Y"}));
}

TEST_F(CsvBinImportTest, CancelledQuestionLoadsNothingOfTheBatch) {
    m_user.queueCsvOptions({.user_aborted = true});
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
    m_user.queueCsvOptions(CsvOptions{});
    m_user.queueCsvOptions({.user_aborted = true});
    const std::string tsv = file("four.tsv", "P\tQ\n");
    const std::string csv = file("one.csv", "A\n1,2\n");
    auto result = project::addBinsFromFiles(m_project, {csv, tsv});
    ASSERT_EQ(result.bins.size(), 1u);
    ASSERT_EQ(result.failures.size(), 1u);
    EXPECT_EQ(result.failures[0].path, tsv);
    EXPECT_TRUE(m_quiet.contains("ERROR while opening " + tsv + ": User aborted the import operation"));
    ASSERT_GE(result.notifications.size(), 2u);
    EXPECT_EQ(result.notifications[0].title, "Bizarre columns count");
    EXPECT_EQ(result.notifications[1].body,
              csv + ": the file does not name the columns newcol_001, so Lumbra named them");
}

} // namespace
} // namespace lumbra::import
