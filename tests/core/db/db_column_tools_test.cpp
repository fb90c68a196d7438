#include "db/db_column_tools.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

using namespace lumbra::db;
namespace tables = lumbra::tables;

namespace {

struct Case {
    const char* name;
    std::string input;
    std::string expected;
};

tables::DBTable tableOf(std::vector<std::string> cols, const std::vector<std::vector<std::string>>& rows) {
    tables::DBTable table("lookup");
    table.cols = std::move(cols);
    for (const auto& values : rows) {
        tables::DBEntry entry;
        for (std::size_t c = 0; c < values.size(); ++c)
            entry.data.set(table.cols[c], values[c]);
        table.data.push_back(std::move(entry));
    }
    table.hasChanged = false;
    return table;
}

std::vector<std::string> column(const tables::DBTable& table, const std::string& name) {
    std::vector<std::string> values;
    for (const auto& entry : table.data)
        values.emplace_back(entry.data.valueOr(name));
    return values;
}

} // namespace

TEST(DBColumnTools, SuppressedSequence) {
    const Case cases[] = {
        {"underscore before the frame", "A001_0012.dpx", "A001.dpx"},
        {"dot before the frame", "clip.0012.dpx", "clip.dpx"},
        {"in a folder", "/shots/A001_0012.dpx", "/shots/A001.dpx"},
        {"no separator before the digits", "frame12", "frame12"},
        {"no extension, underscore", "clip_0012", "clip"},
        {"only digits before the extension", "0012.dpx", "0012.dpx"},
        {"letters before the extension", "A001_B.dpx", "A001_B.dpx"},
        {"extension with a character below 0 is part of the stem", "A001.-_0012", "A001.-"},
        {"extension with a character above z is part of the stem", "A001.~_0012", "A001.~"},
        {"dot in a folder name only", "dir.v2/frame12", "dir.v2/frame12"},
        {"empty", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(suppressedSequence(c.input), c.expected);
    }
}

TEST(DBColumnTools, PathParts) {
    struct PathCase {
        const char* name;
        std::string input;
        std::string filename;
        std::string path;
        std::string noext;
    };
    const PathCase cases[] = {
        {"absolute", "/Volumes/A/clip.mov", "clip.mov", "/Volumes/A", "/Volumes/A/clip"},
        {"relative stays relative", "shots/A001/clip.mov", "clip.mov", "shots/A001", "shots/A001/clip"},
        {"bare name", "clip.mov", "clip.mov", "", "clip"},
        {"under the root", "/clip.mov", "clip.mov", "/", "/clip"},
        {"trailing slash", "shots/A001/", "A001", "shots", "shots/A001/"},
        {"no extension is copied", "clip", "clip", "", "clip"},
        {"dot in a folder only", "a.b/clip", "clip", "a.b", "a.b/clip"},
        {"two extensions lose the last", "/x/y.tar.gz", "y.tar.gz", "/x", "/x/y.tar"},
        {"hidden file", "/x/.profile", ".profile", "/x", "/x/.profile"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(lastPathComponent(c.input), c.filename);
        EXPECT_EQ(deletingLastPathComponent(c.input), c.path);
        EXPECT_EQ(deletingPathExtension(c.input), c.noext);
    }
}

TEST(DBColumnTools, NewColumnsStandBehindTheSourceAndGetOneMoreUnderscoreEachRun) {
    tables::DBTable table = tableOf({"File", "Size"}, {{"/a/b/c_0001.dpx", "10"}, {"d.mov", "20"}});
    EXPECT_EQ(inferPath(table, "File"), (std::vector<std::string>{"filename", "path"}));
    EXPECT_EQ(table.cols, (std::vector<std::string>{"File", "filename", "path", "Size"}));
    EXPECT_EQ(column(table, "filename"), (std::vector<std::string>{"c_0001.dpx", "d.mov"}));
    EXPECT_EQ(column(table, "path"), (std::vector<std::string>{"/a/b", ""}));
    EXPECT_TRUE(table.hasChanged);

    EXPECT_EQ(inferPath(table, "File"), (std::vector<std::string>{"filename_", "path_"}));
    EXPECT_EQ(table.cols,
              (std::vector<std::string>{"File", "filename_", "path_", "filename", "path", "Size"}));

    EXPECT_EQ(trimExtension(table, "filename"), "filename_noext");
    EXPECT_EQ(trimExtension(table, "filename"), "filename_noext_");
    EXPECT_EQ(suppressSequence(table, "File"), "File_noseq");
    EXPECT_EQ(table.cols, (std::vector<std::string>{"File", "File_noseq", "filename_", "path_", "filename",
                                                    "filename_noext_", "filename_noext", "path", "Size"}));
    EXPECT_EQ(column(table, "filename_noext"), (std::vector<std::string>{"c_0001", "d"}));
    EXPECT_EQ(column(table, "File_noseq"), (std::vector<std::string>{"/a/b/c.dpx", "d.mov"}));
}

TEST(DBColumnTools, AToolOnNoColumnChangesNothing) {
    tables::DBTable table = tableOf({"File"}, {{"a.mov"}});
    EXPECT_TRUE(inferPath(table, "Nope").empty());
    EXPECT_FALSE(trimExtension(table, "Nope"));
    EXPECT_FALSE(suppressSequence(table, "Nope"));
    EXPECT_FALSE(groupBy(table, "Nope"));
    EXPECT_EQ(table.cols, std::vector<std::string>{"File"});
    EXPECT_FALSE(table.hasChanged);
}

TEST(DBColumnTools, CombineAddsTheCodesPlusOneModulo255) {
    const struct {
        const char* name;
        std::string a;
        std::string b;
        std::string expected;
    } cases[] = {
        {"both empty", "", "", ""},
        {"a alone moves one code up", "a", "", "b"},
        {"b alone over the 1 of a missing a", "", "A", "B"},
        {"the longer text sets the length", "ab", "c", "\u00C5c"}, // 'a'+1+'c' = 197
        {"codes wrap at 255", "\u00FF", "", "\x01"},
        {"a character of two scalars counts as none", "e\u0301", "a", "b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(combine(c.a, c.b), c.expected);
    }
}

TEST(DBColumnTools, DigestGivesOneAlphabetEntryPerCharacter) {
    EXPECT_EQ(digest(""), "");
    const std::string alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVZ0123456789";
    std::string every;
    for (char c = ' '; c <= '~'; ++c)
        every += c;
    every += "\u00E9\u4E2D";
    std::string code = digest(every);
    ASSERT_EQ(code.size(), every.size() - 3); // the two last characters take five bytes
    for (char c : code) {
        EXPECT_NE(alphabet.find(c), std::string::npos) << c;
        EXPECT_TRUE(c != 'W' && c != 'X' && c != 'Y') << c;
    }
    std::string same = digest("aaa");
    EXPECT_EQ(same, std::string(3, same[0]));
    EXPECT_GT(std::set<char>(code.begin(), code.end()).size(), 20U);
}

TEST(DBColumnTools, FloatsReadWholeAndWriteShortest) {
    EXPECT_EQ(readFloat("10"), 10.0F);
    EXPECT_EQ(readFloat("2.5"), 2.5F);
    EXPECT_EQ(readFloat("1e3"), 1000.0F);
    EXPECT_EQ(readFloat("-4"), -4.0F);
    for (const char* text : {"", "10 ", " 10", "ten", "10px", "+", "1,5"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(readFloat(text));
    }
    EXPECT_EQ(formatFloat(30.0F), "30.0");
    EXPECT_EQ(formatFloat(12.5F), "12.5");
    EXPECT_EQ(formatFloat(0.1F), "0.1");
}

TEST(DBColumnTools, GroupByOnDistinctValuesChangesNothing) {
    tables::DBTable table = tableOf({"Clip", "Size"}, {{"A", "1"}, {"B", "2"}, {"C", "x"}});
    auto before = table.data;
    EXPECT_TRUE(groupBy(table, "Clip"));
    ASSERT_EQ(table.data.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(table.data[i].data, before[i].data);
    EXPECT_FALSE(table.hasChanged);
}

TEST(DBColumnTools, GroupBySumsNumbersKeepsEqualTextsAndCodesDifferentOnes) {
    tables::DBTable table =
        tableOf({"Clip", "Size", "Tape", "File", "Gain"}, {{"A", "10", "T1", "a_0001.dpx", "inf"},
                                                           {"B", "5", "T2", "b.mov", ""},
                                                           {"A", "20", "T1", "a_0002.dpx", "1"}});
    EXPECT_TRUE(groupBy(table, "Clip"));
    ASSERT_EQ(table.data.size(), 2U);
    const auto& merged = table.data[0].data;
    EXPECT_EQ(merged.valueOr("Clip"), "A");
    EXPECT_EQ(merged.valueOr("Size"), "30.0");
    EXPECT_EQ(merged.valueOr("Tape"), "T1");
    EXPECT_NE(merged.valueOr("Gain"), "inf"); // a text, not a number to sum
    std::string_view code = merged.valueOr("File");
    EXPECT_EQ(code.size(), std::string("a_0001.dpx").size());
    EXPECT_NE(code, "a_0001.dpx");
    EXPECT_NE(code, "a_0002.dpx");
    EXPECT_EQ(code.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVZ0123456789"),
              std::string::npos);
    EXPECT_EQ(table.data[1].data.valueOr("Clip"), "B");
    EXPECT_EQ(table.data[1].data.valueOr("Size"), "5");
    EXPECT_TRUE(table.hasChanged);
}

TEST(DBColumnTools, GroupByKeepsTheFirstRowOfEachKeyInPlace) {
    tables::DBTable table = tableOf(
        {"Key", "N"}, {{"x", "1"}, {"y", "1"}, {"x", "1"}, {"", "1"}, {"y", "1"}, {"x", "1"}, {"", "1"}});
    table.data.push_back(tables::DBEntry{}); // a row without the key groups with ""
    EXPECT_TRUE(groupBy(table, "Key"));
    EXPECT_EQ(column(table, "Key"), (std::vector<std::string>{"x", "y", ""}));
    // The rows of "" merge from the last one back: "1" with the missing value combines to "2", which
    // then sums with the "1" of the row before it.
    EXPECT_EQ(column(table, "N"), (std::vector<std::string>{"3.0", "2.0", "3.0"}));
}

TEST(DBColumnTools, GroupByCodesATextThatDiffersOnlyInALaterRow) {
    // The second row repeats the first and changes nothing; the third differs and makes a code.
    tables::DBTable table = tableOf({"Key", "Tape"}, {{"k", "T1"}, {"k", "T1"}, {"k", "T9"}});
    EXPECT_TRUE(groupBy(table, "Key"));
    ASSERT_EQ(table.data.size(), 1U);
    EXPECT_NE(table.data[0].data.valueOr("Tape"), "T1");
    EXPECT_EQ(table.data[0].data.valueOr("Tape").size(), 2U);
}
