#include "core/tables/table_test_support.h"
#include "import/edl_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using tables::testing::shown;

const std::string kData = std::string(LUMBRA_TEST_DATA_DIR) + "/edl/";
const std::string kSix = "Id|Name|Start|End|Record_In|Record_Out";

TEST(EDLParser, ScansLinesAsTheyStand) {
    const std::string ev = "001 A001 V C 01:00:00:00 01:00:01:00 00:00:00:00 00:00:01:00\n";
    const std::string row = "Id=001|Name=A001|Start=01:00:00:00|End=01:00:01:00|Record_In=00:00:00:00|"
                            "Record_Out=00:00:01:00";
    const std::string one = kSix + " [" + row + "]";
    const struct {
        std::string name;
        std::string text;
        std::string tableName;
        std::string expected;
    } cases[] = {
        {"empty text", "", "EDL table", kSix},
        {"empty lines only", "\n\n\n", "EDL table", kSix},
        {"a title with a colon is cut there", "title: a: b\n" + ev, "a", one},
        {"a bare title line names nothing", "TITLE:\n" + ev, "", one},
        {"no title: events from the first non-empty line", "\n\n001 A001 V C 01:00:00:00 01:00:01:00\n",
         "EDL table", kSix + " [Id=001|Name=A001|Start=01:00:00:00|End=01:00:01:00]"},
        {"frame count mode and comments behind the title are skipped",
         "TITLE: t\nFCM: DROP FRAME\n* made by hand\nfcm: non-drop frame\n" + ev, "t", one},
        {"frame count mode between events is an event", "TITLE: t\n" + ev + "FCM: DROP FRAME\n", "t",
         one + " [Id=FCM:|Name=DROP]"},
        {"known heads in any case, values from the line",
         ev + "*from clip name:  Take 1 \n*asc_sat:0.8\n*Asc_Sop(1 1 1)(0 0 0)(1 1 1)\n", "EDL table",
         kSix + "|Clip_Name|ASC_SAT|ASC_SOP [" + row +
             "|Clip_Name=Take 1|ASC_SAT=0.8|ASC_SOP=1 1 1)(0 0 0)(1 1 1)]"},
        {"other keys keep their case, stars go from both ends",
         ev + "**Descript**: a\n*DESCRIPT: b\n*Descript:\n", "EDL table",
         kSix + "|Descript|DESCRIPT [" + row + "|Descript=|DESCRIPT=b]"},
        {"the character behind the head may take two bytes", ev + "*ASC_SAT\xc2\xa0" + "0.8\n", "EDL table",
         kSix + "|ASC_SAT [" + row + "|ASC_SAT=0.8]"},
        {"a value written twice keeps the last", ev + "*ASC_SAT 0.5\n*ASC_SAT 0.7\n", "EDL table",
         kSix + "|ASC_SAT [" + row + "|ASC_SAT=0.7]"},
        {"a clip name without colon and a plain remark are passed over",
         ev + "*FROM CLIP NAME A001\n* just a remark\n", "EDL table", one},
        {"a marker of two words fills two of its columns", ev + "*LOC: 01:00:00:12 GREEN\n", "EDL table",
         kSix + "|LOC|LOC_TIMESTAMP|LOC_COLOR|LOC_NAME [" + row +
             "|LOC=01:00:00:12 GREEN|LOC_TIMESTAMP=01:00:00:12|LOC_COLOR=GREEN]"},
        {"double quotes are dropped", ev + "*FROM CLIP NAME: \"A 1\"\n", "EDL table",
         kSix + "|Clip_Name [" + row + "|Clip_Name=A 1]"},
        {"an empty line ends the comments: the next star line is an event", ev + "\n*FROM CLIP NAME: x\n",
         "EDL table", one + " [Id=*FROM|Name=CLIP]"},
        {"a lone token is no event and takes its comments along", "SPLIT\n*ASC_SAT 0.5\n" + ev, "EDL table",
         one},
        {"more than four timecodes keep the first four",
         "001 A001 V C 01:00:00:00 01:00:01:00 00:00:00:00 00:00:01:00 09:09:09:09\n", "EDL table", one},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tables::EDLTable table = EDLParser(c.text).parse();
        EXPECT_EQ(table.name, c.tableName);
        EXPECT_EQ(shown(table), c.expected);
    }
}

TEST(EDLParser, TheClipTableTakesNameColumnsAndRowsOrNothing) {
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

    tables::testing::TempDir dir;
    const std::string missing = dir.file("missing.edl");
    base::Notifications notifications;
    base::PrintCapture capture;
    EXPECT_FALSE(parseEDLFile(missing, &notifications));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    ASSERT_EQ(notifications.size(), 1u);
    EXPECT_EQ(notifications[0].title, "Reading error");
    EXPECT_EQ(readEDLAsALETable(missing, nullptr).failure,
              (ReadFailure{missing, "the file cannot be read", {}}));
}

} // namespace
} // namespace lumbra::import
