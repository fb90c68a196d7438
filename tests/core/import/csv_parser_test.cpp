#include "base/console.h"
#include "import/csv_parser.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using Row = std::map<std::string, std::string>;
using Cols = std::vector<std::string>;

const std::string dataDir = LUMBRA_TEST_DATA_DIR "/csv/";

std::vector<Row> rowsOf(const tables::DBTable& table) {
    std::vector<Row> rows;
    for (const auto& entry : table.data)
        rows.push_back(entry.data.toMap());
    return rows;
}

CsvOptions withFirstLine(FirstLineStyle style, int number = 0) {
    CsvOptions options;
    options.first_line = style;
    options.first_line_number = number;
    return options;
}

CsvOptions withSeparator(char32_t separator) {
    CsvOptions options;
    options.separator = separator;
    return options;
}

CsvOptions withDelimiter(char32_t delimiter) {
    CsvOptions options;
    options.delimiter = delimiter;
    return options;
}

CsvOptions standard(char32_t separator = U',') {
    CsvOptions options;
    options.separator = separator;
    options.standard_csv = true;
    return options;
}

TEST(CsvParser, SpreadsheetExportWithBomCrlfAndQuotes) {
    base::Notifications notices;
    base::PrintCapture quiet;
    auto table = parseCSVFile(dataDir + "spreadsheet.csv", nullptr, nullptr, &notices);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->name, "spreadsheet");
    // The quotes go before the fields are cut: the comma of the first comment splits it.
    EXPECT_EQ(table->cols, (Cols{"Name", "Tape", "Comments", "newcol_001"}));
    EXPECT_EQ(rowsOf(*table), (std::vector<Row>{
                                  {{"Name", "A001C001"},
                                   {"Tape", "A001"},
                                   {"Comments", "good take"},
                                   {"newcol_001", " slight buzz"}},
                                  {{"Name", "A001C002"}, {"Tape", "A001"}, {"Comments", "say cut"}},
                                  {{"Name", "A001C003"}, {"Tape", "A001"}},
                              }));
    ASSERT_EQ(notices.size(), 2u);
    EXPECT_EQ(notices[0],
              base::NotificationData("Bizarre columns count",
                                     "1 columns were added to fit the data. Is the CSV well formatted?",
                                     base::NotificationType::WARNING));
    // Read as standard CSV, which the sheet proposes for it, every value is kept whole.
    const CsvOptions proposed = proposedOptions(*readCSVText(dataDir + "spreadsheet.csv"), {});
    EXPECT_TRUE(proposed.standard_csv);
    table = parseCSVFile(dataDir + "spreadsheet.csv", &proposed, nullptr, nullptr);
    EXPECT_EQ(rowsOf(*table),
              (std::vector<Row>{
                  {{"Name", "A001C001"}, {"Tape", "A001"}, {"Comments", "good take, slight buzz"}},
                  {{"Name", "A001C002"}, {"Tape", "A001"}, {"Comments", "say \"cut\""}},
                  {{"Name", "A001C003"}, {"Tape", "A001"}},
              }));
}

TEST(CsvParser, FirstLineStyles) {
    // Lines: 0 "Report,2024", 1 "Column", 2 "Name,Tape", 3 "", 4 "Clip,Reel", 5 "A1,R1".
    const std::string text = readCSVText(dataDir + "first_lines.csv").value_or("");
    struct Case {
        std::string name;
        CsvOptions options;
        Cols cols;
        std::vector<Row> rows;
    };
    const std::vector<Case> cases{
        {"first",
         withFirstLine(FirstLineStyle::first),
         {"Report", "2024"},
         {{{"Report", "Column"}},
          {{"Report", "Name"}, {"2024", "Tape"}},
          {{"Report", "Clip"}, {"2024", "Reel"}},
          {{"Report", "A1"}, {"2024", "R1"}}}},
        {"afterempty",
         withFirstLine(FirstLineStyle::afterempty),
         {"Clip", "Reel"},
         {{{"Clip", "A1"}, {"Reel", "R1"}}}},
        {"aftercolumn",
         withFirstLine(FirstLineStyle::aftercolumn),
         {"Name", "Tape"},
         {{{"Name", "Clip"}, {"Tape", "Reel"}}, {{"Name", "A1"}, {"Tape", "R1"}}}},
        {"auto prefers the empty line",
         withFirstLine(FirstLineStyle::auto_),
         {"Clip", "Reel"},
         {{{"Clip", "A1"}, {"Reel", "R1"}}}},
        {"custom counts from 1",
         withFirstLine(FirstLineStyle::custom, 3),
         {"Name", "Tape"},
         {{{"Name", "Clip"}, {"Tape", "Reel"}}, {{"Name", "A1"}, {"Tape", "R1"}}}},
        {"custom on the last line: columns only", withFirstLine(FirstLineStyle::custom, 6), {"A1", "R1"}, {}},
        {"custom 0 is the first line",
         withFirstLine(FirstLineStyle::custom, 0),
         {"Report", "2024"},
         {{{"Report", "Column"}},
          {{"Report", "Name"}, {"2024", "Tape"}},
          {{"Report", "Clip"}, {"2024", "Reel"}},
          {{"Report", "A1"}, {"2024", "R1"}}}},
        {"custom past the end: empty table", withFirstLine(FirstLineStyle::custom, 99), {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto table = parseCSVText(text, c.options, "lines.csv", nullptr);
        EXPECT_EQ(table->cols, c.cols);
        EXPECT_EQ(rowsOf(*table), c.rows);
    }
}

TEST(CsvParser, FirstLineIndexFallsBackAndSeesQuotes) {
    struct Case {
        std::string name;
        std::string text;
        FirstLineStyle style;
        std::size_t expected;
    };
    const std::vector<Case> cases{
        {"auto without an empty line takes the line after Column", "x\nColumn\nA,B\n1,2",
         FirstLineStyle::auto_, 2},
        {"auto with neither takes the first line", "A,B\n1,2\n", FirstLineStyle::auto_, 0},
        {"an empty line at the very end is no section", "A,B\n1,2\n\n", FirstLineStyle::afterempty, 0},
        {"an empty line between double quotes does not count", "\"x\n\ny\",b\nName,Tape\n\nA,B",
         FirstLineStyle::afterempty, 3},
        {"nor one between curly quotes", "\u201Cx\n\ny\u201D\nName\n\nV", FirstLineStyle::afterempty, 5},
        {"Column must be the whole line", "x\n Column\nColumns\nColumn\nA", FirstLineStyle::aftercolumn, 4},
        {"a quoted Column line counts", "x\n\"Column\"\nA", FirstLineStyle::aftercolumn, 2},
        {"Column as the last line points past the end", "x\nColumn", FirstLineStyle::aftercolumn, 2},
        {"custom below 1 is the first line", "A\nB", FirstLineStyle::custom, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CSVParser parser(c.text, withFirstLine(c.style, -3));
        EXPECT_EQ(parser.firstLineIndex(), c.expected);
    }
}

TEST(CsvParser, ColumnNames) {
    struct Case {
        std::string name;
        std::string text;
        CsvOptions options;
        Cols expected;
    };
    const std::vector<Case> cases{
        {"empty names and repeats",
         "Name,,,Tape,Tape,Tape\n",
         {},
         {"Name", "NoName", "NoName_2", "Tape", "Tape_2", "Tape_3"}},
        {"a repeat skips a taken number", "A_2,A,A\n", {}, {"A_2", "A", "A_3"}},
        {"blanks, tabs and separators trimmed at both ends", " ,\tName,Tape, ,\t\n", {}, {"Name", "Tape"}},
        {"quotes are gone, so a quoted separator splits",
         "\"Name, first\",Tape\n",
         {},
         {"Name", " first", "Tape"}},
        {"a quoted line feed stays in the name", "\"Long\nNote\",Tape\n", {}, {"Long\nNote", "Tape"}},
        {"semicolon", "Name;Tape,Reel\n", withSeparator(U';'), {"Name", "Tape,Reel"}},
        {"a separator outside ASCII", "Name\u00A6Tape\n", withSeparator(U'\u00A6'), {"Name", "Tape"}},
        {"no line feed: one line, columns only", "Name,Tape", {}, {"Name", "Tape"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto table = parseCSVText(c.text, c.options, "x.csv", nullptr);
        EXPECT_EQ(table->cols, c.expected);
        EXPECT_TRUE(table->data.empty());
    }
}

TEST(CsvParser, Rows) {
    struct Case {
        std::string name;
        std::string text;
        CsvOptions options;
        Cols cols;
        std::vector<Row> rows;
    };
    const std::vector<Case> cases{
        {"short rows and empty fields leave keys unset",
         "A,B,C\n1\n1,,3\n",
         {},
         {"A", "B", "C"},
         {{{"A", "1"}}, {{"A", "1"}, {"C", "3"}}}},
        {"empty rows vanish (the column line is the first: auto would go behind the empty line)",
         "A,B\n,\n\n\n1,2\n,,,\n",
         withFirstLine(FirstLineStyle::first),
         {"A", "B"},
         {{{"A", "1"}, {"B", "2"}}}},
        {"long rows add numbered columns past the taken ones",
         "A,newcol_001\n1,2,3,4\n5,6,,,,\n",
         {},
         {"A", "newcol_001", "newcol_002", "newcol_003"},
         {{{"A", "1"}, {"newcol_001", "2"}, {"newcol_002", "3"}, {"newcol_003", "4"}},
          {{"A", "5"}, {"newcol_001", "6"}}}},
        {"double quotes are gone from values", "A,B\n\"x\"\"y\",\"\"\n", {}, {"A", "B"}, {{{"A", "xy"}}}},
        {"a quoted line feed still ends the row",
         "A,B\n\"one\ntwo\",3\n",
         {},
         {"A", "B"},
         {{{"A", "one"}}, {{"A", "two"}, {"B", "3"}}}},
        {"single quotes keep separators and line feeds and go",
         "A,B\n1,'x, y'\n2,'p\nq'\n",
         withDelimiter(U'\''),
         {"A", "B"},
         {{{"A", "1"}, {"B", "x, y"}}, {{"A", "2"}, {"B", "p\nq"}}}},
        {"an opened delimiter runs on across fields and rows",
         "A,B\nit's,x\n2,3\n",
         withDelimiter(U'\''),
         {"A", "B"},
         {{{"A", "it's,x\n2,3\n"}}}},
        {"one delimiter alone is kept",
         "A,B\n1,'\n",
         withDelimiter(U'\''),
         {"A", "B"},
         {{{"A", "1"}, {"B", "'\n"}}}},
        {"a pair of delimiters is an empty value",
         "A,B\n'',x\n''\n",
         withDelimiter(U'\''),
         {"A", "B"},
         {{{"A", ""}, {"B", "x"}}}},
        {"curly quotes keep separators and line feeds, and stay",
         "A,B\n1,\u201Cx, y\nz\u201D\n",
         {},
         {"A", "B"},
         {{{"A", "1"}, {"B", "\u201Cx, y\nz\u201D"}}}},
        {"curly quotes ignored",
         "A,B\n1,\u201Cx, y\nz\u201D\n",
         [] {
             CsvOptions o;
             o.ignore_oriented_quotes = true;
             return o;
         }(),
         {"A", "B", "newcol_001"},
         {{{"A", "1"}, {"B", "\u201Cx"}, {"newcol_001", " y"}}, {{"A", "z\u201D"}}}},
        {"a separator outside ASCII",
         "A\u00A6B\n1\u00A62\u00A6\n",
         withSeparator(U'\u00A6'),
         {"A", "B"},
         {{{"A", "1"}, {"B", "2"}}}},
        {"tab", "A\tB\n1,5\t2\n", withSeparator(U'\t'), {"A", "B"}, {{{"A", "1,5"}, {"B", "2"}}}},
        {"standard CSV keeps quoted separators and line feeds, a doubled quote is one",
         "A,B,C\n\"Wide, establishing\",\"\"\"hero\"\"\",\"two\nlines\"\n",
         standard(),
         {"A", "B", "C"},
         {{{"A", "Wide, establishing"}, {"B", "\"hero\""}, {"C", "two\nlines"}}}},
        {"standard CSV keeps quotes inside a field that does not begin with one",
         "\"N,ame\";B\n5\" cut;\"x\"y\";\"\"\n",
         standard(U';'),
         {"N,ame", "B"},
         {{{"N,ame", "5\" cut"}, {"B", "x\"y"}}}},
        {"standard CSV: an unclosed quote runs to the end",
         "A,B\n1,\"open\n2,3\n",
         standard(),
         {"A", "B"},
         {{{"A", "1"}, {"B", "open\n2,3\n"}}}},
        {"long rows in standard CSV",
         "A\n1,\"2\"\n",
         standard(),
         {"A", "newcol_001"},
         {{{"A", "1"}, {"newcol_001", "2"}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        base::Notifications notices;
        auto table = parseCSVText(c.text, c.options, "x.csv", &notices);
        EXPECT_EQ(table->cols, c.cols);
        EXPECT_EQ(rowsOf(*table), c.rows);
        // Only rows longer than the column line are worth a word to the user (two: the count, the names).
        const bool addedColumns = c.name.starts_with("long") || c.name == "curly quotes ignored";
        EXPECT_EQ(notices.size(), addedColumns ? 2u : 0u);
    }
}

TEST(CsvParser, AddedColumnsAreToldOnlyWithSomewhereToTellThem) {
    auto table = parseCSVText("A\n1,2,3\n", {}, "x.csv", nullptr);
    EXPECT_EQ(table->cols, (Cols{"A", "newcol_001", "newcol_002"}));
    base::Notifications notices;
    table = parseCSVText("A,,B\n1,2,3,4\n", {}, "/in/x.csv", &notices);
    ASSERT_EQ(notices.size(), 2u);
    EXPECT_EQ(notices[0].body, "1 columns were added to fit the data. Is the CSV well formatted?");
    EXPECT_EQ(notices[1], base::NotificationData("Columns without a name",
                                                 "/in/x.csv: the file does not name the columns NoName, "
                                                 "newcol_001, so Lumbra named them",
                                                 base::NotificationType::WARNING));
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
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        CsvOptions initial = initialOptions(text.find('\t') == std::string::npos ? "x.csv" : "x.tsv");
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
    struct Case {
        std::string file;
        CsvOptions options;
        Cols cols;
        std::vector<Row> rows;
    };
    CsvOptions ignoring;
    ignoring.ignore_oriented_quotes = true;
    const std::vector<Case> cases{
        {"latin1.csv",
         withSeparator(U';'),
         {"Name", "Note"},
         {{{"Name", "Caf\u00E9"}, {"Note", "cr\u00E8me"}}}},
        {"utf16.csv", {}, {"Name", "Note"}, {{{"Name", "A"}, {"Note", "\u201Cx, y\u201D"}}}},
        {"utf16be_without_bom.csv",
         standard(),
         {"Name", "Note"},
         {{{"Name", "A"}, {"Note", "caf\u00E9, cr\u00E8me"}}}},
        {"utf16.csv",
         ignoring,
         {"Name", "Note", "newcol_001"},
         {{{"Name", "A"}, {"Note", "\u201Cx"}, {"newcol_001", " y\u201D"}}}},
        {"single_quotes.csv",
         withDelimiter(U'\''),
         {"Name", "Note"},
         {{{"Name", "A001"}, {"Note", "one, two"}},
          {{"Name", "A002"}, {"Note", "line\nbreak"}},
          {{"Name", "A003"}, {"Note", "it's\n"}}}},
        {"single_quotes.csv",
         {},
         {"Name", "Note", "newcol_001"},
         {{{"Name", "A001"}, {"Note", "'one"}, {"newcol_001", " two'"}},
          {{"Name", "A002"}, {"Note", "'line"}},
          {{"Name", "break'"}},
          {{"Name", "A003"}, {"Note", "it's"}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        auto table = parseCSVFile(dataDir + c.file, &c.options, nullptr, nullptr);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->cols, c.cols);
        EXPECT_EQ(rowsOf(*table), c.rows);
    }
}

TEST(CsvParser, BadBytesAreReadAsLatin1) {
    auto table = parseCSVText("", {}, "x.csv", nullptr);
    EXPECT_EQ(table->cols, (Cols{"NoName"}));
    std::string folder = ::testing::TempDir();
    std::string path = folder + "/bad_bytes.csv";
    {
        std::FILE* f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fputs("Name\n\xC3\x28\xFF\n", f);
        std::fclose(f);
    }
    table = parseCSVFile(path, nullptr, nullptr, nullptr);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(rowsOf(*table), (std::vector<Row>{{{"Name", "\u00C3(\u00FF"}}}));
    std::remove(path.c_str());
}

TEST(CsvParser, UnreadableFileGivesNoTable) {
    base::PrintCapture capture;
    const std::string missing = dataDir + "missing.csv";
    EXPECT_EQ(parseCSVFile(missing, nullptr, nullptr, nullptr), nullptr);
    EXPECT_TRUE(capture.contains("ERROR WHILE READING FROM " + missing));
    EXPECT_EQ(parseCSVFile(dataDir, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(readCSVAsALETable(missing, nullptr).failure,
              (ReadFailure{missing, "the file cannot be read", {}}));
}

TEST(CsvParser, TsvFileAsClipTable) {
    auto read = readCSVAsALETable(dataDir + "day1.tsv", nullptr);
    ASSERT_FALSE(read.failure);
    const auto& table = read.table;
    EXPECT_EQ(table->tablename, "day1");
    EXPECT_EQ(table->cols, (Cols{"Name", "Tape", "Start"}));
    ASSERT_EQ(table->data.size(), 2u);
    EXPECT_EQ(table->data[1]->data().toMap(),
              (Row{{"Name", "A001C002"}, {"Tape", "A001"}, {"Start", "10:00:05:00"}}));
    EXPECT_EQ(table->data[1]->table, table.get());
}

} // namespace
} // namespace lumbra::import
