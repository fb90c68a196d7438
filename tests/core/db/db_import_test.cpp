#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "db/db_editing.h"
#include "db/db_import.h"

#include <gtest/gtest.h>

using namespace lumbra::db;
using namespace lumbra::project::testing;
namespace tables = lumbra::tables;
using lumbra::base::NotificationType;
using lumbra::base::ScriptedInteraction;
using lumbra::project::SharedStuff;

namespace {

struct Databases {
    Databases() : s(&user) { s.autosave = false; }
    std::string file(const std::string& relative, const std::string& text) {
        writeFile(dir.path / relative, text);
        return (dir.path / relative).string();
    }
    ScriptedInteraction user;
    SharedStuff s;
    TempFolder dir;
};

bool buffered(const SharedStuff& s, const std::string& title, const std::string& text,
              NotificationType type) {
    return std::any_of(s.bufferedNotifications.begin(), s.bufferedNotifications.end(),
                       [&](const auto& n) { return n.title == title && n.body == text && n.type == type; });
}

} // namespace

TEST(DBImport, EachFileGivesATableOrOnlyItsOwnWarning) {
    Databases d;
    std::vector<std::string> paths{d.file("one/a.csv", "Name,Tape\nA001,T1\n"),
                                   d.file("notes.txt", "x"),
                                   d.file("upper.CSV", "A\n1\n"),
                                   d.file("cut.aaf", "x"),
                                   d.file("cancelled.csv", "A\n1\n"),
                                   d.file("two/a.csv", "Name\nB001\nB002\n")};
    d.user.queueCsvOptions({});
    d.user.queueCsvOptions({.user_aborted = true});
    d.user.queueCsvOptions({});
    auto added = addDatabases(d.s, paths);
    ASSERT_EQ(added.size(), 2U);
    ASSERT_EQ(d.s.db.size(), 2U);
    // Two files of one name give the name and the name with an underscore.
    EXPECT_EQ(std::tie(d.s.db[0]->name, d.s.db[1]->name), std::make_tuple("a", "a_"));
    EXPECT_EQ(d.s.db[0]->cols, (std::vector<std::string>{"Name", "Tape"}));
    EXPECT_EQ(d.s.db[1]->data.size(), 2U);
    EXPECT_NE(dynamic_cast<tables::CSVTable*>(d.s.db[1].get()), nullptr);
    for (const char* name : {"a", "a_"})
        EXPECT_TRUE(
            buffered(d.s, "Added DB", std::string("Successfully loaded ") + name, NotificationType::OK));
    for (const char* name : {"notes.txt", "upper.CSV", "cut.aaf", "cancelled.csv"})
        EXPECT_TRUE(
            buffered(d.s, "Cannot load DB", std::string("Couldn't load ") + name, NotificationType::WARNING))
            << name;
    EXPECT_TRUE(d.s.something_to_save);
    EXPECT_EQ(d.user.unexpected(), 0);

    // An unreadable file asks nothing, the read says why; an edit list gives an edit list table.
    lumbra::base::PrintCapture capture;
    EXPECT_EQ(tableFromFile((d.dir.path / "missing.csv").string(), &d.user), nullptr);
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + (d.dir.path / "missing.csv").string()));
    auto edl =
        tableFromFile(d.file("reel.edl", "TITLE: Reel 1\nFCM: NON-DROP FRAME\n\n001  A001     V     C        "
                                         "01:00:00:00 01:00:01:00 10:00:00:00 10:00:01:00\n"),
                      &d.user);
    ASSERT_NE(dynamic_cast<tables::EDLTable*>(edl.get()), nullptr);
    EXPECT_EQ(edl->data.size(), 1U);
    // Drops are taken by their last four characters as written.
    for (const char* path : {"/a/x.csv", "x.mhl", "/b/c.ccc", "reel.edl"})
        EXPECT_TRUE(acceptsDrop(path)) << path;
    for (const char* path : {"/a/x.CSV", "csv", "/a/x.csv/"})
        EXPECT_FALSE(acceptsDrop(path)) << path;
}

TEST(DBEditing, EntriesRenamesAndTheLongestText) {
    Databases d;
    auto table = std::make_shared<tables::CSVTable>("old");
    table->cols = {"A"};
    for (const char* value : {"1", "2"})
        table->data.push_back(tables::DBEntry{{{"A", value}}});
    d.s.db.push_back(table);
    // Entries go before the clicked row or at the end.
    const std::vector<std::size_t> rows{addEntry(d.s, *table, 1), addEntry(d.s, *table),
                                        addEntry(d.s, *table, 99)};
    EXPECT_EQ(rows, (std::vector<std::size_t>{1, 3, 4}));
    ASSERT_EQ(table->data.size(), 5U);
    EXPECT_TRUE(table->data[1].isEmpty());
    EXPECT_EQ(table->data[2].data.valueOr("A"), "2");
    EXPECT_TRUE(table->hasChanged);
    EXPECT_TRUE(setCell(d.s, *table, 1, "A", "new"));
    EXPECT_FALSE(setCell(d.s, *table, 5, "A", "past the end"));
    EXPECT_TRUE(deleteEntry(d.s, *table, 0));
    EXPECT_EQ(table->data[0].data.valueOr("A"), "new");
    EXPECT_FALSE(deleteEntry(d.s, *table, 4));

    d.user.queueText(std::nullopt);
    EXPECT_FALSE(renameDatabase(d.s, *table));
    d.user.queueText("new");
    EXPECT_TRUE(renameDatabase(d.s, *table));
    ASSERT_EQ(d.user.textRequests().size(), 2U);
    EXPECT_EQ(d.user.textRequests()[0].title, "Rename DB");
    EXPECT_EQ(d.user.textRequests()[0].text, "Insert name for the DB");
    EXPECT_EQ(databaseNamed(d.s, "new"), table.get());
    EXPECT_EQ(databaseNamed(d.s, "old"), nullptr);

    tables::DBTable texts("t");
    texts.data.push_back(tables::DBEntry{{{"Name", "A001"}, {"Description", "\u00E9t\u00E9 \u00E9t\u00E9"}}});
    texts.data.push_back(tables::DBEntry{{{"Name", "A0002"}, {"Description", "summer!!!"}}});
    texts.data.push_back(tables::DBEntry{{{"Name", "B0002"}}});
    EXPECT_EQ(longestCellRow(texts, "Name"), 1U);        // the first of equals
    EXPECT_EQ(longestCellRow(texts, "Description"), 1U); // characters, not bytes
    EXPECT_EQ(longestCellRow(texts, "Size"), std::nullopt);
}

TEST(DBEditing, ABinFromATableTakesTheProjectHeadingAndAFreeName) {
    Databases d;
    d.s.fps = "25";
    d.s.tapeId = "T9";
    d.s.bins->addBin(makeBin("shots", &d.s));
    tables::DBTable table("shots");
    table.cols = {"Name", "Size"};
    table.data.push_back(tables::DBEntry{{{"Name", "A001"}, {"Size", "10"}}});
    table.data.push_back(tables::DBEntry{{{"Name", "A002"}}});
    lumbra::project::Bin& bin = binFromDatabase(d.s, table);
    const auto* clips = bin.table();
    ASSERT_NE(clips, nullptr);
    EXPECT_EQ(std::tie(clips->tablename, clips->fps, clips->tape), std::make_tuple("shots_02", "25", "T9"));
    EXPECT_EQ(clips->cols, table.cols);
    ASSERT_EQ(clips->data.size(), 2U);
    // Its own columns, not the project's base layout, which may name none of them.
    EXPECT_EQ(std::tie(bin.layout->name, bin.layout->columns), std::make_tuple("*shots_02", table.cols));
    EXPECT_TRUE(bin.selected());
    EXPECT_EQ(d.s.bins->toarray.size(), 2U);
    // The rows are copies: the table's later edits stay out of the bin.
    table.data[0].data.set("Size", "99");
    EXPECT_EQ(clips->data[0]->data().valueOr("Size"), "10");
}
