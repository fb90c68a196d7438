#include "base/console.h"
#include "table_test_support.h"
#include "tables/ale_table.h"

#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

using testing::columnOf;
using testing::TempDir;
using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;

struct Read {
    ALETable table;
    Lines printed;
};

// Writes the bytes to a file of the given name and reads it back as a table.
Read readBytes(const std::string& bytes, const std::string& name = "clips.ale") {
    TempDir dir;
    std::string path = dir.write(name, bytes);
    base::PrintCapture capture;
    ALETable table(path);
    return {std::move(table), capture.lines()};
}

// A good file with every line end a line feed; cases change one thing in it.
const std::string kGood = "Heading\n"
                          "FIELD_DELIM\tTABS\n"
                          "VIDEO_FORMAT\t1080\n"
                          "FPS\t25\n"
                          "\n"
                          "Column\n"
                          "Name\tStart\n"
                          "\n"
                          "Data\n"
                          "A\t01:00:00:00\n"
                          "B\t02:00:00:00\n";

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// UTF-16 with its byte order mark; `@` in the ASCII text stands for the given unit.
std::string utf16(const std::string& ascii, bool bigEndian, char16_t at = u'@') {
    std::string out = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (char c : ascii) {
        char16_t u = c == '@' ? at : static_cast<char16_t>(c);
        auto high = static_cast<char>(u >> 8);
        auto low = static_cast<char>(u & 0xFF);
        out.push_back(bigEndian ? high : low);
        out.push_back(bigEndian ? low : high);
    }
    return out;
}

// The file with its one data row holding "<value>" as Name.
std::string withName(const std::string& value) {
    return "Heading\nFIELD_DELIM\tTABS\nColumn\nName\tStart\nData\n" + value + "\t01:00:00:00\n";
}

TEST(ALEReader, GoodFile) {
    auto [table, printed] = readBytes(kGood);
    EXPECT_TRUE(table.state);
    EXPECT_TRUE(printed.empty());
    EXPECT_EQ(table.tablename, "clips");
    EXPECT_EQ(table.cols, (Names{"Lumbra_Color_Tag", "Name", "Start"}));
    EXPECT_EQ(columnOf(table, "Name"), (Names{"A", "B"}));
    EXPECT_EQ(columnOf(table, "Start"), (Names{"01:00:00:00", "02:00:00:00"}));
    EXPECT_EQ(columnOf(table, "Lumbra_Color_Tag"), (Names{"None", "None"}));
    EXPECT_EQ(table.field_delim, "TABS");
    EXPECT_EQ(table.video_format, "1080");
    EXPECT_EQ(table.fps, "25");
    EXPECT_EQ(table.audio_format, std::nullopt);
    EXPECT_EQ(table.tape, std::nullopt);
    EXPECT_EQ(table.separator, '\t');
    EXPECT_EQ(table.datastring, "A\t01:00:00:00\nB\t02:00:00:00\n");
    for (const auto& row : table.data) {
        EXPECT_EQ(row->table, &table);
        EXPECT_EQ(row->sharedstuff, nullptr);
    }
}

TEST(ALEReader, LineEndsAndEncodingsReadTheSame) {
    struct Case {
        const char* name;
        std::string bytes;
    };
    const Case cases[] = {
        {"carriage returns only", replaceAll(kGood, "\n", "\r")},
        {"carriage return and line feed pairs", replaceAll(kGood, "\n", "\r\n")},
        {"mixed line ends", replaceAll(replaceAll(kGood, "Column\n", "Column\r\n"), "Data\n", "Data\r")},
        {"utf-8 byte order mark", "\xEF\xBB\xBF" + kGood},
        {"utf-16 little endian", utf16(kGood, false)},
        {"utf-16 big endian with carriage returns", utf16(replaceAll(kGood, "\n", "\r\n"), true)},
        {"no final line feed", kGood.substr(0, kGood.size() - 1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] = readBytes(c.bytes);
        EXPECT_TRUE(table.state);
        EXPECT_TRUE(printed.empty());
        EXPECT_EQ(table.cols, (Names{"Lumbra_Color_Tag", "Name", "Start"}));
        EXPECT_EQ(columnOf(table, "Name"), (Names{"A", "B"}));
        EXPECT_EQ(columnOf(table, "Start"), (Names{"01:00:00:00", "02:00:00:00"}));
        EXPECT_EQ(table.fps, "25");
    }
}

TEST(ALEReader, CellText) {
    struct Case {
        const char* name;
        std::string bytes;
        std::string expected;
    };
    const Case cases[] = {
        {"latin-1 without byte order mark", withName("Caf\xE9 cr\xE8me"), "Caf\xC3\xA9 cr\xC3\xA8me"},
        {"latin-1 with carriage returns",
         replaceAll(withName("\xC5"
                             "se"),
                    "\n", "\r\n"),
         "\xC3\x85se"},
        {"utf-8 kept", withName("Caf\xC3\xA9"), "Caf\xC3\xA9"},
        {"utf-16 outside latin-1", utf16(withName("@"), false, u'\u201E'), "\xE2\x80\x9E"},
        {"double quotes are lost", withName("say \"hi\" now"), "say hi now"},
        {"curly quotes are text", withName("\xE2\x80\x9Chi\xE2\x80\x9D"), "\xE2\x80\x9Chi\xE2\x80\x9D"},
        {"blanks around a value stay", withName("  A "), "  A "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] = readBytes(c.bytes);
        EXPECT_TRUE(table.state);
        ASSERT_EQ(table.data.size(), 1u);
        EXPECT_EQ(table.data[0]->value("Name"), c.expected);
        EXPECT_EQ(table.data[0]->value("Start"), "01:00:00:00");
    }
}

TEST(ALEReader, QuotedLineFeedStillEndsTheClip) {
    auto [table, printed] =
        readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\nName\tStart\tEnd\nData\n\"two\nlines\"\tS\tE\nC\t1\n");
    EXPECT_TRUE(table.state);
    EXPECT_EQ(columnOf(table, "Name"), (Names{"two", "lines", "C"}));
    EXPECT_EQ(columnOf(table, "Start"), (Names{"(missing)", "S", "1"}));
    EXPECT_EQ(columnOf(table, "End"), (Names{"(missing)", "E", "(missing)"}));
    EXPECT_EQ(table.datastring, "two\nlines\tS\tE\nC\t1\n");

    // In the heading the quoted line feed keeps the line whole.
    auto quotedTape = readBytes("Heading\nFIELD_DELIM\tTABS\nTAPE\t\"A\nB\"\nColumn\nName\nData\nx\n");
    EXPECT_EQ(quotedTape.table.tape, "A\nB");
    EXPECT_EQ(columnOf(quotedTape.table, "Tape"), (Names{"A\nB"}));
}

TEST(ALEReader, RowsWithoutTextAreDropped) {
    const std::string head = "Heading\nFIELD_DELIM\tTABS\nColumn\nName\tStart\tEnd\nData\n";
    struct Case {
        const char* name;
        std::string data;
        Names names;
        Names ends;
    };
    const Case cases[] = {
        {"row of tabs only", "a\t\t1\n\t\t\nb\t\t2\n", {"a", "b"}, {"1", "2"}},
        {"empty lines", "\na\t\t1\n\n\nb\t\t2\n\n", {"a", "b"}, {"1", "2"}},
        {"column number starts again after an empty line", "\t\n\nb\t\t2", {"b"}, {"2"}},
        {"blank cell is text", " \t\t\n", {" "}, {"(missing)"}},
        {"nothing after Data", "", {}, {}},
        {"tabs and line feeds only", "\t\n\t\t\t\n\n", {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] = readBytes(head + c.data);
        EXPECT_TRUE(table.state);
        EXPECT_EQ(columnOf(table, "Name"), c.names);
        EXPECT_EQ(columnOf(table, "End"), c.ends);
        EXPECT_EQ(table.cols, (Names{"Lumbra_Color_Tag", "Name", "Start", "End"}));
    }
    auto noFinalLine = readBytes(head.substr(0, head.size() - 1));
    EXPECT_TRUE(noFinalLine.table.state);
    EXPECT_TRUE(noFinalLine.table.data.empty());
}

TEST(ALEReader, ColumnNames) {
    struct Case {
        const char* name;
        std::string columnsLine;
        std::string dataLine;
        Names cols;
        Names firstRow;
    };
    const Case cases[] = {
        {"trailing tab adds no column", "Name\tStart\t", "a\tb", {"Name", "Start"}, {"a", "b"}},
        {"leading tab loses its place",
         "\tName\tStart",
         "x\ty\tz",
         {"Name", "Start", "newcol_001"},
         {"x", "y", "z"}},
        {"blanks around the line", "  Name\tStart  ", "a\tb", {"Name", "Start"}, {"a", "b"}},
        {"blanks inside a name stay", "Shoot Date \tB", "a\tb", {"Shoot Date ", "B"}, {"a", "b"}},
        {"three of one name", "Name\tName\tName", "a\tb\tc", {"Name", "Name_2", "Name_3"}, {"a", "b", "c"}},
        {"numbers always from the token", "X\tX_2\tX", "a\tb\tc", {"X", "X_2", "X_3"}, {"a", "b", "c"}},
        {"unnamed columns",
         "A\t\tB\t\t\tC",
         "1\t2\t3\t4\t5\t6",
         {"A", "NoName", "B", "NoName_2", "NoName_3", "C"},
         {"1", "2", "3", "4", "5", "6"}},
        {"a column named NoName", "NoName\t\tA", "1\t2\t3", {"NoName", "NoName_2", "A"}, {"1", "2", "3"}},
        {"empty columns line", "", "a\tb", {"NoName", "newcol_001"}, {"a", "b"}},
        {"quotes dropped from names", "\"Name\"\tSt\"art\"", "a\tb", {"Name", "Start"}, {"a", "b"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\n" + c.columnsLine +
                                          "\nData\n" + c.dataLine + "\n");
        EXPECT_TRUE(table.state);
        Names expectedCols{"Lumbra_Color_Tag"};
        expectedCols.insert(expectedCols.end(), c.cols.begin(), c.cols.end());
        EXPECT_EQ(table.cols, expectedCols);
        ASSERT_EQ(table.data.size(), 1u);
        EXPECT_EQ(table.rowValues(0, c.cols), c.firstRow);
    }
}

TEST(ALEReader, ExtraCellsAddNumberedColumns) {
    auto [table, printed] = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\nName\tStart\nData\n"
                                      "a\tb\n"
                                      "c\td\te\tf\n"
                                      "g\th\t\ti\t\t\n");
    EXPECT_TRUE(table.state);
    EXPECT_TRUE(printed.empty());
    EXPECT_EQ(table.cols, (Names{"Lumbra_Color_Tag", "Name", "Start", "newcol_001", "newcol_002"}));
    EXPECT_EQ(columnOf(table, "newcol_001"), (Names{"(missing)", "e", "(missing)"}));
    EXPECT_EQ(columnOf(table, "newcol_002"), (Names{"(missing)", "f", "i"}));

    // An empty extra cell at the end of a line adds nothing.
    auto empties = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\nName\nData\na\t\t\t\n");
    EXPECT_EQ(empties.table.cols, (Names{"Lumbra_Color_Tag", "Name"}));

    // A cell past an empty one adds every column up to its own.
    auto gap = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\nName\nData\na\t\t\tz\n");
    EXPECT_EQ(gap.table.cols, (Names{"Lumbra_Color_Tag", "Name", "newcol_001", "newcol_002", "newcol_003"}));
    EXPECT_EQ(columnOf(gap.table, "newcol_003"), (Names{"z"}));

    // The file's own "newcol_001" is passed over.
    auto taken = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\nnewcol_001\nData\na\tb\n");
    EXPECT_EQ(taken.table.cols, (Names{"Lumbra_Color_Tag", "newcol_001", "newcol_002"}));
    EXPECT_EQ(columnOf(taken.table, "newcol_002"), (Names{"b"}));
}

TEST(ALEReader, TapeFromHeading) {
    auto added = readBytes("Heading\nFIELD_DELIM\tTABS\nTAPE\tReel 7\nColumn\nName\nData\na\nb\n");
    EXPECT_EQ(added.table.tape, "Reel 7");
    EXPECT_EQ(added.table.cols, (Names{"Lumbra_Color_Tag", "Tape", "Name"}));
    EXPECT_EQ(columnOf(added.table, "Tape"), (Names{"Reel 7", "Reel 7"}));

    auto kept = readBytes("Heading\nFIELD_DELIM\tTABS\nTAPE\tHEAD\nColumn\nName\tScene\tTape\nData\n"
                          "a\t1\tT1\n"
                          "b\t2\n");
    EXPECT_EQ(kept.table.tape, "HEAD");
    EXPECT_EQ(kept.table.cols, (Names{"Lumbra_Color_Tag", "Name", "Scene", "Tape"}));
    EXPECT_EQ(columnOf(kept.table, "Tape"), (Names{"T1", "(missing)"}));

    // Case matters: a "tape" column is another column.
    auto lower = readBytes("Heading\nFIELD_DELIM\tTABS\nTAPE\tH\nColumn\ntape\nData\nx\n");
    EXPECT_EQ(lower.table.cols, (Names{"Lumbra_Color_Tag", "Tape", "tape"}));
}

TEST(ALEReader, ColourTagColumn) {
    auto kept = readBytes("Heading\nFIELD_DELIM\tTABS\nTAPE\tH\nColumn\nName\tLumbra_Color_Tag\nData\n"
                          "a\tBlue\n"
                          "b\n");
    EXPECT_EQ(kept.table.cols, (Names{"Tape", "Name", "Lumbra_Color_Tag"}));
    EXPECT_EQ(columnOf(kept.table, "Lumbra_Color_Tag"), (Names{"Blue", "(missing)"}));

    auto none = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\nName\nData\n");
    EXPECT_TRUE(none.table.state);
    EXPECT_EQ(none.table.cols, (Names{"Lumbra_Color_Tag", "Name"}));
}

TEST(ALEReader, HeadingLines) {
    struct Case {
        const char* name;
        std::string headingLines;
        std::optional<std::string> ALETable::*field;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        {"video format joins its tokens", "VIDEO_FORMAT\t1080 i  50\n", &ALETable::video_format,
         "1080 i  50"},
        {"fps takes the second token", "FPS\t23.976 extra\n", &ALETable::fps, "23.976"},
        {"audio format", "AUDIO_FORMAT 48 khz\n", &ALETable::audio_format, "48 khz"},
        {"film format", "FILM_FORMAT\t35mm, 4 perf\n", &ALETable::film_format, "35mm, 4 perf"},
        {"tape value begins with a blank", "TAPE  A\n", &ALETable::tape, " A"},
        {"tab then blank", "TAPE\t A\n", &ALETable::tape, " A"},
        {"keyword in any case", "fps\t30\n", &ALETable::fps, "30"},
        {"blanks around the line", "   FPS 24   \n", &ALETable::fps, "24"},
        {"a second line replaces the first", "FPS\t24\nFPS\t25\n", &ALETable::fps, "25"},
        {"keyword alone is passed over", "FPS\n", &ALETable::fps, std::nullopt},
        {"a tab after the keyword gives an empty value", "FPS\t\n", &ALETable::fps, ""},
        {"unknown keyword", "FRAMES\t25\n", &ALETable::fps, std::nullopt},
        {"keyword with a colon is another keyword", "FPS:\t25\n", &ALETable::fps, std::nullopt},
        {"quotes dropped", "TAPE\t\"Reel 1\"\n", &ALETable::tape, "Reel 1"},
        {"everything on one line", "FIELD_DELIM\tTABS\tFPS\t25\n", &ALETable::fps, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] =
            readBytes("Heading\nFIELD_DELIM\tTABS\n" + c.headingLines + "Column\nName\nData\nx\n");
        EXPECT_TRUE(table.state);
        EXPECT_EQ(table.*c.field, c.expected);
    }

    auto words = readBytes("  HEADING \nFIELD_DELIM\tTABS\n column \nName\n DATA\nx\n");
    EXPECT_TRUE(words.table.state);
    EXPECT_EQ(columnOf(words.table, "Name"), (Names{"x"}));
}

TEST(ALEReader, FieldDelimiterWarnings) {
    struct Case {
        const char* name;
        std::string headingLines;
        Lines printed;
    };
    const Case cases[] = {
        {"missing", "FPS\t25\n", {"WARNING: field delimiter not specified, assuming TABS"}},
        {"unknown",
         "FIELD_DELIM\tcommas\n",
         {"WARNING: field delimiter 'commas' unknown, using TABS instead"}},
        {"second token only",
         "FIELD_DELIM\tCSV x\n",
         {"WARNING: field delimiter 'CSV' unknown, using TABS instead"}},
        {"TABS in any case, kept as written", "FIELD_DELIM\ttabs\n", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] = readBytes("Heading\n" + c.headingLines + "Column\nA\tB\nData\n1\t2\n");
        EXPECT_TRUE(table.state);
        EXPECT_EQ(printed, c.printed);
        EXPECT_EQ(columnOf(table, "B"), (Names{"2"}));
        EXPECT_EQ(table.field_delim, c.printed.empty() ? "tabs" : "TABS");
    }
}

TEST(ALEReader, BrokenFilesEndWithStateFalse) {
    struct Case {
        const char* name;
        std::string bytes;
        Lines printed;
    };
    const Case cases[] = {
        {"no heading", "Column\nName\nData\nx\n", {"ERROR: file is missing heading"}},
        {"heading after an empty line",
         "\nHeading\nFIELD_DELIM\tTABS\nColumn\nA\nData\n",
         {"ERROR: file is missing heading"}},
        {"heading with a tab",
         "Heading\t\nFIELD_DELIM\tTABS\nColumn\nA\nData\n",
         {"ERROR: file is missing heading"}},
        {"empty file", "", {"ERROR: file is missing heading"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [table, printed] = readBytes(c.bytes, "broken.ale");
        EXPECT_FALSE(table.state);
        EXPECT_EQ(printed, c.printed);
        EXPECT_EQ(table.tablename, "broken");
        EXPECT_TRUE(table.cols.empty());
    }

    const std::string openEnded[] = {
        "Heading\nFIELD_DELIM\tTABS\nFPS\t25\n",
        "Heading\nFIELD_DELIM\tTABS\nColumn",
        "Heading\nFIELD_DELIM\tTABS\nColumn\nA\tB\n",
        "Heading\nFIELD_DELIM\tTABS\nColumn\nA\tB\n\nDatum\n1\t2\n",
        "Heading\nFIELD_DELIM\tTABS\nColumn\nA\t\"B\nData\n1\t2\n",
    };
    for (const auto& bytes : openEnded) {
        SCOPED_TRACE(bytes);
        auto [table, printed] = readBytes(bytes);
        EXPECT_FALSE(table.state);
        EXPECT_TRUE(table.data.empty());
        EXPECT_FALSE(printed.empty());
    }
}

TEST(ALEReader, ColumnsLineReadingData) {
    // The line after "Column" is the names even when it reads "data"; clips start right after it.
    auto [table, printed] = readBytes("Heading\nFIELD_DELIM\tTABS\nColumn\n data \nx\ty\n");
    EXPECT_TRUE(table.state);
    EXPECT_EQ(table.cols, (Names{"Lumbra_Color_Tag", "data", "newcol_001"}));
    EXPECT_EQ(table.rowValues(0), (Names{"None", "x", "y"}));
}

TEST(ALEReader, PathsThatAreNoFile) {
    TempDir dir;
    struct Case {
        const char* name;
        std::string path;
        Lines printed;
    };
    const Case cases[] = {
        {"missing file", dir.file("none.ale"), {"file " + dir.file("none.ale") + " does not exist"}},
        {"missing folder", dir.file("no/such.ale"), {"file " + dir.file("no/such.ale") + " does not exist"}},
        {"a folder", dir.path(), {dir.path() + " is a directory"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        base::PrintCapture capture;
        base::Notifications notes;
        ALETable table(c.path, &notes);
        EXPECT_FALSE(table.state);
        EXPECT_EQ(capture.lines(), c.printed);
        EXPECT_TRUE(table.cols.empty());
        EXPECT_TRUE(table.data.empty());
        EXPECT_EQ(table.tablename, "");
        EXPECT_TRUE(notes.empty());
    }
}

TEST(ALEReader, UnreadableFile) {
    // The kernel lets this file be opened but not read from its start.
    const std::string path = "/proc/self/mem";
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << "no " << path;
    base::PrintCapture capture;
    base::Notifications notes;
    ALETable table(path, &notes);
    EXPECT_FALSE(table.state);
    EXPECT_EQ(capture.lines(), (Lines{"ERROR reading " + path, "error while opening " + path}));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "Reading error");
    EXPECT_TRUE(table.cols.empty());
}

TEST(ALEReader, TableName) {
    struct Case {
        const char* fileName;
        std::string tablename;
    };
    const Case cases[] = {
        {"clips.ale", "clips"},
        {"clips.ALE", "clips"},
        {"clips.txt", "clips"},
        {"day 1.v2.ale", "day 1.v2"},
        {"clips", "c"},
        {"abcd", ""},
        {"abc", ""},
        {"a", ""},
        {"abcd\xC3\xA9", "a"},
        {"\xC3\x89t\xC3\xA9.ale", "\xC3\x89t\xC3\xA9"},
        {"Reel \"A\" take.ale", "Reel \"A\" take"},
        {"a\"b/c\"d.ale", "c\"d"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fileName);
        auto [table, printed] = readBytes(kGood, c.fileName);
        EXPECT_TRUE(table.state);
        EXPECT_EQ(table.tablename, c.tablename);
    }
}

TEST(ALEReader, FromTextPointsRowsAtTheFinalTable) {
    base::PrintCapture capture;
    ALETable table = ALETable::fromText(kGood, "given");
    EXPECT_TRUE(table.state);
    EXPECT_EQ(table.tablename, "given");
    ASSERT_EQ(table.data.size(), 2u);
    for (const auto& row : table.data)
        EXPECT_EQ(row->table, &table);
    ALETable moved = std::move(table);
    for (const auto& row : moved.data)
        EXPECT_EQ(row->table, &moved);
}

} // namespace
} // namespace lumbra::tables
