#include "base/console.h"
#include "core/tables/table_test_support.h"
#include "import/ccc_parser.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using Row = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

const std::string kData = std::string(LUMBRA_TEST_DATA_DIR) + "/ccc/";
const Names kThreeColumns{"id", "ASC_SOP", "ASC_SAT"};

std::vector<Row> rowsOf(const tables::DBTable& table) {
    std::vector<Row> rows;
    for (const auto& entry : table.data)
        rows.push_back(entry.data.toMap());
    return rows;
}

TEST(CCCParser, ReadsOneRowPerCorrectionWithTheNumbersAsWritten) {
    std::optional<tables::CCCTable> table = CCCParser::parseCCCFile(kData + "grade.ccc");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->name, "grade");
    EXPECT_EQ(table->cols, (Names{"id", "ASC_SOP", "ASC_SAT", "Description"}));
    const std::vector<Row> expected{
        {{"id", "A001C003_230101"},
         {"ASC_SOP", "(1.0100 0.9800 1.0000)(0.0100 -0.0020 0.0000)(1.0000 1.0000 1.0000)"},
         {"ASC_SAT", "0.9500"}},
        // The tag's name ends at the line feed, so the id on the next line is found; same id, own row.
        {{"id", "A001C003_230101"}, {"ASC_SOP", "(1.2\t1.1 1.0)(-.03 -2e-2 0)(1e0 1 1)"}, {"ASC_SAT", ""}},
        {{"id", "B002C001"},
         {"ASC_SOP", "(0.9 0.9 1.1)(0 0 0.02)(1 1 1)"},
         {"ASC_SAT", "0.8"},
         {"Description", "night look &amp; grain"}},
    };
    EXPECT_EQ(rowsOf(*table), expected);
}

TEST(CCCParser, ScansTagsNotTheDocument) {
    struct Case {
        std::string name;
        std::string text;
        Names cols;
        std::vector<Row> rows;
    };
    const Row bare{{"id", ""}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}};
    const std::vector<Case> cases{
        {"no correction at all",
         "<ColorCorrectionCollection></ColorCorrectionCollection>",
         kThreeColumns,
         {}},
        {"not even a tag", "slope 1 1 1", kThreeColumns, {}},
        {"a correction without inner elements", "<ColorCorrection></ColorCorrection>", kThreeColumns, {bare}},
        {"the collection is no correction",
         "<ColorCorrectionCollection><ColorCorrection id=\"a\"><Saturation>1</Saturation></ColorCorrection>"
         "</ColorCorrectionCollection>",
         kThreeColumns,
         {{{"id", "a"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", "1"}}}},
        {"names compare with their case",
         "<colorcorrection id=\"a\"></colorcorrection><ColorCorrection id=\"b\"><slope>2 2 2</slope>"
         "</ColorCorrection>",
         kThreeColumns,
         {{{"id", "b"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}}}},
        {"a missing closing tag ends the walk with the rows found",
         "<ColorCorrection id=\"a\"></ColorCorrection><ColorCorrection id=\"b\"><Slope>1 1 1</Slope>",
         kThreeColumns,
         {{{"id", "a"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}}}},
        {"an element without its closing tag stays empty",
         "<ColorCorrection id=\"a\"><Slope>1 1 1<Offset>0 0 0</Offset></ColorCorrection>",
         kThreeColumns,
         {{{"id", "a"}, {"ASC_SOP", "()(0 0 0)()"}, {"ASC_SAT", ""}}}},
        {"a commented-out correction reads like any other",
         "<!-- <ColorCorrection id=\"old\"><Saturation>0</Saturation></ColorCorrection> -->",
         kThreeColumns,
         {{{"id", "old"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", "0"}}}},
        {"a description only in the third correction adds its column then",
         "<ColorCorrection id=\"1\"></ColorCorrection><ColorCorrection id=\"2\"><Description></Description>"
         "</ColorCorrection><ColorCorrection id=\"3\"><Description>warm</Description></ColorCorrection>",
         {"id", "ASC_SOP", "ASC_SAT", "Description"},
         {{{"id", "1"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}},
          {{"id", "2"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}},
          {{"id", "3"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}, {"Description", "warm"}}}},
        {"the first description counts; other descriptions are other names",
         "<ColorCorrection id=\"a\"><InputDescription>in</InputDescription><Description>one</Description>"
         "<Description>two</Description></ColorCorrection>",
         {"id", "ASC_SOP", "ASC_SAT", "Description"},
         {{{"id", "a"}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ""}, {"Description", "one"}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tables::CCCTable table = CCCParser::parseText(c.text);
        EXPECT_EQ(table.name, "CCC table");
        EXPECT_EQ(table.cols, c.cols);
        EXPECT_EQ(rowsOf(table), c.rows);
    }
}

TEST(CCCParser, TagAttributeTakesTheFirstOccurrenceOfTheLetters) {
    struct Case {
        std::string name;
        std::string tag;
        std::string expected;
    };
    const std::vector<Case> cases{
        {"quoted", "<ColorCorrection id=\"shot_010\">", "shot_010"},
        {"unquoted", "<ColorCorrection id=shot_010>", "shot_010"},
        {"empty", "<ColorCorrection id=\"\">", ""},
        {"none", "<ColorCorrection>", ""},
        {"blanks around the sign end the value at once", "<ColorCorrection id = \"shot_010\">", ""},
        {"inside another attribute's name", "<ColorCorrection cid=\"x\" id=\"y\">", "x"},
        {"ends at a tab", "<ColorCorrection id=a\tb>", "a"},
        {"ends at the end of the text", "id=abc", "abc"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(tagAttribute(c.tag, "id"), c.expected);
    }
}

TEST(CCCParser, FilesAreNamedLessTheirLastFourCharacters) {
    tables::testing::TempDir dir;
    const std::string text = "<ColorCorrection id=\"a\">\r\n<Slope>1 1 1</Slope>\r\n</ColorCorrection>\r\n";
    struct Case {
        std::string file;
        std::string name;
    };
    for (const Case& c : {Case{"grade.ccc", "grade"}, Case{"look.grade", "look.g"}, Case{"é.ccc", "é"},
                          Case{"ccc", ""}, Case{"a\"b/c\"d.ccc", "c\"d"}}) {
        SCOPED_TRACE(c.file);
        auto table = CCCParser::parseCCCFile(dir.write(c.file, text));
        ASSERT_TRUE(table);
        EXPECT_EQ(table->name, c.name);
        EXPECT_EQ(rowsOf(*table),
                  (std::vector<Row>{{{"id", "a"}, {"ASC_SOP", "(1 1 1)()()"}, {"ASC_SAT", ""}}}));
    }

    const std::string missing = dir.file("missing.ccc");
    base::PrintCapture capture;
    EXPECT_FALSE(CCCParser::parseCCCFile(missing));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    EXPECT_TRUE(readCCCAsALETable(missing, nullptr).failure);
}

} // namespace
} // namespace lumbra::import
