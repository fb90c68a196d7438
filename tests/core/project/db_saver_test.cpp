#include "base/console.h"
#include "core/project/project_test_support.h"
#include "db/db_editing.h"
#include "project/db_saver.h"
#include "project/project_loader.h"
#include "project/project_saver.h"
#include "project/shared_stuff.h"
#include "tables/db_table.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace lumbra::project;
using namespace lumbra::db;
using namespace lumbra::project::testing;
namespace tables = lumbra::tables;
using lumbra::base::PrintCapture;
using lumbra::project::OpenResult;
using lumbra::project::SharedStuff;

namespace {

// A project "Film" under a temporary folder, saved by hand.
struct Project {
    Project() {
        s.currentFolder = dir.str();
        s.projectName = "Film";
        s.autosave = false;
    }
    [[nodiscard]] fs::path dbFolder() const { return dir.path / "Film" / "db"; }
    tables::DBTable& add(std::string name, std::vector<std::string> cols,
                         const std::vector<std::vector<std::string>>& rows) {
        auto table = std::make_shared<tables::CSVTable>(std::move(name));
        table->cols = std::move(cols);
        for (const auto& values : rows) {
            tables::DBEntry entry;
            for (std::size_t c = 0; c < values.size(); ++c) {
                if (!values[c].empty())
                    entry.data.set(table->cols[c], values[c]);
            }
            table->data.push_back(std::move(entry));
        }
        s.db.push_back(table);
        return *table;
    }
    // The project opened again from its folder.
    std::unique_ptr<SharedStuff> reopened() const {
        auto other = std::make_unique<SharedStuff>();
        other->currentFolder = dir.str();
        other->projectName = "Film";
        other->autosave = false;
        EXPECT_EQ(lumbra::project::openProject(*other), OpenResult::opened);
        return other;
    }

    TempFolder dir;
    SharedStuff s;
};

std::vector<std::vector<std::string>> rowsOf(const tables::DBTable& table) {
    std::vector<std::vector<std::string>> rows;
    for (const auto& entry : table.data) {
        std::vector<std::string> row;
        for (const auto& col : table.cols)
            row.emplace_back(entry.data.valueOr(col));
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace

TEST(DBSaving, ATableIsAFolderWithItsTabSeparatedFile) {
    Project p;
    tables::DBTable& shots =
        p.add("shots", {"Name", "Note", "Path"}, {{"A001", "x", "/a/b"}, {"A002", "", "c d"}});
    ASSERT_TRUE(p.s.save());
    const fs::path folder = p.dbFolder() / ("shots - " + shots.uuid());
    // Fields apart by a tab, records by a line feed, none after the last; a missing key is an empty field.
    EXPECT_EQ(readFile(folder / "shots.csv"), "Name\tNote\tPath\nA001\tx\t/a/b\nA002\t\tc d");
    EXPECT_TRUE(fs::exists(folder / "lumbra_details"));
    EXPECT_FALSE(shots.hasChanged);
}

TEST(DBSaving, AReopenedProjectHasTheSameTablesColumnsAndRows) {
    Project p;
    p.add("shots", {"Name", "Tape", "Size"}, {{"A001", "T1", "10"}, {"A002", "", "20"}, {"A003", "T3", ""}});
    p.add("sound", {"Scene", "Take"}, {{"12", "3"}});
    // Values that must be quoted to come back: a tab, a line feed, quotes, a leading quote.
    p.add("tricky", {"Say \"x\"", "Note"},
          {{"a\tb", "two\nlines"}, {"\"lead", "in \"quotes\""}, {"\"\"", "tail\"\t"}, {"\"", "x"}});
    ASSERT_TRUE(p.s.save());
    auto other = p.reopened();
    ASSERT_EQ(other->db.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(p.s.db[i]->name);
        tables::DBTable& loaded = *other->db[i];
        EXPECT_NE(dynamic_cast<tables::CSVTable*>(&loaded), nullptr);
        EXPECT_EQ(loaded.name, p.s.db[i]->name);
        EXPECT_EQ(loaded.uuid(), p.s.db[i]->uuid());
        EXPECT_EQ(loaded.cols, p.s.db[i]->cols);
        EXPECT_EQ(rowsOf(loaded), rowsOf(*p.s.db[i]));
        EXPECT_FALSE(loaded.hasChanged);
    }
}

TEST(DBSaving, ARenamedTableMovesItsFolderAndKeepsOneFile) {
    Project p;
    tables::DBTable& table = p.add("old", {"A"}, {{"1"}});
    ASSERT_TRUE(p.s.save());
    renameDatabase(p.s, table, "new");
    EXPECT_TRUE(table.hasChanged);
    PrintCapture capture;
    ASSERT_TRUE(p.s.save());
    const fs::path folder = p.dbFolder() / ("new - " + table.uuid());
    EXPECT_TRUE(capture.contains("moving " + (p.dbFolder() / ("old - " + table.uuid())).string() + " to " +
                                 folder.string()));
    EXPECT_EQ(listTree(p.dbFolder()), (std::set<std::string>{"new - " + table.uuid() + "/",
                                                             "new - " + table.uuid() + "/lumbra_details",
                                                             "new - " + table.uuid() + "/new.csv"}));
    auto other = p.reopened();
    ASSERT_EQ(other->db.size(), 1U);
    EXPECT_EQ(other->db[0]->name, "new");
}

TEST(DBSaving, ADeletedTableLeavesItsFolderUntilTheNextSave) {
    Project p;
    tables::DBTable& kept = p.add("kept", {"A"}, {{"1"}});
    tables::DBTable& gone = p.add("gone", {"A"}, {{"2"}});
    ASSERT_TRUE(p.s.save());
    const fs::path goneFolder = p.dbFolder() / ("gone - " + gone.uuid());
    ASSERT_TRUE(deleteDatabase(p.s, gone));
    EXPECT_EQ(p.s.db.size(), 1U);
    EXPECT_EQ(p.s.saver().dbsToRemove.size(), 1U);
    EXPECT_TRUE(fs::exists(goneFolder));
    tables::CSVTable stray("stray");
    EXPECT_FALSE(deleteDatabase(p.s, stray));
    ASSERT_TRUE(p.s.save());
    EXPECT_FALSE(fs::exists(goneFolder));
    EXPECT_TRUE(fs::exists(p.dbFolder() / ("kept - " + kept.uuid()) / "kept.csv"));
    EXPECT_TRUE(p.s.saver().dbsToRemove.empty());
}

TEST(DBSaving, AnUnchangedTableIsNotWrittenAgain) {
    Project p;
    tables::DBTable& table = p.add("shots", {"A"}, {{"1"}});
    ASSERT_TRUE(p.s.save());
    auto before = fileTimes(p.dbFolder());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(fileTimes(p.dbFolder()), before);
    ASSERT_TRUE(setCell(p.s, table, 0, "A", "2"));
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(readFile(p.dbFolder() / ("shots - " + table.uuid()) / "shots.csv"), "A\n2");
}

TEST(DBSaving, AFailedWriteIsToldAndTriedAgainAtTheNextSave) {
    Project p;
    tables::DBTable& table = p.add("shots", {"A"}, {{"1"}});
    const fs::path file = p.dbFolder() / ("shots - " + table.uuid()) / "shots.csv";
    fs::create_directories(file); // a folder where the file should go
    PrintCapture capture;
    EXPECT_FALSE(p.s.save());
    EXPECT_TRUE(capture.contains("saving db shots"));
    EXPECT_TRUE(capture.contains("ERROR: couldn't crete directory " + file.string()));
    const auto& notes = p.s.bufferedNotifications;
    EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [&](const auto& n) {
        return n.title == "DB saving error" && n.body == "Error saving " + file.string() &&
               n.type == lumbra::base::NotificationType::KO;
    }));
    EXPECT_TRUE(table.hasChanged);
    fs::remove(file);
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(readFile(file), "A\n1");
}

TEST(DBSaving, ACopyWritesEveryTableAndLeavesTheMarks) {
    Project p;
    tables::DBTable& table = p.add("shots", {"A"}, {{"1"}});
    ASSERT_TRUE(p.s.save());
    ASSERT_TRUE(setCell(p.s, table, 0, "A", "2"));
    TempFolder elsewhere;
    std::string copyPath;
    ASSERT_TRUE(p.s.saveCopy(elsewhere.str(), &copyPath));
    EXPECT_EQ(readFile(fs::path(copyPath) / "db" / ("shots - " + table.uuid()) / "shots.csv"), "A\n2");
    EXPECT_TRUE(table.hasChanged);
    EXPECT_EQ(readFile(p.dbFolder() / ("shots - " + table.uuid()) / "shots.csv"), "A\n1");
}

TEST(DBLoading, FoldersWithoutACsvFileAreNoTables) {
    TempFolder dir;
    const fs::path folder = dir.path / "b - 11111111-1111-1111-1111-111111111111";
    writeFile(folder / "b.CSV", "X\ty\n1\t2");
    writeFile(folder / "lumbra_details", "11111111-1111-1111-1111-111111111111\n1.0\n2.0\nRed\n");
    writeFile(dir.path / "empty" / "notes.txt", "nothing");
    writeFile(dir.path / "a.csv", "a file beside the folders");
    auto loaded = DBLoader(dir.str()).loadAll(nullptr);
    ASSERT_TRUE(loaded);
    ASSERT_EQ(loaded->size(), 1U);
    EXPECT_EQ((*loaded)[0]->uuid(), "11111111-1111-1111-1111-111111111111");
    EXPECT_EQ((*loaded)[0]->name, "b");
    EXPECT_EQ((*loaded)[0]->tag, lumbra::base::Tag::red);
    EXPECT_EQ((*loaded)[0]->cols, (std::vector<std::string>{"X", "y"}));
    EXPECT_FALSE(DBLoader((dir.path / "missing").string()).loadAll(nullptr));
}

TEST(DBLoading, AnUnreadableFileLeavesTheTableEmpty) {
    TempFolder dir;
    const fs::path file = dir.path / "t - 11111111-1111-1111-1111-111111111111" / "t.csv";
    writeFile(file, "A\n1");
    fs::permissions(file, fs::perms::none);
    Unprivileged user;
    tables::CSVTable table("t");
    table.cols = {"old"};
    PrintCapture capture;
    EXPECT_FALSE(readDatabaseFile(file.string(), table, nullptr));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + file.string()));
    EXPECT_TRUE(table.cols.empty());
    EXPECT_TRUE(table.data.empty());
    EXPECT_FALSE(tables::CSVTable("u").load(dir.str(), nullptr));
}

TEST(DBLoading, TheEarlierFlatFolderIsReadAndMovedToTheCurrentLayout) {
    Project p;
    ASSERT_TRUE(p.s.save());
    const fs::path earlier = p.dir.path / "Film" / "dbs";
    writeFile(earlier / "lookup.csv", "Name\tTape\r\nA001\tT1\r\nA002\tT2");
    writeFile(earlier / "sizes.txt", "Clip\tSize\nx\t10");
    auto other = p.reopened();
    ASSERT_EQ(other->db.size(), 2U);
    EXPECT_EQ(other->db[0]->name, "lookup");
    EXPECT_EQ(rowsOf(*other->db[0]), (std::vector<std::vector<std::string>>{{"A001", "T1"}, {"A002", "T2"}}));
    EXPECT_EQ(other->db[1]->name, "sizes");
    EXPECT_EQ(other->db[1]->cols, (std::vector<std::string>{"Clip", "Size"}));
    EXPECT_FALSE(fs::exists(earlier));
    EXPECT_EQ(readFile(p.dbFolder() / ("lookup - " + other->db[0]->uuid()) / "lookup.csv"),
              "Name\tTape\nA001\tT1\nA002\tT2");
}

TEST(DBLoading, AnEarlierFileThatCannotBeReadKeepsTheFolder) {
    Project p;
    ASSERT_TRUE(p.s.save());
    const fs::path earlier = p.dir.path / "Film" / "dbs";
    writeFile(earlier / "good.csv", "A\n1");
    writeFile(earlier / "locked.csv", "A\n2");
    fs::permissions(earlier / "locked.csv", fs::perms::none);
    // Only that file is closed to the unprivileged user: the save that ends the opening must still succeed.
    fs::permissions(p.dir.path / "Film", fs::perms::all);
    for (const auto& entry : fs::recursive_directory_iterator(p.dir.path / "Film"))
        if (entry.is_directory())
            fs::permissions(entry.path(), fs::perms::all);
    Unprivileged user;
    PrintCapture capture;
    auto other = p.reopened();
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + (earlier / "locked.csv").string()));
    ASSERT_EQ(other->db.size(), 1U);
    EXPECT_EQ(other->db[0]->name, "good");
    EXPECT_TRUE(fs::exists(earlier / "locked.csv"));
}
