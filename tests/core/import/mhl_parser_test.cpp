#include "core/tables/table_test_support.h"
#include "import/mhl_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using tables::testing::shown;

const std::string kCard = std::string(LUMBRA_TEST_DATA_DIR) + "/mhl/card_A001.mhl";

TEST(MHLParser, PrintsColumnsThenRowsTabSeparated) {
    std::optional<tables::MHLTable> table = parseMHLFile(kCard);
    ASSERT_TRUE(table);
    base::PrintCapture capture;
    printMHLTable(*table);
    const std::vector<std::string> printed{
        "file\tsize\tcreationdate\tlastmodificationdate\tmd5\thashdate\txxhash64\txxhash64be",
        "A001/A001C003_230101.mov\t1048576000\t2023-01-01T10:12:00Z\t2023-01-01T10:14:00Z\t"
        "9e107d9d372bb6826bd81d3542a419d6\t2023-01-01T18:35:00Z\t\t",
        "A001/A001C004 230101.mov\t20480\t\t2023-01-01T10:20:00Z\te4d909c290d0fb1ca068ffaddf22cbd0\t"
        "2023-01-01T18:36:00Z\t0a1b2c3d4e5f6071\t",
        "\t\t\t\t\t\t\t",
        "A001/A001C005_230101.mov\t\t\t\tsecond\t\t\t1122334455667788",
    };
    EXPECT_EQ(capture.lines(), printed);

    const std::string missing = std::string(LUMBRA_TEST_DATA_DIR) + "/gone.mhl";
    EXPECT_FALSE(parseMHLFile(missing));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    EXPECT_TRUE(readMHLAsALETable(missing, nullptr).failure);
}

TEST(MHLParser, TakesChildrenOnePerLine) {
    const struct {
        std::string name;
        std::string text;
        std::string expected;
    } cases[] = {
        {"no hash block", "<hashlist>\n<creatorinfo>\n<name>x</name>\n</creatorinfo>\n</hashlist>", ""},
        {"a child only some blocks have",
         "<hash>\n<file>a</file>\n</hash>\n<hash>\n<file>b</file>\n<sha1>ff</sha1>\n</"
         "hash>\n<hash>\n<file>c</file>\n"
         "</hash>",
         "file|sha1 [file=a] [file=b|sha1=ff] [file=c]"},
        {"a block without its closing tag ends the walk",
         "<hash>\n<file>a</file>\n</hash>\n<hash>\n<file>b</file>\n", "file [file=a]"},
        {"a child on the closing tag's line is dropped with that line",
         "<hash>\n<file>a</file>\n<md5>00</md5></hash>", "file [file=a]"},
        {"a child over several lines: a column from each tag line, no value",
         "<hash>\n<path>\n  a.mov\n</path>\n</hash>", "path|/path []"},
        {"a self-closed child names a column of its own", "<hash>\n<null/>\n<null></null>\n</hash>",
         "null/|null [null=]"},
        {"a later child without a value removes the earlier value", "<hash>\n<md5>ab</md5>\n<md5>\n</hash>",
         "md5 []"},
        {"the value runs to its own closing tag", "<hash>\n <file>a<b</file> <x>\n</hash>",
         "file [file=a<b]"},
        {"a line of text is no child", "<hash>\n  just text\n<file>a</file>\n</hash>", "file [file=a]"},
        {"a hash tag with attributes opens a block", "<hash generation=\"1\">\n<md5>ab</md5>\n</hash >",
         "md5 [md5=ab]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tables::MHLTable table = MHLParser(c.text).parse();
        EXPECT_EQ(table.name, "MHL table");
        EXPECT_EQ(shown(table), c.expected);
    }
}

TEST(MHLParser, TagNamesAndPositions) {
    const std::vector<std::pair<std::string, std::string>> names{{"<file size=\"10\">a.mov</file>", "file"},
                                                                 {" \t<md5>00</md5>", "md5"},
                                                                 {"</hash>", "/hash"},
                                                                 {"<hash\n>", "hash"},
                                                                 {"<hash\t>", "hash"},
                                                                 {"text <file>", ""},
                                                                 {"\n<file>", ""},
                                                                 {"", ""},
                                                                 {"<", ""}};
    for (const auto& [text, expected] : names) {
        SCOPED_TRACE(text);
        EXPECT_EQ(tagName(text), expected);
    }
    const MHLParser parser("ab<hash x>cd<Hash></hash><hash");
    EXPECT_EQ(parser.nextTag("hash", 0), (TagBounds{2, 9}));
    EXPECT_EQ(parser.nextTag("/hash", 10), (TagBounds{18, 24}));
    EXPECT_FALSE(parser.nextTag("hash", 3));
    EXPECT_FALSE(parser.nextTag("hash", 100));
}

} // namespace
} // namespace lumbra::import
