#include "core/tables/table_test_support.h"
#include "import/ccc_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using tables::testing::shown;

TEST(CCCParser, ScansTagsNotTheDocument) {
    const std::string three = "id|ASC_SOP|ASC_SAT", four = three + "|Description";
    const struct {
        std::string name;
        std::string text;
        std::string expected;
    } cases[] = {
        {"no correction at all", "<ColorCorrectionCollection></ColorCorrectionCollection>", three},
        {"not even a tag", "slope 1 1 1", three},
        {"a correction without inner elements", "<ColorCorrection></ColorCorrection>",
         three + " [id=|ASC_SOP=()()()|ASC_SAT=]"},
        {"the collection is no correction",
         "<ColorCorrectionCollection><ColorCorrection id=\"a\"><Saturation>1</Saturation></ColorCorrection>"
         "</ColorCorrectionCollection>",
         three + " [id=a|ASC_SOP=()()()|ASC_SAT=1]"},
        {"names compare with their case",
         "<colorcorrection id=\"a\"></colorcorrection><ColorCorrection id=\"b\"><slope>2 2 "
         "2</slope></ColorCorrection>",
         three + " [id=b|ASC_SOP=()()()|ASC_SAT=]"},
        {"a missing closing tag ends the walk with the rows found",
         "<ColorCorrection id=\"a\"></ColorCorrection><ColorCorrection id=\"b\"><Slope>1 1 1</Slope>",
         three + " [id=a|ASC_SOP=()()()|ASC_SAT=]"},
        {"an element without its closing tag stays empty",
         "<ColorCorrection id=\"a\"><Slope>1 1 1<Offset>0 0 0</Offset></ColorCorrection>",
         three + " [id=a|ASC_SOP=()(0 0 0)()|ASC_SAT=]"},
        {"a commented-out correction reads like any other",
         "<!-- <ColorCorrection id=\"old\"><Saturation>0</Saturation></ColorCorrection> -->",
         three + " [id=old|ASC_SOP=()()()|ASC_SAT=0]"},
        {"a description only in the third correction adds its column then",
         "<ColorCorrection id=\"1\"></ColorCorrection><ColorCorrection id=\"2\"><Description></Description>"
         "</ColorCorrection><ColorCorrection id=\"3\"><Description>warm</Description></ColorCorrection>",
         four + " [id=1|ASC_SOP=()()()|ASC_SAT=] [id=2|ASC_SOP=()()()|ASC_SAT=] "
                "[id=3|ASC_SOP=()()()|ASC_SAT=|Description=warm]"},
        {"the first description counts; other descriptions are other names",
         "<ColorCorrection id=\"a\"><InputDescription>in</InputDescription><Description>one</Description>"
         "<Description>two</Description></ColorCorrection>",
         four + " [id=a|ASC_SOP=()()()|ASC_SAT=|Description=one]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tables::CCCTable table = CCCParser::parseText(c.text);
        EXPECT_EQ(table.name, "CCC table");
        EXPECT_EQ(shown(table), c.expected);
    }
}

TEST(CCCParser, TagAttributeTakesTheFirstOccurrenceOfTheLetters) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"<ColorCorrection id=\"shot_010\">", "shot_010"},
        {"<ColorCorrection id=shot_010>", "shot_010"},
        {"<ColorCorrection id=\"\">", ""},
        {"<ColorCorrection>", ""},
        {"<ColorCorrection id = \"shot_010\">", ""}, // blanks around the sign end the value at once
        {"<ColorCorrection cid=\"x\" id=\"y\">", "x"},
        {"<ColorCorrection id=a\tb>", "a"},
        {"id=abc", "abc"},
    };
    for (const auto& [tag, expected] : cases) {
        SCOPED_TRACE(tag);
        EXPECT_EQ(tagAttribute(tag, "id"), expected);
    }
}

TEST(CCCParser, FilesAreNamedLessTheirLastFourCharacters) {
    tables::testing::TempDir dir;
    const std::string text = "<ColorCorrection id=\"a\">\r\n<Slope>1 1 1</Slope>\r\n</ColorCorrection>\r\n";
    const std::vector<std::pair<std::string, std::string>> cases{{"grade.ccc", "grade"},
                                                                 {"look.grade", "look.g"},
                                                                 {"é.ccc", "é"},
                                                                 {"ccc", ""},
                                                                 {"a\"b/c\"d.ccc", "c\"d"}};
    for (const auto& [file, name] : cases) {
        SCOPED_TRACE(file);
        auto table = CCCParser::parseCCCFile(dir.write(file, text));
        ASSERT_TRUE(table);
        EXPECT_EQ(table->name, name);
        EXPECT_EQ(shown(*table), "id|ASC_SOP|ASC_SAT [id=a|ASC_SOP=(1 1 1)()()|ASC_SAT=]");
    }
    const std::string missing = dir.file("missing.ccc");
    base::PrintCapture capture;
    EXPECT_FALSE(CCCParser::parseCCCFile(missing));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    EXPECT_TRUE(readCCCAsALETable(missing, nullptr).failure);
}

} // namespace
} // namespace lumbra::import
