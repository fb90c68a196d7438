#include "base/text_helpers.h"
#include "db/db_column_tools.h"

#include <gtest/gtest.h>
#include <set>

using namespace lumbra::db;
namespace tables = lumbra::tables;

namespace {

// The letters a digest is made of.
const std::string alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVZ0123456789";

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

TEST(DBColumnTools, SequencesAndPathParts) {
    const std::vector<std::pair<std::string, std::string>> sequences = {
        {"A001_0012.dpx", "A001.dpx"},
        {"/shots/clip.0012.dpx", "/shots/clip.dpx"},
        {"frame12", "frame12"},
        {"clip_0012", "clip"},
        {"0012.dpx", "0012.dpx"},
        {"A001_B.dpx", "A001_B.dpx"},
        {"A001.-_0012", "A001.-"},
        {"A001.~_0012", "A001.~"}, // an extension out of 0-z is stem
        {"dir.v2/frame12", "dir.v2/frame12"},
        {"", ""},
    };
    for (const auto& [input, expected] : sequences)
        EXPECT_EQ(suppressedSequence(input), expected) << input;
    // The file name, the folder and the path without its extension.
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> paths = {
        {"/Volumes/A/clip.mov", "clip.mov", "/Volumes/A", "/Volumes/A/clip"},
        {"shots/A001/clip.mov", "clip.mov", "shots/A001", "shots/A001/clip"},
        {"clip.mov", "clip.mov", "", "clip"},
        {"/clip.mov", "clip.mov", "/", "/clip"},
        {"shots/A001/", "A001", "shots", "shots/A001/"},
        {"a.b/clip", "clip", "a.b", "a.b/clip"},
        {"/x/y.tar.gz", "y.tar.gz", "/x", "/x/y.tar"},
        {"/x/.profile", ".profile", "/x", "/x/.profile"},
    };
    for (const auto& [input, filename, path, noext] : paths) {
        SCOPED_TRACE(input);
        EXPECT_EQ(std::make_tuple(lastPathComponent(input), deletingLastPathComponent(input),
                                  deletingPathExtension(input)),
                  std::tie(filename, path, noext));
    }
}

TEST(DBColumnTools, NewColumnsStandBehindTheSourceAndGetOneMoreUnderscoreEachRun) {
    tables::DBTable table = tableOf({"File", "Size"}, {{"/a/b/c_0001.dpx", "10"}, {"d.mov", "20"}});
    EXPECT_TRUE(inferPath(table, "Nope").empty());
    EXPECT_FALSE(trimExtension(table, "Nope") || suppressSequence(table, "Nope") || groupBy(table, "Nope"));
    EXPECT_FALSE(table.hasChanged);
    EXPECT_EQ(inferPath(table, "File"), (std::vector<std::string>{"filename", "path"}));
    EXPECT_EQ(column(table, "filename"), (std::vector<std::string>{"c_0001.dpx", "d.mov"}));
    EXPECT_EQ(column(table, "path"), (std::vector<std::string>{"/a/b", ""}));
    EXPECT_TRUE(table.hasChanged);
    EXPECT_EQ(inferPath(table, "File"), (std::vector<std::string>{"filename_", "path_"}));
    EXPECT_EQ(trimExtension(table, "filename"), "filename_noext");
    EXPECT_EQ(trimExtension(table, "filename"), "filename_noext_");
    EXPECT_EQ(suppressSequence(table, "File"), "File_noseq");
    EXPECT_EQ(table.cols, (std::vector<std::string>{"File", "File_noseq", "filename_", "path_", "filename",
                                                    "filename_noext_", "filename_noext", "path", "Size"}));
    EXPECT_EQ(column(table, "filename_noext"), (std::vector<std::string>{"c_0001", "d"}));
    EXPECT_EQ(column(table, "File_noseq"), (std::vector<std::string>{"/a/b/c.dpx", "d.mov"}));
}

TEST(DBColumnTools, CombineDigestAndFloats) {
    // Codes added plus one, modulo 255; the longer text sets the length; a character of two scalars counts as
    // none.
    const std::vector<std::tuple<std::string, std::string, std::string>> combined = {
        {"", "", ""},           {"a", "", "b"},         {"", "A", "B"},
        {"ab", "c", "\u00C5c"}, {"\u00FF", "", "\x01"}, {"e\u0301", "a", "b"}};
    for (const auto& [a, b, expected] : combined)
        EXPECT_EQ(combine(a, b), expected) << a << "+" << b;

    EXPECT_EQ(digest(""), "");
    std::string every;
    for (char c = ' '; c <= '~'; ++c)
        every += c;
    every += "\u00E9\u4E2D";
    std::string code = digest(every);
    ASSERT_EQ(code.size(), every.size() - 3); // the two last characters take five bytes
    EXPECT_EQ(code.find_first_not_of(alphabet), std::string::npos);
    std::string same = digest("aaa");
    EXPECT_EQ(same, std::string(3, same[0]));
    EXPECT_GT(std::set<char>(code.begin(), code.end()).size(), 20U);

    for (const auto& [text, value] : std::vector<std::pair<std::string, float>>{
             {"10", 10.0F}, {"2.5", 2.5F}, {"1e3", 1000.0F}, {"-4", -4.0F}})
        EXPECT_EQ(lumbra::base::parseFloat(text), value) << text;
    for (const char* text : {"", "10 ", " 10", "ten", "10px", "+", "1,5", "+-5"})
        EXPECT_FALSE(lumbra::base::parseFloat(text)) << text;
    EXPECT_EQ(std::make_tuple(formatFloat(30.0F), formatFloat(12.5F), formatFloat(0.1F)),
              std::make_tuple("30.0", "12.5", "0.1"));
}

TEST(DBColumnTools, GroupBySumsNumbersKeepsEqualTextsAndCodesDifferentOnes) {
    tables::DBTable distinct = tableOf({"Clip", "Size"}, {{"A", "1"}, {"B", "2"}, {"C", "x"}});
    EXPECT_TRUE(groupBy(distinct, "Clip"));
    EXPECT_EQ(column(distinct, "Size"), (std::vector<std::string>{"1", "2", "x"}));
    EXPECT_FALSE(distinct.hasChanged);

    tables::DBTable table =
        tableOf({"Clip", "Size", "Tape", "File", "Gain"}, {{"A", "10", "T1", "a_0001.dpx", "inf"},
                                                           {"B", "5", "T2", "b.mov", ""},
                                                           {"A", "20", "T1", "a_0002.dpx", "1"}});
    EXPECT_TRUE(groupBy(table, "Clip"));
    EXPECT_EQ(column(table, "Clip"), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(column(table, "Size"), (std::vector<std::string>{"30.0", "5"}));
    EXPECT_EQ(column(table, "Tape"), (std::vector<std::string>{"T1", "T2"}));
    EXPECT_NE(column(table, "Gain")[0], "inf"); // a text, not a number to sum
    const std::string code = column(table, "File")[0];
    EXPECT_EQ(code.size(), std::string("a_0001.dpx").size());
    EXPECT_TRUE(code != "a_0001.dpx" && code != "a_0002.dpx");
    EXPECT_EQ(code.find_first_not_of(alphabet), std::string::npos);
    EXPECT_TRUE(table.hasChanged);

    // The first row of each key stays in place; the rows of "" merge from the last one back: "1" with the
    // missing value combines to "2", which then sums with the "1" of the row before it.
    tables::DBTable keys = tableOf(
        {"Key", "N"}, {{"x", "1"}, {"y", "1"}, {"x", "1"}, {"", "1"}, {"y", "1"}, {"x", "1"}, {"", "1"}});
    keys.data.push_back(tables::DBEntry{}); // a row without the key groups with ""
    EXPECT_TRUE(groupBy(keys, "Key"));
    EXPECT_EQ(column(keys, "Key"), (std::vector<std::string>{"x", "y", ""}));
    EXPECT_EQ(column(keys, "N"), (std::vector<std::string>{"3.0", "2.0", "3.0"}));

    // A text that differs only in a later row is coded; the repeat before it changes nothing.
    tables::DBTable later = tableOf({"Key", "Tape"}, {{"k", "T1"}, {"k", "T1"}, {"k", "T9"}});
    EXPECT_TRUE(groupBy(later, "Key"));
    ASSERT_EQ(later.data.size(), 1U);
    EXPECT_NE(column(later, "Tape")[0], "T1");
    EXPECT_EQ(column(later, "Tape")[0].size(), 2U);
}
