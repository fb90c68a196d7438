#include "core/project/project_test_support.h"
#include "db/db_editing.h"
#include "project/db_saver.h"
#include "project/project_loader.h"
#include "project/project_saver.h"
#include "tables/db_table.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace lumbra::project;
using namespace lumbra::db;
using namespace lumbra::project::testing;
namespace tables = lumbra::tables;
using lumbra::base::PrintCapture;
using Rows = std::vector<Names>;

namespace {

// A project "Film" under a temporary folder with databases added by hand.
struct Project : FilmProject {
    [[nodiscard]] fs::path dbFolder() const { return folder() / "db"; }
    [[nodiscard]] fs::path file(tables::DBTable& table) const {
        return dbFolder() / (table.name + " - " + table.uuid()) / (table.name + ".csv");
    }
    tables::DBTable& add(std::string name, Names cols, const Rows& rows) {
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
    [[nodiscard]] std::unique_ptr<SharedStuff> reopened() const {
        auto other = std::make_unique<SharedStuff>();
        other->currentFolder = dir.str();
        other->projectName = "Film";
        other->autosave = false;
        EXPECT_EQ(openProject(*other), OpenResult::opened);
        return other;
    }
};

Rows rowsOf(const tables::DBTable& table) {
    Rows rows;
    for (const auto& entry : table.data) {
        Names row;
        for (const auto& col : table.cols)
            row.emplace_back(entry.data.valueOr(col));
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace

TEST(DBSaving, TablesAreTabSeparatedFilesThatComeBackAndAreWrittenWhenChanged) {
    Project p;
    tables::DBTable& shots =
        p.add("shots", {"Name", "Note", "Path"}, {{"A001", "x", "/a/b"}, {"A002", "", "c d"}});
    p.add("sound", {"Scene", "Take"}, {{"12", "3"}});
    // Values that must be quoted to come back: a tab, a line feed, quotes, a leading quote.
    p.add("tricky", {"Say \"x\"", "Note"},
          {{"a\tb", "two\nlines"}, {"\"lead", "in \"quotes\""}, {"\"\"", "tail\"\t"}, {"\"", "x"}});
    ASSERT_TRUE(p.s.save());
    // Fields apart by a tab, records by a line feed, none after the last; a missing key is an empty field.
    EXPECT_EQ(readFile(p.file(shots)), "Name\tNote\tPath\nA001\tx\t/a/b\nA002\t\tc d");
    EXPECT_TRUE(fs::exists(p.file(shots).parent_path() / "lumbra_details"));
    EXPECT_FALSE(shots.hasChanged);
    auto other = p.reopened();
    ASSERT_EQ(other->db.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(p.s.db[i]->name);
        tables::DBTable& loaded = *other->db[i];
        EXPECT_NE(dynamic_cast<tables::CSVTable*>(&loaded), nullptr);
        EXPECT_EQ(std::tie(loaded.name, loaded.cols), std::tie(p.s.db[i]->name, p.s.db[i]->cols));
        EXPECT_EQ(loaded.uuid(), p.s.db[i]->uuid());
        EXPECT_EQ(rowsOf(loaded), rowsOf(*p.s.db[i]));
        EXPECT_FALSE(loaded.hasChanged);
    }

    auto before = fileTimes(p.dbFolder());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(fileTimes(p.dbFolder()), before);
    ASSERT_TRUE(setCell(p.s, shots, 0, "Note", "y"));
    // A copy writes every table and leaves the marks.
    TempFolder elsewhere;
    std::string copy;
    ASSERT_TRUE(p.s.saveCopy(elsewhere.str(), &copy));
    EXPECT_EQ(readFile(fs::path(copy) / fs::relative(p.file(shots), p.folder())).substr(0, 22),
              "Name\tNote\tPath\nA001\ty\t");
    EXPECT_TRUE(shots.hasChanged);
    EXPECT_EQ(readFile(p.file(shots)).substr(0, 22), "Name\tNote\tPath\nA001\tx\t");
    ASSERT_TRUE(p.s.save());
    EXPECT_EQ(readFile(p.file(shots)).substr(0, 22), "Name\tNote\tPath\nA001\ty\t");
}

TEST(DBSaving, RenamedTablesMoveTheirFolderAndDeletedOnesGoAtTheNextSave) {
    Project p;
    tables::DBTable& table = p.add("old", {"A"}, {{"1"}});
    tables::DBTable& gone = p.add("gone", {"A"}, {{"2"}});
    ASSERT_TRUE(p.s.save());
    const fs::path oldFolder = p.file(table).parent_path(), goneFolder = p.file(gone).parent_path();
    renameDatabase(p.s, table, "new");
    EXPECT_TRUE(table.hasChanged);
    ASSERT_TRUE(deleteDatabase(p.s, gone));
    EXPECT_EQ(p.s.db.size(), 1U);
    EXPECT_EQ(p.s.saver().dbsToRemove.size(), 1U);
    EXPECT_TRUE(fs::exists(goneFolder));
    tables::CSVTable stray("stray");
    EXPECT_FALSE(deleteDatabase(p.s, stray));
    PrintCapture capture;
    ASSERT_TRUE(p.s.save());
    const std::string folder = "new - " + table.uuid();
    EXPECT_TRUE(capture.contains("moving " + oldFolder.string() + " to " + (p.dbFolder() / folder).string()));
    EXPECT_EQ(listTree(p.dbFolder()),
              (std::set<std::string>{folder + "/", folder + "/lumbra_details", folder + "/new.csv"}));
    EXPECT_TRUE(p.s.saver().dbsToRemove.empty());
    auto other = p.reopened();
    ASSERT_EQ(other->db.size(), 1U);
    EXPECT_EQ(other->db[0]->name, "new");
}

TEST(DBSaving, AFailedWriteIsToldAndTriedAgainAtTheNextSave) {
    Project p;
    tables::DBTable& table = p.add("shots", {"A"}, {{"1"}});
    const fs::path file = p.file(table);
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

TEST(DBLoading, FoldersWithoutACsvFileAreNoTablesAndAnUnreadableFileLeavesTheTableEmpty) {
    TempFolder dir;
    const fs::path folder = dir.path / "b - 11111111-1111-1111-1111-111111111111";
    writeFile(folder / "b.CSV", "X\ty\n1\t2");
    writeFile(folder / "lumbra_details", "11111111-1111-1111-1111-111111111111\n1.0\n2.0\nRed\n");
    writeFile(dir.path / "empty" / "notes.txt", "nothing");
    writeFile(dir.path / "a.csv", "a file beside the folders");
    auto loaded = DBLoader(dir.str()).loadAll(nullptr);
    ASSERT_TRUE(loaded && loaded->size() == 1U);
    tables::DBTable& b = *(*loaded)[0];
    EXPECT_EQ(std::tie(b.name, b.tag, b.cols), std::make_tuple("b", lumbra::base::Tag::red, Names{"X", "y"}));
    EXPECT_EQ(b.uuid(), "11111111-1111-1111-1111-111111111111");
    EXPECT_FALSE(DBLoader((dir.path / "missing").string()).loadAll(nullptr));

    fs::permissions(folder / "b.CSV", fs::perms::none);
    Unprivileged user;
    tables::CSVTable table("t");
    table.cols = {"old"};
    PrintCapture capture;
    EXPECT_FALSE(readDatabaseFile((folder / "b.CSV").string(), table, nullptr));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + (folder / "b.CSV").string()));
    EXPECT_TRUE(table.cols.empty() && table.data.empty());
    EXPECT_FALSE(tables::CSVTable("u").load((dir.path / "empty").string(), nullptr));
}

TEST(DBLoading, TheEarlierFlatFolderIsMovedToTheCurrentLayoutLessWhatCannotBeRead) {
    for (bool locked : {false, true}) {
        SCOPED_TRACE(locked ? "a file that cannot be read" : "every file read");
        Project p;
        ASSERT_TRUE(p.s.save());
        const fs::path earlier = p.folder() / "dbs";
        writeFile(earlier / "lookup.csv", "Name\tTape\r\nA001\tT1\r\nA002\tT2");
        writeFile(earlier / "sizes.txt", "Clip\tSize\nx\t10");
        if (locked) {
            fs::permissions(earlier / "sizes.txt", fs::perms::none);
            // Only that file is closed to the unprivileged user: the save that ends the opening must succeed.
            for (const auto& entry : fs::recursive_directory_iterator(p.dir.path))
                if (entry.is_directory())
                    fs::permissions(entry.path(), fs::perms::all);
        }
        std::optional<Unprivileged> user;
        if (locked)
            user.emplace();
        PrintCapture capture;
        auto other = p.reopened();
        ASSERT_EQ(other->db.size(), locked ? 1U : 2U);
        EXPECT_EQ(other->db[0]->name, "lookup");
        EXPECT_EQ(rowsOf(*other->db[0]), (Rows{{"A001", "T1"}, {"A002", "T2"}}));
        EXPECT_EQ(readFile(p.file(*other->db[0])), "Name\tTape\nA001\tT1\nA002\tT2");
        EXPECT_EQ(fs::exists(earlier), locked);
        EXPECT_EQ(capture.contains("ERROR WHILE READING FROM " + (earlier / "sizes.txt").string()), locked);
        if (!locked) {
            EXPECT_EQ(std::tie(other->db[1]->name, other->db[1]->cols),
                      std::make_tuple("sizes", Names{"Clip", "Size"}));
        }
    }
}
