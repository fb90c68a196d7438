#include "base/console.h"
#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "db/db_editing.h"
#include "db/db_import.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

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

TEST(DBImport, TwoFilesOfOneNameGiveTheNameAndTheNameWithAnUnderscore) {
    Databases d;
    std::vector<std::string> paths{d.file("one/a.csv", "Name,Tape\nA001,T1\n"),
                                   d.file("two/a.csv", "Name\nB001\nB002\n")};
    d.user.queueCsvOptions({});
    d.user.queueCsvOptions({});
    auto added = addDatabases(d.s, paths);
    ASSERT_EQ(added.size(), 2U);
    ASSERT_EQ(d.s.db.size(), 2U);
    EXPECT_EQ(d.s.db[0]->name, "a");
    EXPECT_EQ(d.s.db[1]->name, "a_");
    EXPECT_EQ(d.s.db[0]->cols, (std::vector<std::string>{"Name", "Tape"}));
    EXPECT_EQ(d.s.db[1]->data.size(), 2U);
    EXPECT_NE(dynamic_cast<tables::CSVTable*>(d.s.db[1].get()), nullptr);
    EXPECT_TRUE(buffered(d.s, "Added DB", "Successfully loaded a", NotificationType::OK));
    EXPECT_TRUE(buffered(d.s, "Added DB", "Successfully loaded a_", NotificationType::OK));
    EXPECT_TRUE(d.s.something_to_save);
    EXPECT_EQ(d.user.unexpected(), 0);
}

TEST(DBImport, AFileWithoutATableCostsOnlyItsOwnEntry) {
    Databases d;
    std::vector<std::string> paths{d.file("notes.txt", "x"), d.file("upper.CSV", "A\n1\n"),
                                   d.file("cut.aaf", "x"), d.file("cancelled.csv", "A\n1\n"),
                                   d.file("good.csv", "A\n1\n")};
    d.user.queueCsvOptions({.user_aborted = true});
    d.user.queueCsvOptions({});
    auto added = addDatabases(d.s, paths);
    ASSERT_EQ(added.size(), 1U);
    EXPECT_EQ(added[0]->name, "good");
    for (const char* name : {"notes.txt", "upper.CSV", "cut.aaf", "cancelled.csv"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(
            buffered(d.s, "Cannot load DB", std::string("Couldn't load ") + name, NotificationType::WARNING));
    }
    // The file is unreadable: nothing is asked, the read says why.
    lumbra::base::PrintCapture capture;
    EXPECT_EQ(tableFromFile((d.dir.path / "missing.csv").string(), &d.user), nullptr);
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + (d.dir.path / "missing.csv").string()));
}

TEST(DBImport, AnEdlGivesAnEdlTable) {
    Databases d;
    std::string path = d.file("reel.edl", "TITLE: Reel 1\nFCM: NON-DROP FRAME\n\n"
                                          "001  A001     V     C        01:00:00:00 01:00:01:00 "
                                          "10:00:00:00 10:00:01:00\n");
    auto table = tableFromFile(path, &d.user);
    ASSERT_NE(table, nullptr);
    EXPECT_NE(dynamic_cast<tables::EDLTable*>(table.get()), nullptr);
    EXPECT_EQ(table->data.size(), 1U);
}

TEST(DBEditing, EntriesGoBeforeTheClickedRowOrAtTheEnd) {
    Databases d;
    auto table = std::make_shared<tables::CSVTable>("t");
    table->cols = {"A"};
    for (const char* value : {"1", "2"})
        table->data.push_back(tables::DBEntry{{{"A", value}}});
    table->hasChanged = false;
    d.s.db.push_back(table);
    EXPECT_EQ(addEntry(d.s, *table, 1), 1U);
    EXPECT_EQ(addEntry(d.s, *table), 3U);
    EXPECT_EQ(addEntry(d.s, *table, 99), 4U);
    ASSERT_EQ(table->data.size(), 5U);
    EXPECT_EQ(table->data[0].data.valueOr("A"), "1");
    EXPECT_TRUE(table->data[1].isEmpty());
    EXPECT_EQ(table->data[2].data.valueOr("A"), "2");
    EXPECT_TRUE(table->hasChanged);
    EXPECT_TRUE(setCell(d.s, *table, 1, "A", "new"));
    EXPECT_FALSE(setCell(d.s, *table, 5, "A", "past the end"));
    EXPECT_TRUE(deleteEntry(d.s, *table, 0));
    EXPECT_EQ(table->data[0].data.valueOr("A"), "new");
    EXPECT_FALSE(deleteEntry(d.s, *table, 4));
}

TEST(DBEditing, RenameAsksForTheName) {
    Databases d;
    auto table = std::make_shared<tables::CSVTable>("old");
    d.s.db.push_back(table);
    d.user.queueText(std::nullopt);
    EXPECT_FALSE(renameDatabase(d.s, *table));
    d.user.queueText("new");
    EXPECT_TRUE(renameDatabase(d.s, *table));
    EXPECT_EQ(table->name, "new");
    ASSERT_EQ(d.user.textRequests().size(), 2U);
    EXPECT_EQ(d.user.textRequests()[0].title, "Rename DB");
    EXPECT_EQ(d.user.textRequests()[0].text, "Insert name for the DB");
    EXPECT_EQ(databaseNamed(d.s, "new"), table.get());
    EXPECT_EQ(databaseNamed(d.s, "old"), nullptr);
}

TEST(DBEditing, TheLongestTextOfAColumnIsFoundByCharacters) {
    tables::DBTable table("t");
    table.data.push_back(tables::DBEntry{{{"Name", "A001"}, {"Description", "\u00E9t\u00E9 \u00E9t\u00E9"}}});
    table.data.push_back(tables::DBEntry{{{"Name", "A0002"}, {"Description", "summer!!!"}}});
    table.data.push_back(tables::DBEntry{{{"Name", "B0002"}}});
    EXPECT_EQ(longestCellRow(table, "Name"), 1U);        // the first of equals
    EXPECT_EQ(longestCellRow(table, "Description"), 1U); // characters, not bytes
    EXPECT_EQ(longestCellRow(table, "Size"), std::nullopt);
}

TEST(DBEditing, ABinFromATableTakesTheProjectHeadingAndAFreeName) {
    Databases d;
    d.s.fps = "25";
    d.s.tlResolution = "1080";
    d.s.sound = "48kHz";
    d.s.film_format = "35mm";
    d.s.tapeId = "T9";
    d.s.bins->addBin(makeBin("shots", &d.s));
    tables::DBTable table("shots");
    table.cols = {"Name", "Size"};
    table.data.push_back(tables::DBEntry{{{"Name", "A001"}, {"Size", "10"}}});
    table.data.push_back(tables::DBEntry{{{"Name", "A002"}}});
    lumbra::project::Bin& bin = binFromDatabase(d.s, table);
    const auto* clips = bin.table();
    ASSERT_NE(clips, nullptr);
    EXPECT_EQ(clips->tablename, "shots_02");
    EXPECT_EQ(clips->fps, "25");
    EXPECT_EQ(clips->video_format, "1080");
    EXPECT_EQ(clips->audio_format, "48kHz");
    EXPECT_EQ(clips->film_format, "35mm");
    EXPECT_EQ(clips->tape, "T9");
    EXPECT_EQ(clips->cols, table.cols);
    ASSERT_EQ(clips->data.size(), 2U);
    EXPECT_EQ(clips->data[0]->data().valueOr("Size"), "10");
    // Its own columns, not the project's base layout, which may name none of them.
    EXPECT_EQ(bin.layout->name, "*shots_02");
    EXPECT_EQ(bin.layout->columns, table.cols);
    EXPECT_TRUE(bin.selected());
    EXPECT_EQ(d.s.bins->toarray.size(), 2U);
    // The rows are copies: the table's later edits stay out of the bin.
    table.data[0].data.set("Size", "99");
    EXPECT_EQ(clips->data[0]->data().valueOr("Size"), "10");
}

TEST(DBImport, DropsAreTakenByTheirLastFourCharactersAsWritten) {
    for (const char* path : {"/a/x.csv", "x.mhl", "/b/c.ccc", "reel.edl"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(acceptsDrop(path));
    }
    for (const char* path : {"/a/x.CSV", "x.aaf", "x.tsv", "csv", "/a/x.csv/"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(acceptsDrop(path));
    }
}
