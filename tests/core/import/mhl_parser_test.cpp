#include "base/console.h"
#include "core/tables/table_test_support.h"
#include "import/mhl_parser.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using Row = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

const std::string kData = std::string(LUMBRA_TEST_DATA_DIR) + "/mhl/";

std::vector<Row> rowsOf(const tables::DBTable& table) {
    std::vector<Row> rows;
    for (const auto& entry : table.data)
        rows.push_back(entry.data.toMap());
    return rows;
}

const Names kCardColumns{"file", "size",     "creationdate", "lastmodificationdate",
                         "md5",  "hashdate", "xxhash64",     "xxhash64be"};

TEST(MHLParser, ReadsOneRowPerHashBlockAndOneColumnPerChildName) {
    std::optional<tables::MHLTable> table = parseMHLFile(kData + "card_A001.mhl");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->name, "card_A001");
    EXPECT_EQ(table->cols, kCardColumns);
    const std::vector<Row> expected{
        {{"file", "A001/A001C003_230101.mov"},
         {"size", "1048576000"},
         {"creationdate", "2023-01-01T10:12:00Z"},
         {"lastmodificationdate", "2023-01-01T10:14:00Z"},
         {"md5", "9e107d9d372bb6826bd81d3542a419d6"},
         {"hashdate", "2023-01-01T18:35:00Z"}},
        {{"file", "A001/A001C004 230101.mov"},
         {"size", "20480"},
         {"lastmodificationdate", "2023-01-01T10:20:00Z"},
         {"xxhash64", "0a1b2c3d4e5f6071"},
         {"md5", "e4d909c290d0fb1ca068ffaddf22cbd0"},
         {"hashdate", "2023-01-01T18:36:00Z"}},
        // Children on the line of the block's own tags are not read.
        {},
        {{"file", "A001/A001C005_230101.mov"}, {"xxhash64be", "1122334455667788"}, {"md5", "second"}},
    };
    EXPECT_EQ(rowsOf(*table), expected);
}

TEST(MHLParser, TakesChildrenOnePerLine) {
    struct Case {
        std::string name;
        std::string text;
        Names cols;
        std::vector<Row> rows;
    };
    const std::vector<Case> cases{
        {"no hash block", "<hashlist>\n<creatorinfo>\n<name>x</name>\n</creatorinfo>\n</hashlist>", {}, {}},
        {"a child only some blocks have",
         "<hash>\n<file>a</file>\n</hash>\n<hash>\n<file>b</file>\n<sha1>ff</sha1>\n</"
         "hash>\n<hash>\n<file>c</file>\n"
         "</hash>",
         {"file", "sha1"},
         {{{"file", "a"}}, {{"file", "b"}, {"sha1", "ff"}}, {{"file", "c"}}}},
        {"a block without its closing tag ends the walk",
         "<hash>\n<file>a</file>\n</hash>\n<hash>\n<file>b</file>\n",
         {"file"},
         {{{"file", "a"}}}},
        {"a child on the closing tag's line is dropped with that line",
         "<hash>\n<file>a</file>\n<md5>00</md5></hash>",
         {"file"},
         {{{"file", "a"}}}},
        {"a child over several lines: a column from each tag line, no value",
         "<hash>\n<path>\n  a.mov\n</path>\n</hash>",
         {"path", "/path"},
         {{}}},
        {"a self-closed child names a column of its own",
         "<hash>\n<null/>\n<null></null>\n</hash>",
         {"null/", "null"},
         {{{"null", ""}}}},
        {"a later child without a value removes the earlier value",
         "<hash>\n<md5>ab</md5>\n<md5>\n</hash>",
         {"md5"},
         {{}}},
        {"the value runs to its own closing tag",
         "<hash>\n <file>a<b</file> <x>\n</hash>",
         {"file"},
         {{{"file", "a<b"}}}},
        {"a line of text is no child",
         "<hash>\n  just text\n<file>a</file>\n</hash>",
         {"file"},
         {{{"file", "a"}}}},
        {"a hash tag with attributes opens a block",
         "<hash generation=\"1\">\n<md5>ab</md5>\n</hash >",
         {"md5"},
         {{{"md5", "ab"}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tables::MHLTable table = MHLParser(c.text).parse();
        EXPECT_EQ(table.name, "MHL table");
        EXPECT_EQ(table.cols, c.cols);
        EXPECT_EQ(rowsOf(table), c.rows);
    }
}

TEST(MHLParser, TagNamesAndPositions) {
    struct NameCase {
        std::string text;
        std::string expected;
    };
    for (const NameCase& c :
         {NameCase{"<file size=\"10\">a.mov</file>", "file"}, NameCase{" \t<md5>00</md5>", "md5"},
          NameCase{"</hash>", "/hash"}, NameCase{"<hash\n>", "hash"}, NameCase{"<hash\t>", "hash"},
          NameCase{"text <file>", ""}, NameCase{"\n<file>", ""}, NameCase{"", ""}, NameCase{"<", ""}}) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(tagName(c.text), c.expected);
    }

    const MHLParser parser("ab<hash x>cd<Hash></hash><hash");
    auto first = parser.nextTag("hash", 0);
    ASSERT_TRUE(first);
    EXPECT_EQ(*first, (TagBounds{2, 9}));
    auto closing = parser.nextTag("/hash", 10);
    ASSERT_TRUE(closing);
    EXPECT_EQ(*closing, (TagBounds{18, 24}));
    EXPECT_FALSE(parser.nextTag("hash", 3));
    EXPECT_FALSE(parser.nextTag("hash", 100));
}

TEST(MHLParser, FilesWithCarriageReturnsReadTheSame) {
    tables::testing::TempDir dir;
    std::string lf = tables::testing::fileBytes(kData + "card_A001.mhl");
    std::string crlf;
    for (char c : lf)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    auto fromLf = parseMHLFile(kData + "card_A001.mhl");
    auto fromCrlf = parseMHLFile(dir.write("copy.mhl", crlf));
    ASSERT_TRUE(fromLf && fromCrlf);
    EXPECT_EQ(fromCrlf->name, "copy");
    EXPECT_EQ(fromCrlf->cols, fromLf->cols);
    EXPECT_EQ(rowsOf(*fromCrlf), rowsOf(*fromLf));

    const std::string missing = dir.file("gone.mhl");
    base::PrintCapture capture;
    EXPECT_FALSE(parseMHLFile(missing));
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    EXPECT_TRUE(readMHLAsALETable(missing, nullptr).failure);
}

TEST(MHLParser, PrintsColumnsThenRowsTabSeparated) {
    auto table = parseMHLFile(kData + "card_A001.mhl");
    ASSERT_TRUE(table);
    base::PrintCapture capture;
    printMHLTable(*table);
    const std::vector<std::string> expected{
        "file\tsize\tcreationdate\tlastmodificationdate\tmd5\thashdate\txxhash64\txxhash64be",
        "A001/A001C003_230101.mov\t1048576000\t2023-01-01T10:12:00Z\t2023-01-01T10:14:00Z\t"
        "9e107d9d372bb6826bd81d3542a419d6\t2023-01-01T18:35:00Z\t\t",
        "A001/A001C004 230101.mov\t20480\t\t2023-01-01T10:20:00Z\te4d909c290d0fb1ca068ffaddf22cbd0\t"
        "2023-01-01T18:36:00Z\t0a1b2c3d4e5f6071\t",
        "\t\t\t\t\t\t\t",
        "A001/A001C005_230101.mov\t\t\t\tsecond\t\t\t1122334455667788",
    };
    EXPECT_EQ(capture.lines(), expected);
}

} // namespace
} // namespace lumbra::import
