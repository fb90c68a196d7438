#include "base/console.h"
#include "core/tables/table_test_support.h"
#include "import/edl_parser.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using Row = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

const std::string kData = std::string(LUMBRA_TEST_DATA_DIR) + "/edl/";
const Names kSixColumns{"Id", "Name", "Start", "End", "Record_In", "Record_Out"};

Names withSix(const Names& more) {
    Names all = kSixColumns;
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

std::vector<Row> rowsOf(const tables::DBTable& table) {
    std::vector<Row> rows;
    for (const auto& entry : table.data)
        rows.push_back(entry.data.toMap());
    return rows;
}

Row event(std::string id, std::string name, Names timecodes = {}, Row more = {}) {
    Row row{{"Id", std::move(id)}, {"Name", std::move(name)}};
    const char* columns[] = {"Start", "End", "Record_In", "Record_Out"};
    for (std::size_t i = 0; i < timecodes.size(); ++i)
        row[columns[i]] = timecodes[i];
    row.merge(more);
    return row;
}

TEST(EDLParser, ReadsAnEditListWithTransitionsCommentsAndMarkers) {
    std::optional<tables::EDLTable> table = parseEDLFile(kData + "reel1_transitions.edl");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->name, "REEL_1 CONFORM v2");
    // "* FROM CLIP NAME" with a blank behind the star is no clip name: it is a key of its own.
    EXPECT_EQ(table->cols, withSix({" FROM CLIP NAME", "Clip_Name", "TO CLIP NAME", "ASC_SOP", "ASC_SAT",
                                    " EFFECT NAME", "LOC", "LOC_TIMESTAMP", "LOC_COLOR", "LOC_NAME"}));
    const std::vector<Row> expected{
        event("001", "A001C003", {"01:00:10:00", "01:00:12:00", "00:59:58:00", "01:00:00:00"},
              {{" FROM CLIP NAME", "A001C003_230101.mov"}}),
        event("002", "A001C004", {"01:00:20:00", "01:00:20:00", "01:00:00:00", "01:00:00:00"}),
        event("002", "B002C001", {"02:10:00:00", "02:10:04:00", "01:00:00:00", "01:00:04:00"},
              {{"Clip_Name", "A001C004_230101.mov"},
               {"TO CLIP NAME", "B002C001_230101.mov"},
               {"ASC_SOP", "(1.0100 0.9800 1.0000)(0.0100 -0.0020 0.0000)(1.0000 1.0000 1.0000)"},
               {"ASC_SAT", "0.9500"},
               {" EFFECT NAME", "CROSS DISSOLVE"}}),
        event("003", "B002C001", {"02:10:04:00", "02:10:06:00", "01:00:04:00", "01:00:06:00"},
              {{"LOC", "01:00:05:00 RED fix the sky"},
               {"LOC_TIMESTAMP", "01:00:05:00"},
               {"LOC_COLOR", "RED"},
               {"LOC_NAME", "fix"}}),
        event("M2", "B002C001", {"02:10:04:00"}),
        event("004", "BL", {"00:00:00:00", "00:00:01:00", "01:00:06:00", "01:00:07:00"}),
    };
    EXPECT_EQ(rowsOf(*table), expected);
}

TEST(EDLParser, ScansLinesAsTheyStand) {
    struct Case {
        std::string name;
        std::string text;
        std::string tableName;
        Names cols;
        std::vector<Row> rows;
    };
    const std::string ev = "001 A001 V C 01:00:00:00 01:00:01:00 00:00:00:00 00:00:01:00\n";
    const Row row = event("001", "A001", {"01:00:00:00", "01:00:01:00", "00:00:00:00", "00:00:01:00"});
    auto with = [](Row r, Row more) {
        r.merge(more);
        return r;
    };
    const std::vector<Case> cases{
        {"empty text", "", "EDL table", kSixColumns, {}},
        {"empty lines only", "\n\n\n", "EDL table", kSixColumns, {}},
        {"a title with a colon is cut there", "title: a: b\n" + ev, "a", kSixColumns, {row}},
        {"a bare title line names nothing", "TITLE:\n" + ev, "", kSixColumns, {row}},
        {"no title: events from the first non-empty line",
         "\n\n001 A001 V C 01:00:00:00 01:00:01:00\n",
         "EDL table",
         kSixColumns,
         {event("001", "A001", {"01:00:00:00", "01:00:01:00"})}},
        {"frame count mode and comments behind the title are skipped",
         "TITLE: t\nFCM: DROP FRAME\n* made by hand\nfcm: non-drop frame\n" + ev,
         "t",
         kSixColumns,
         {row}},
        {"frame count mode between events is an event",
         "TITLE: t\n" + ev + "FCM: DROP FRAME\n",
         "t",
         kSixColumns,
         {row, event("FCM:", "DROP")}},
        {"wide blanks do not matter, tokens without four parts are dropped",
         "001     A001    V   D   030   01:00:00:00   01:00:01:00  00:00:00:00  00:00:01:00   \n",
         "EDL table",
         kSixColumns,
         {row}},
        {"a star comment keeps its blank",
         ev + "* COMMENT: text\n",
         "EDL table",
         withSix({" COMMENT"}),
         {with(row, {{" COMMENT", "text"}})}},
        {"known heads in any case, values from the line",
         ev + "*from clip name:  Take 1 \n*asc_sat:0.8\n*Asc_Sop(1 1 1)(0 0 0)(1 1 1)\n",
         "EDL table",
         withSix({"Clip_Name", "ASC_SAT", "ASC_SOP"}),
         {with(row, {{"Clip_Name", "Take 1"}, {"ASC_SAT", "0.8"}, {"ASC_SOP", "1 1 1)(0 0 0)(1 1 1)"}})}},
        {"other keys keep their case, stars go from both ends",
         ev + "**Descript**: a\n*DESCRIPT: b\n*Descript:\n",
         "EDL table",
         withSix({"Descript", "DESCRIPT"}),
         {with(row, {{"Descript", ""}, {"DESCRIPT", "b"}})}},
        {"the character behind the head may take two bytes",
         ev + "*ASC_SAT\xc2\xa0"
              "0.8\n",
         "EDL table",
         withSix({"ASC_SAT"}),
         {with(row, {{"ASC_SAT", "0.8"}})}},
        {"a value written twice keeps the last",
         ev + "*ASC_SAT 0.5\n*ASC_SAT 0.7\n",
         "EDL table",
         withSix({"ASC_SAT"}),
         {with(row, {{"ASC_SAT", "0.7"}})}},
        {"a clip name without colon and a plain remark are passed over",
         ev + "*FROM CLIP NAME A001\n* just a remark\n",
         "EDL table",
         kSixColumns,
         {row}},
        {"a marker of two words fills two of its columns",
         ev + "*LOC: 01:00:00:12 GREEN\n",
         "EDL table",
         withSix({"LOC", "LOC_TIMESTAMP", "LOC_COLOR", "LOC_NAME"}),
         {with(row,
               {{"LOC", "01:00:00:12 GREEN"}, {"LOC_TIMESTAMP", "01:00:00:12"}, {"LOC_COLOR", "GREEN"}})}},
        {"double quotes are dropped",
         ev + "*FROM CLIP NAME: \"A 1\"\n",
         "EDL table",
         withSix({"Clip_Name"}),
         {with(row, {{"Clip_Name", "A 1"}})}},
        {"an empty line ends the comments: the next star line is an event",
         ev + "\n*FROM CLIP NAME: x\n",
         "EDL table",
         kSixColumns,
         {row, event("*FROM", "CLIP")}},
        {"comments belong to the event above them only",
         ev + "*ASC_SAT 0.5\n002 B001 V C 01:00:00:00 01:00:01:00\n",
         "EDL table",
         withSix({"ASC_SAT"}),
         {with(row, {{"ASC_SAT", "0.5"}}), event("002", "B001", {"01:00:00:00", "01:00:01:00"})}},
        {"a lone token is no event and takes its comments along",
         "SPLIT\n*ASC_SAT 0.5\n" + ev,
         "EDL table",
         kSixColumns,
         {row}},
        {"more than four timecodes keep the first four",
         "001 A001 V C 01:00:00:00 01:00:01:00 00:00:00:00 00:00:01:00 09:09:09:09\n",
         "EDL table",
         kSixColumns,
         {row}},
        // Drop-frame timecodes part their frames with ";": split on ":" they have three parts only.
        {"drop-frame timecodes are no timecodes",
         "001 A001 V C 00:59:59;28 01:00:00;02 01:00:00:00 01:00:00:04\n",
         "EDL table",
         kSixColumns,
         {event("001", "A001", {"01:00:00:00", "01:00:00:04"})}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tables::EDLTable table = EDLParser(c.text).parse();
        EXPECT_EQ(table.name, c.tableName);
        EXPECT_EQ(table.cols, c.cols);
        EXPECT_EQ(rowsOf(table), c.rows);
    }
}

TEST(EDLParser, FilesReadThroughTheTextReader) {
    tables::testing::TempDir dir;
    std::string crlf = tables::testing::fileBytes(kData + "reel1_transitions.edl");
    std::string lf;
    for (char c : crlf) {
        if (c != '\r')
            lf += c;
    }
    auto fromCrlf = parseEDLFile(kData + "reel1_transitions.edl");
    auto fromLf = parseEDLFile(dir.write("lf.edl", lf));
    ASSERT_TRUE(fromCrlf && fromLf);
    EXPECT_EQ(fromLf->cols, fromCrlf->cols);
    EXPECT_EQ(rowsOf(*fromLf), rowsOf(*fromCrlf));

    auto latin1 = parseEDLFile(kData + "latin1.edl");
    ASSERT_TRUE(latin1);
    EXPECT_EQ(latin1->name, "Sc\u00e8ne 12");
    ASSERT_EQ(latin1->data.size(), 1u);
    EXPECT_EQ(latin1->data[0].data.valueOr("Clip_Name"), "Caf\u00e9");

    auto dropFrame = parseEDLFile(kData + "drop_frame.edl");
    ASSERT_TRUE(dropFrame);
    EXPECT_EQ(rowsOf(*dropFrame),
              std::vector<Row>{event("001", "A002C001", {}, {{"Clip_Name", "A002C001"}})});
}

TEST(EDLParser, TheClipTableTakesNameColumnsAndRows) {
    auto expected = parseEDLFile(kData + "reel1_transitions.edl");
    auto read = readEDLAsALETable(kData + "reel1_transitions.edl", nullptr);
    ASSERT_TRUE(expected && !read.failure);
    const auto& clips = read.table;
    EXPECT_TRUE(clips->state);
    EXPECT_EQ(clips->tablename, "REEL_1 CONFORM v2");
    EXPECT_EQ(clips->cols, expected->cols);
    ASSERT_EQ(clips->data.size(), expected->data.size());
    for (std::size_t i = 0; i < clips->data.size(); ++i) {
        EXPECT_EQ(clips->data[i]->data(), expected->data[i].data);
        EXPECT_EQ(clips->data[i]->table, clips.get());
    }
}

TEST(EDLParser, AnUnreadableFileGivesNoTable) {
    tables::testing::TempDir dir;
    const std::string missing = dir.file("missing.edl");
    base::Notifications notifications;
    base::PrintCapture capture;
    EXPECT_FALSE(parseEDLFile(missing, &notifications));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    ASSERT_EQ(notifications.size(), 1u);
    EXPECT_EQ(notifications[0].title, "Reading error");

    auto read = readEDLAsALETable(missing, nullptr);
    EXPECT_EQ(read.failure, (ReadFailure{missing, "the file cannot be read", {}}));
    EXPECT_FALSE(read.table->state);
}

} // namespace
} // namespace lumbra::import
