#include "cli_test_support.h"

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

class CsvImportCommandTest : public lumbra::cli::testing::CliTest {
protected:
    std::string input(const std::string& name, const std::string& text) const {
        std::ofstream(m_dir / name, std::ios::binary) << text;
        return temp(name);
    }
};

const std::string bizarre =
    "[WARNING] Bizarre columns count: 1 columns were added to fit the data. Is the CSV well formatted?\n";

// The written files end without a line feed and put an empty line under the column names.
TEST_F(CsvImportCommandTest, ConvertReadsDelimitedInputWithTheLayoutFlags) {
    struct Case {
        std::string name;
        std::string file;
        std::string text;
        std::vector<std::string> flags;
        std::string output;
        std::string expected;
        std::string expectedOut;
    };
    const std::vector<Case> cases{
        {"csv by default", "in.csv", "Name,Tape\r\nA1,R1\r\n", {}, "out.tsv", "Name\tTape\n\nA1\tR1", ""},
        {"semicolon by name",
         "in.csv",
         "Name;Tape\nA1;R1,x\n",
         {"--separator", "semicolon"},
         "out.tsv",
         "Name\tTape\n\nA1\tR1,x",
         ""},
        {"separator as itself",
         "in.csv",
         "Name|Tape\nA1|R1\n",
         {"--separator=|"},
         "out.tsv",
         "Name\tTape\n\nA1\tR1",
         ""},
        {"tsv input reads tabs", "in.tsv", "Name\tTape\nA1\tR1\n", {}, "out.tsv", "Name\tTape\n\nA1\tR1", ""},
        {"first line against auto",
         "in.csv",
         "Title\n\nName,Tape\nA1,R1\n",
         {"--first-line", "first"},
         "out.tsv",
         "Title\tnewcol_001\n\nName\tTape\nA1\tR1",
         bizarre},
        {"auto goes behind the empty line",
         "in.csv",
         "Title\n\nName,Tape\nA1,R1\n",
         {},
         "out.tsv",
         "Name\tTape\n\nA1\tR1",
         ""},
        {"line number",
         "in.csv",
         "x\ny\nName,Tape\nA1,R1\n",
         {"--first-line=3"},
         "out.tsv",
         "Name\tTape\n\nA1\tR1",
         ""},
        {"single quote delimiter keeps the separator",
         "in.csv",
         "Name,Note\nA1,'x; y'\n",
         {"--delimiter", "single"},
         "out.tsv",
         "Name\tNote\n\nA1\tx; y",
         ""},
        {"curly quotes ignored",
         "in.csv",
         "Name,Note\nA1,\u201Cx,y\u201D\n",
         {"--ignore-oriented-quotes"},
         "out.tsv",
         "Name\tNote\tnewcol_001\n\nA1\t\u201Cx\ty\u201D",
         bizarre},
        {"standard CSV read and written back",
         "in.csv",
         "Name,Note\nA1,\"x, \"\"y\"\"\nz\"\n",
         {"--delimiter", "standard"},
         "out.csv",
         "Name,Note\n\nA1,\"x, \"\"y\"\"\nz\"",
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> args{"convert", input(c.file, c.text), temp(c.output)};
        args.insert(args.end(), c.flags.begin(), c.flags.end());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        // Added columns are also named, with the file.
        EXPECT_EQ(result.out, c.expectedOut.empty()
                                  ? c.expectedOut
                                  : c.expectedOut + "[WARNING] Columns without a name: " + temp(c.file) +
                                        ": the file does not name the columns newcol_001, so "
                                        "Lumbra named them\n");
        EXPECT_EQ(readAll(temp(c.output)), c.expected);
    }
}

TEST_F(CsvImportCommandTest, ConvertRefusesLayoutFlagsThatDoNotFit) {
    const std::string csv = input("in.csv", "A\n1\n");
    const std::string ale = input("in.ale", "Heading\n\nColumn\nA\n\nData\n1\n");
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {"two characters", {"--separator", "ab"}},
        {"no value", {"--delimiter"}},
        {"line zero", {"--first-line", "0"}},
        {"unknown style", {"--first-line=custom"}},
    };
    for (const auto& [name, flags] : cases) {
        SCOPED_TRACE(name);
        std::vector<std::string> args{"convert", csv, temp("out.tsv")};
        args.insert(args.end(), flags.begin(), flags.end());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_FALSE(fs::exists(temp("out.tsv")));
    }
    auto onAle = run({"convert", ale, temp("out.tsv"), "--separator", "tab"});
    EXPECT_EQ(onAle.exitCode, 2);
    EXPECT_TRUE(onAle.err.starts_with("lumbra-cli convert: --separator, --delimiter, --first-line and "
                                      "--ignore-oriented-quotes apply to .csv and .tsv input only\n"))
        << onAle.err;

    auto missing = run({"convert", temp("missing.csv"), temp("out.tsv")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.err, "Cannot read " + temp("missing.csv") + ": the file cannot be read\n");
}

TEST_F(CsvImportCommandTest, ProjectImportAnswersTheLayoutQuestionWithTheFlags) {
    ASSERT_EQ(run({"project", "create", temp("P"), "--columns", "Name"}).exitCode, 0);
    const std::string project = temp("P");
    auto result = run({"project", "import", project, input("day.csv", "Name;Tape\nA1;R1\nA2;R2\n"),
                       input("sound.tsv", "Roll;Take\nS1;3\n"), "--separator", "semicolon"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("[OK] Load OK: Successfully loaded 2 bins\n"), std::string::npos) << result.out;
    auto info = run({"project", "info", project});
    // Bins come back from their ALE files, which give them the colour tag column. The flag serves the tsv
    // too.
    EXPECT_NE(info.out.find("\n  day\t"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("\t2 rows\t3 columns\tunlocked\n  sound\t"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("\t1 row\t3 columns\tunlocked\n"), std::string::npos) << info.out;

    auto tsv = run({"project", "import", project, input("takes.tsv", "Roll\tTake\nS1\t3\n")});
    EXPECT_EQ(tsv.exitCode, 0) << tsv.err;
    info = run({"project", "info", project});
    const auto takes = info.out.find("\n  takes\t");
    ASSERT_NE(takes, std::string::npos) << info.out;
    EXPECT_EQ(info.out.find("\t1 row\t3 columns\tunlocked\n", takes), info.out.find('\t', takes + 9))
        << info.out;

    auto misplaced = run({"project", "info", project, "--separator", "tab"});
    EXPECT_EQ(misplaced.exitCode, 2);
    EXPECT_TRUE(misplaced.err.starts_with("lumbra-cli project: --separator does not apply to info\n"))
        << misplaced.err;
}

} // namespace
