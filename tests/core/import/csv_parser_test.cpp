#include "core/tables/table_test_support.h"
#include "import/csv_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using tables::testing::shown;
using Style = FirstLineStyle;

const std::string dataDir = LUMBRA_TEST_DATA_DIR "/csv/";

std::string parsed(const std::string& text, const CsvOptions& options,
                   base::Notifications* notices = nullptr) {
    return shown(*parseCSVText(text, options, "x.csv", notices));
}

TEST(CsvParser, FirstLineIndexFallsBackAndSeesQuotes) {
    const struct {
        std::string name;
        std::string text;
        Style style;
        std::size_t expected;
    } cases[] = {
        {"auto without an empty line takes the line after Column", "x\nColumn\nA,B\n1,2", Style::auto_, 2},
        {"auto with neither takes the first line", "A,B\n1,2\n", Style::auto_, 0},
        {"an empty line at the very end is no section", "A,B\n1,2\n\n", Style::afterempty, 0},
        {"an empty line between double quotes does not count", "\"x\n\ny\",b\nName,Tape\n\nA,B",
         Style::afterempty, 3},
        {"nor one between curly quotes", "\u201Cx\n\ny\u201D\nName\n\nV", Style::afterempty, 5},
        {"Column must be the whole line", "x\n Column\nColumns\nColumn\nA", Style::aftercolumn, 4},
        {"a quoted Column line counts", "x\n\"Column\"\nA", Style::aftercolumn, 2},
        {"Column as the last line points past the end", "x\nColumn", Style::aftercolumn, 2},
        {"custom below 1 is the first line", "A\nB", Style::custom, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(CSVParser(c.text, {.first_line = c.style, .first_line_number = -3}).firstLineIndex(),
                  c.expected);
    }
}

TEST(CsvParser, ColumnsAndRows) {
    const CsvOptions single{.delimiter = U'\''}, standard{.standard_csv = true}, bar{.separator = U'\u00A6'};
    const CsvOptions flat{.ignore_oriented_quotes = true}, semiStd{.separator = U';', .standard_csv = true};
    const struct {
        std::string name;
        std::string text;
        CsvOptions options;
        std::string expected;
        std::size_t notices = 0;
    } cases[] = {
        {"unnamed and repeated", "Name,,,Tape,Tape,Tape\n", {}, "Name|NoName|NoName_2|Tape|Tape_2|Tape_3", 1},
        {"a repeat skips a taken number", "A_2,A,A\n", {}, "A_2|A|A_3"},
        {"blanks, tabs and separators trimmed at both ends", " ,\tName,Tape, ,\t\n", {}, "Name|Tape"},
        {"quotes are gone, so a quoted separator splits", "\"Name, first\",Tape\n", {}, "Name| first|Tape"},
        {"a quoted line feed stays in the name", "\"Long\nNote\",Tape\n", {}, "Long\nNote|Tape"},
        {"semicolon", "Name;Tape,Reel\n", {.separator = U';'}, "Name|Tape,Reel"},
        {"no line feed: one line, columns only", "Name,Tape", {}, "Name|Tape"},
        {"nothing at all", "", {}, "NoName", 1},
        {"custom: the last line", "A,B\n1,2", {.first_line = Style::custom, .first_line_number = 2}, "1|2"},
        {"custom: past the end", "A,B\n1,2", {.first_line = Style::custom, .first_line_number = 9}, ""},
        {"short rows and empty fields leave keys unset", "A,B,C\n1\n1,,3\n", {}, "A|B|C [A=1] [A=1|C=3]"},
        {"empty rows vanish", "A,B\n,\n\n\n1,2\n,,,\n", {.first_line = Style::first}, "A|B [A=1|B=2]"},
        {"long rows add numbered columns past the taken ones",
         "A,newcol_001\n1,2,3,4\n5,6,,,,\n",
         {},
         "A|newcol_001|newcol_002|newcol_003 [A=1|newcol_001=2|newcol_002=3|newcol_003=4] [A=5|newcol_001=6]",
         2},
        {"double quotes are gone from values", "A,B\n\"x\"\"y\",\"\"\n", {}, "A|B [A=xy]"},
        {"a quoted line feed still ends the row", "A,B\n\"one\ntwo\",3\n", {}, "A|B [A=one] [A=two|B=3]"},
        {"single quotes keep separators and line feeds and go", "A,B\n1,'x, y'\n2,'p\nq'\n", single,
         "A|B [A=1|B=x, y] [A=2|B=p\nq]"},
        {"an opened delimiter runs on across fields and rows", "A,B\nit's,x\n2,3\n", single,
         "A|B [A=it's,x\n2,3\n]"},
        {"one delimiter alone is kept", "A,B\n1,'\n", single, "A|B [A=1|B='\n]"},
        {"a pair of delimiters is an empty value", "A,B\n'',x\n''\n", single, "A|B [A=|B=x]"},
        {"curly quotes stay", "A,B\n1,\u201Cx, y\nz\u201D\n", {}, "A|B [A=1|B=\u201Cx, y\nz\u201D]"},
        {"curly quotes ignored", "A,B\n1,\u201Cx, y\nz\u201D\n", flat,
         "A|B|newcol_001 [A=1|B=\u201Cx|newcol_001= y] [A=z\u201D]", 2},
        {"a separator outside ASCII", "A\u00A6B\n1\u00A62\u00A6\n", bar, "A|B [A=1|B=2]"},
        {"tab", "A\tB\n1,5\t2\n", {.separator = U'\t'}, "A|B [A=1,5|B=2]"},
        {"standard CSV keeps quoted separators and line feeds, a doubled quote is one",
         "A,B,C\n\"Wide, establishing\",\"\"\"hero\"\"\",\"two\nlines\"\n", standard,
         "A|B|C [A=Wide, establishing|B=\"hero\"|C=two\nlines]"},
        {"standard CSV keeps quotes inside a field that does not begin with one",
         "\"N,ame\";B\n5\" cut;\"x\"y\";\"\"\n", semiStd, "N,ame|B [N,ame=5\" cut|B=x\"y]"},
        {"standard CSV: an unclosed quote runs to the end", "A,B\n1,\"open\n2,3\n", standard,
         "A|B [A=1|B=open\n2,3\n]"},
        {"long rows in standard CSV", "A\n1,\"2\"\n", standard, "A|newcol_001 [A=1|newcol_001=2]", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // Only columns added or named by the parse are worth a word to the user.
        base::Notifications notices;
        EXPECT_EQ(parsed(c.text, c.options, &notices), c.expected);
        EXPECT_EQ(notices.size(), c.notices);
    }
}

TEST(CsvParser, AddedColumnsAreToldOnlyWithSomewhereToTellThem) {
    EXPECT_EQ(parsed("A\n1,2,3\n", {}), "A|newcol_001|newcol_002 [A=1|newcol_001=2|newcol_002=3]");
    base::Notifications notices;
    auto table = parseCSVText("A,,B\n1,2,3,4\n", {}, "/in/x.csv", &notices);
    const base::Notifications expected{
        {"Bizarre columns count", "1 columns were added to fit the data. Is the CSV well formatted?",
         base::NotificationType::WARNING},
        {"Columns without a name",
         "/in/x.csv: the file does not name the columns NoName, newcol_001, so Lumbra named them",
         base::NotificationType::WARNING}};
    EXPECT_EQ(notices, expected);
}

TEST(CsvParser, SheetProposesStandardCsvWhereOnlyItReadsEvenly) {
    const std::vector<std::pair<std::string, bool>> cases{
        {"Name,Shot\nA,\"Wide, establishing\"\nB,Close\n", true},
        {"Name,Note\nA,\"x\ny\"\nB,z\n", true},
        {"Name\tNote\nA\t\"x\ty\"\n", true},
        {"Name,Note\nA,\"x\"\nB,y\n", false},
        {"A,B\n1,2,3\n\"x,y\"\n", false},
        {"\"a,b\",c", false},
    };
    EXPECT_TRUE(proposedOptions(*readCSVText(dataDir + "spreadsheet.csv"), {}).standard_csv);
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        const CsvOptions initial = initialOptions(text.find('\t') == std::string::npos ? "x.csv" : "x.tsv");
        EXPECT_EQ(proposedOptions(text, initial).standard_csv, expected);
    }
}

TEST(CsvParser, NamesLoseTheirLastFourCharacters) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"/shoot/day 1/clips.csv", "clips"}, {"Example", "Exa"}, {"a.tsv", "a"}, {"abc", ""}};
    for (const auto& [filename, expected] : cases) {
        SCOPED_TRACE(filename);
        EXPECT_EQ(parseCSVText("A\n1", {}, filename, nullptr)->name, expected);
    }
}

TEST(CsvParser, FilesInOtherEncodings) {
    const tables::testing::TempDir dir;
    const struct {
        std::string file;
        std::optional<CsvOptions> options;
        std::string expected;
    } cases[] = {
        // A spreadsheet's export with a byte order mark and CRLF: the quotes go before the fields are cut, so
        // the comma of the first comment splits it; read as standard CSV, every value is kept whole.
        {"spreadsheet.csv", std::nullopt,
         "Name|Tape|Comments|newcol_001 [Name=A001C001|Tape=A001|Comments=good take|newcol_001= slight buzz] "
         "[Name=A001C002|Tape=A001|Comments=say cut] [Name=A001C003|Tape=A001]"},
        {"spreadsheet.csv", CsvOptions{.standard_csv = true},
         "Name|Tape|Comments [Name=A001C001|Tape=A001|Comments=good take, slight buzz] "
         "[Name=A001C002|Tape=A001|Comments=say \"cut\"] [Name=A001C003|Tape=A001]"},
        {"latin1.csv", CsvOptions{.separator = U';'}, "Name|Note [Name=Caf\u00E9|Note=cr\u00E8me]"},
        {"utf16.csv", CsvOptions{}, "Name|Note [Name=A|Note=\u201Cx, y\u201D]"},
        {"utf16be_without_bom.csv", CsvOptions{.standard_csv = true},
         "Name|Note [Name=A|Note=caf\u00E9, cr\u00E8me]"},
        {"utf16.csv", CsvOptions{.ignore_oriented_quotes = true},
         "Name|Note|newcol_001 [Name=A|Note=\u201Cx|newcol_001= y\u201D]"},
        {"single_quotes.csv", CsvOptions{.delimiter = U'\''},
         "Name|Note [Name=A001|Note=one, two] [Name=A002|Note=line\nbreak] [Name=A003|Note=it's\n]"},
        {"single_quotes.csv", CsvOptions{},
         "Name|Note|newcol_001 [Name=A001|Note='one|newcol_001= two'] [Name=A002|Note='line] [Name=break'] "
         "[Name=A003|Note=it's]"},
        // Bytes that are no UTF-8 read as ISO Latin 1.
        {dir.write("bad_bytes.csv", "Name\n\xC3\x28\xFF\n"), CsvOptions{}, "Name [Name=\u00C3(\u00FF]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        auto table = parseCSVFile(c.file.starts_with("/") ? c.file : dataDir + c.file,
                                  c.options ? &*c.options : nullptr, nullptr, nullptr);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(shown(*table), c.expected);
    }
}

TEST(CsvParser, UnreadableFileGivesNoTableAndATsvFileAClipTable) {
    base::PrintCapture capture;
    const std::string missing = dataDir + "missing.csv";
    EXPECT_EQ(parseCSVFile(missing, nullptr, nullptr, nullptr), nullptr);
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    EXPECT_EQ(parseCSVFile(dataDir, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(readCSVAsALETable(missing, nullptr).failure,
              (ReadFailure{missing, "the file cannot be read", {}}));

    auto read = readCSVAsALETable(dataDir + "day1.tsv", nullptr);
    ASSERT_FALSE(read.failure);
    const auto& table = read.table;
    EXPECT_EQ(table->tablename, "day1");
    EXPECT_EQ(table->cols, (std::vector<std::string>{"Name", "Tape", "Start"}));
    ASSERT_EQ(table->data.size(), 2u);
    EXPECT_EQ(tables::testing::shownRow(table->data[1]->data(), table->cols),
              "Name=A001C002|Tape=A001|Start=10:00:05:00");
    EXPECT_EQ(table->data[1]->table, table.get());
}

} // namespace
} // namespace lumbra::import
