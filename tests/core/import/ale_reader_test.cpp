#include "base/console.h"
#include "core/tables/table_test_support.h"
#include "import/ale_reader.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace lumbra::import {
namespace {

using tables::ALETable;
using tables::testing::TempDir;
using Names = std::vector<std::string>;

struct Read {
    ReadResult result;
    Names printed;
};

// Writes the bytes to a file of the given name and reads it back.
Read readBytes(const std::string& bytes, const std::string& name = "clips.ale") {
    TempDir dir;
    std::string path = dir.write(name, bytes);
    base::PrintCapture capture;
    ReadResult result = readALE(path);
    return {std::move(result), capture.lines()};
}

const std::string kGood =
    "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\n\nColumn\nName\tStart\n\nData\n"
    "A\t01:00:00:00\nB\t02:00:00:00\n";

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

std::string withHead(const std::string& columnsAndData) {
    return "Heading\nFIELD_DELIM\tTABS\nColumn\n" + columnsAndData;
}

// The file with its one data row holding `value` as Name.
std::string withName(const std::string& value) {
    return withHead("Name\tStart\nData\n" + value + "\t01:00:00:00\n");
}

TEST(ALEReader, ReadsColumnsAndRows) {
    struct Case {
        const char* name;
        std::string bytes;
        // The columns and rows behind the "Lumbra_Color_Tag" column that the reader adds unless the file
        // names it: cells split by "|", rows by ";", an absent cell "-".
        std::string expected;
        Names printed = {};
    };
    const std::string good = "Name|Start;A|01:00:00:00;B|02:00:00:00";
    const std::string three = "Name\tStart\tEnd\nData\n";
    const Case cases[] = {
        {"good file", kGood, good},
        {"carriage returns only", replaceAll(kGood, "\n", "\r"), good},
        {"carriage return and line feed pairs", replaceAll(kGood, "\n", "\r\n"), good},
        {"mixed line ends", replaceAll(replaceAll(kGood, "Column\n", "Column\r\n"), "Data\n", "Data\r"),
         good},
        {"utf-8 byte order mark", "\xEF\xBB\xBF" + kGood, good},
        {"utf-16 little endian", utf16(kGood, false), good},
        {"utf-16 big endian, crlf", utf16(replaceAll(kGood, "\n", "\r\n"), true), good},
        {"no final line feed", kGood.substr(0, kGood.size() - 1), good},
        {"latin-1", withName("Caf\xE9"), "Name|Start;Caf\xC3\xA9|01:00:00:00"},
        {"latin-1, crlf", replaceAll(withName("\xC5se"), "\n", "\r\n"), "Name|Start;\xC3\x85se|01:00:00:00"},
        {"utf-16 outside latin-1", utf16(withName("@"), false, u'\u201E'),
         "Name|Start;\xE2\x80\x9E|01:00:00:00"},
        {"double quotes are lost", withName("say \"hi\" now"), "Name|Start;say hi now|01:00:00:00"},
        {"curly quotes are text", withName("\xE2\x80\x9Chi\xE2\x80\x9D"),
         "Name|Start;\xE2\x80\x9Chi\xE2\x80\x9D|01:00:00:00"},
        {"blanks around a value stay", withName("  A "), "Name|Start;  A |01:00:00:00"},
        {"a quoted line feed still ends the clip", withHead(three + "\"two\nlines\"\tS\tE\nC\t1\n"),
         "Name|Start|End;two|-|-;lines|S|E;C|1|-"},
        {"a row of tabs is dropped", withHead(three + "a\t\t1\n\t\t\nb\t\t2\n"),
         "Name|Start|End;a|-|1;b|-|2"},
        {"empty lines restart the column", withHead(three + "\t\n\nb\t\t2"), "Name|Start|End;b|-|2"},
        {"a blank cell is text", withHead(three + " \t\t\n"), "Name|Start|End; |-|-"},
        {"nothing after Data", withHead(three), "Name|Start|End"},
        {"Data ends the file", withHead("Name\nData"), "Name"},
        {"trailing tab adds no column", withHead("Name\tStart\t\nData\na\tb\n"), "Name|Start;a|b"},
        {"leading tab loses its place", withHead("\tName\tStart\nData\nx\ty\tz\n"),
         "Name|Start|newcol_001;x|y|z"},
        {"blanks around the names line", withHead("  Name\tStart  \nData\na\tb\n"), "Name|Start;a|b"},
        {"numbered from the token", withHead("X\tX_2\tX\tX\nData\n"), "X|X_2|X_3|X_4"},
        {"unnamed columns", withHead("A\t\tB\t\t\tC\nData\n1\t2\t3\t4\t5\t6\n"),
         "A|NoName|B|NoName_2|NoName_3|C;1|2|3|4|5|6"},
        {"empty names line", withHead("\nData\na\tb\n"), "NoName|newcol_001;a|b"},
        {"quotes dropped from names", withHead("\"Name\"\tSt\"art\"\nData\n"), "Name|Start"},
        {"extra cells add numbered columns", withHead("Name\nData\na\nc\td\t\te\ng\t\t\t\n"),
         "Name|newcol_001|newcol_002|newcol_003;a|-|-|-;c|d|-|e;g|-|-|-"},
        {"the file's newcol_001 is passed over", withHead("newcol_001\nData\na\tb\n"),
         "newcol_001|newcol_002;a|b"},
        {"a names line reading data", withHead(" data \nx\ty\n"), "data|newcol_001;x|y"},
        {"heading words in any case", "  HEADING \nFIELD_DELIM\tTABS\n column \nName\n DATA\nx\n", "Name;x"},
        {"tape from the heading", "Heading\nFIELD_DELIM\tTABS\nTAPE\tReel 7\nColumn\nName\nData\na\n",
         "Tape|Name;Reel 7|a"},
        {"a quoted line feed in the heading",
         "Heading\nFIELD_DELIM\tTABS\nTAPE\t\"A\nB\"\nColumn\nN\nData\nx\n", "Tape|N;A\nB|x"},
        {"the file's Tape column is kept",
         "Heading\nFIELD_DELIM\tTABS\nTAPE\tH\nColumn\nName\tTape\nData\na\tT1\nb\n", "Name|Tape;a|T1;b|-"},
        {"a tape column is another column", "Heading\nFIELD_DELIM\tTABS\nTAPE\tH\nColumn\ntape\nData\nx\n",
         "Tape|tape;H|x"},
        {"the file's colour tag is kept",
         "Heading\nFIELD_DELIM\tTABS\nTAPE\tH\nColumn\nName\tLumbra_Color_Tag\nData\na\tBlue\nb\n",
         "Tape|Name|Lumbra_Color_Tag;H|a|Blue;H|b|-"},
        {"no field delimiter",
         "Heading\nColumn\nA\nData\n1\n",
         "A;1",
         {"WARNING: field delimiter not specified, assuming TABS"}},
        {"unknown field delimiter, second token",
         "Heading\nFIELD_DELIM\tCSV x\nColumn\nA\tB\nData\n1\t2\n",
         "A|B;1|2",
         {"WARNING: field delimiter 'CSV' unknown, using TABS instead"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [result, printed] = readBytes(c.bytes);
        const ALETable& table = *result.table;
        EXPECT_FALSE(result.failure);
        EXPECT_TRUE(table.state);
        EXPECT_EQ(printed, c.printed);
        const bool tagAdded = c.expected.find("Lumbra_Color_Tag") == std::string::npos;
        std::string shown;
        for (std::size_t i = tagAdded ? 1 : 0; i < table.cols.size(); ++i)
            shown += (shown.empty() ? "" : "|") + table.cols[i];
        for (const auto& row : table.data) {
            EXPECT_EQ(row->table, &table);
            EXPECT_EQ(row->sharedstuff, nullptr);
            shown += ";";
            for (std::size_t i = tagAdded ? 1 : 0; i < table.cols.size(); ++i)
                shown += (i > (tagAdded ? 1u : 0u) ? "|" : "") + row->value(table.cols[i]).value_or("-");
            if (tagAdded)
                EXPECT_EQ(row->value("Lumbra_Color_Tag"), "None");
        }
        EXPECT_EQ(shown, c.expected);
        if (tagAdded)
            EXPECT_EQ(table.cols.at(0), "Lumbra_Color_Tag");
    }
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
        {"keyword in any case, blanks around", "   fps 24   \n", &ALETable::fps, "24"},
        {"a second line replaces the first", "FPS\t24\nFPS\t25\n", &ALETable::fps, "25"},
        {"keyword alone is passed over", "FPS\n", &ALETable::fps, std::nullopt},
        {"a tab after the keyword gives an empty value", "FPS\t\n", &ALETable::fps, ""},
        {"keyword with a colon is another keyword", "FPS:\t25\n", &ALETable::fps, std::nullopt},
        {"quotes dropped", "TAPE\t\"Reel 1\"\n", &ALETable::tape, "Reel 1"},
        {"everything on one line", "FIELD_DELIM\tTABS\tFPS\t25\n", &ALETable::fps, std::nullopt},
        {"TABS in any case is kept as written", "FIELD_DELIM\ttabs\n", &ALETable::field_delim, "tabs"},
        {"an unknown delimiter becomes TABS", "FIELD_DELIM\tcommas\n", &ALETable::field_delim, "TABS"},
        {"a missing delimiter becomes TABS", "", &ALETable::field_delim, "TABS"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto [result, printed] = readBytes("Heading\n" + c.headingLines + "Column\nName\nData\nx\n");
        EXPECT_FALSE(result.failure);
        EXPECT_EQ((*result.table).*c.field, c.expected);
    }
}

TEST(ALEReader, RefusedFilesAreFailuresNamingFileAndLine) {
    TempDir dir;
    struct Case {
        const char* name;
        std::string bytes;
        // The failure's message behind the path, and the reader's last printed line.
        std::string message;
        std::string printed;
        // A path that is no readable file, instead of a file of the bytes.
        std::string path = {};
    };
    const std::string noHeading = ", line 1: no \"Heading\" line: not an ALE file";
    const std::string noData = ": no \"Data\" line";
    const std::string heading = "ERROR: file is missing heading";
    const std::string data = "ERROR: file is missing the Data line";
    const std::string none = dir.file("no/such.ale");
    const Case cases[] = {
        {"no heading", "Column\nName\nData\nx\n", noHeading, heading},
        {"heading after an empty line", "\nHeading\nColumn\nA\nData\n", noHeading, heading},
        {"heading with a tab", "Heading\t\nColumn\nA\nData\n", noHeading, heading},
        {"empty file", "", noHeading, heading},
        {"no Column line", "Heading\nFPS\t25\n", ": no \"Column\" line",
         "ERROR: file is missing the Column line"},
        {"nothing after Column", "Heading\nFIELD_DELIM\tTABS\n\nColumn",
         ", line 4: no line of column names after the \"Column\" line",
         "ERROR: file is missing the line of column names"},
        {"no Data line", withHead("A\tB\n\nDatum\n1\t2\n"), noData, data},
        {"an open quote swallows Data", withHead("A\t\"B\nData\n1\t2\n"), noData, data},
        {"no file", "", ": the file does not exist", "file " + none + " does not exist", none},
        {"a folder", "", ": it is a folder, not a file", dir.path() + " is a directory", dir.path()},
        // The kernel lets this file be opened but not read from its start.
        {"unreadable", "", ": the file cannot be read", "error while opening /proc/self/mem",
         "/proc/self/mem"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = c.path.empty() ? dir.write("broken.ale", c.bytes) : c.path;
        base::PrintCapture capture;
        base::Notifications notes;
        ReadResult result = readALE(path, &notes);
        ASSERT_TRUE(result.failure);
        EXPECT_EQ(result.failure->message(), path + c.message);
        EXPECT_FALSE(result.table->state);
        EXPECT_EQ(result.table->tablename, c.path.empty() ? "broken" : "");
        EXPECT_TRUE(result.table->data.empty());
        EXPECT_EQ(capture.lines().back(), c.printed);
        EXPECT_EQ(notes.size(), c.name == std::string("unreadable") ? 1u : 0u);
    }
}

TEST(ALEReader, TableNameDropsTheLastFourCharacters) {
    const std::pair<const char*, const char*> cases[] = {{"clips.ALE", "clips"},
                                                         {"day 1.v2.ale", "day 1.v2"},
                                                         {"clips", "c"},
                                                         {"abcd", ""},
                                                         {"abc", ""},
                                                         {"abcd\xC3\xA9", "a"},
                                                         {"\xC3\x89t\xC3\xA9.ale", "\xC3\x89t\xC3\xA9"},
                                                         {"a\"b/c\"d.ale", "c\"d"}};
    for (const auto& [fileName, tablename] : cases) {
        SCOPED_TRACE(fileName);
        EXPECT_EQ(readBytes(kGood, fileName).result.table->tablename, tablename);
    }
    base::PrintCapture quiet;
    ReadResult given = parseALEText("no heading", "given");
    EXPECT_EQ(given.table->tablename, "given");
    EXPECT_EQ(given.failure->path, "given");
}

} // namespace
} // namespace lumbra::import
