#include "cli_test_support.h"

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

class ConvertCommandTest : public lumbra::cli::testing::CliTest {};

const std::string kEdl = "TITLE: Day 3\r\nFCM: NON-DROP FRAME\r\n"
                         "001  A003C001 V     C        10:00:00:00 10:00:02:00 01:00:00:00 01:00:02:00\r\n"
                         "*FROM CLIP NAME:  A003C001.mov\r\n*ASC_SAT 1.0\r\n"
                         "002  A003C002 V     D    012 10:01:00:00 10:01:01:00 01:00:02:00 01:00:03:00\r\n";
const std::string kCcc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<ColorCorrectionCollection xmlns=\"urn:ASC:CDL:v1.01\">\n"
                         "<ColorCorrection id=\"A003C001\"><SOPNode><Description>day look</Description>\n"
                         "<Slope>1.1 1.0 0.9</Slope><Offset>0.0 0.0 0.01</Offset><Power>1.0 1.0 1.0</Power>\n"
                         "</SOPNode><SATNode><Saturation>0.9</Saturation></SATNode></ColorCorrection>\n"
                         "</ColorCorrectionCollection>\n";
const std::string kMhl =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<hashlist version=\"1.1\">\n<hash>\n"
    "<file>A003/A003C001.mov</file>\n<size>4096</size>\n<xxhash64>0123456789abcdef</xxhash64>\n"
    "</hash>\n<hash>\n<file>A003/A003C002.mov</file>\n"
    "<md5>d41d8cd98f00b204e9800998ecf8427e</md5>\n</hash>\n</hashlist>\n";

// Each suffix and flag reaches its reader or writer (their bytes are checked in the core tests). Written
// tables end without a line feed and put an empty line under the column names.
TEST_F(ConvertCommandTest, WritesTheFormatChosenBySuffixWithTheFlags) {
    const std::string heading =
        "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\n";
    const std::string columns = "Lumbra_Color_Tag\tTape\tName\tStart\tEnd\tScene\tComments";
    const std::string rows = "\nNone\tA001\tA001C001\t10:00:00:00\t10:00:05:00\t12\tgood take"
                             "\nNone\tA001\tA001C002\t10:00:05:00\t\t12A\t";
    const std::string added = "[WARNING] Bizarre columns count: 1 columns were added to fit the data. Is the "
                              "CSV well formatted?\n[WARNING] Columns without a name: " +
                              temp("in.csv") +
                              ": the file does not name the columns newcol_001, so Lumbra named them\n";
    // The input from the data folder, or written from the text; the output with the flags.
    struct Case {
        std::string input, text;
        std::vector<std::string> outputAndFlags;
        std::string expected, out = "", err = "";
    };
    const std::vector<Case> cases{
        {"clips.ale",
         "",
         {"out.ale", "--omit-film-format"},
         heading + "TAPE\tA001\n\nColumn\n" + columns + "\n\nData" + rows + "\n"},
        // A value holding the separator is quoted.
        {"clips.ale",
         "",
         {"out.csv", "--metadata"},
         "Metadata\nVIDEO_FORMAT,1080\nFPS,25\nAUDIO_FORMAT,48khz\nFILM_FORMAT,\"35mm, 4 perf\"\nTAPE,A001\n"
         "Column\nLumbra_Color_Tag,Tape,Name,Start,End,Scene,Comments\n\nNone,A001,A001C001,10:00:00:00,"
         "10:00:05:00,12,good take\nNone,A001,A001C002,10:00:05:00,,12A,"},
        {"clips.ale",
         "",
         {"out.tsv", "--omit-film-format", "--metadata"},
         "Metadata\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\nTAPE\tA001\nColumn\n" + columns + "\n" +
             rows},
        // The option after the files; the output replaces a longer file.
        {"clips.ale",
         "",
         {"old.csv", "--columns=Comments,Start"},
         "Comments,Start\n\ngood take,10:00:00:00\n,10:00:05:00"},
        {"clips.ale",
         "",
         {"out.csv", "--columns", "Nope,Scene,Other"},
         "Nope,Scene,Other\n\n,12,\n,12A,",
         "",
         "Warning: " + temp("out.csv") + ": the table has no column Nope, Other; written empty\n"},
        // Suffixes in any case; warnings go to standard output.
        {"crlf_no_delim.ALE",
         "",
         {"OUT.ALE"},
         "Heading\nFIELD_DELIM\tTABS\nFPS\t24\n\nColumn\nLumbra_Color_"
         "Tag\tName\tTape\n\nData\nNone\tB002C007\tB002\n",
         "WARNING: field delimiter not specified, assuming TABS\n"},
        {"in.csv", "Name,Tape\r\nA1,R1\r\n", {"out.tsv"}, "Name\tTape\n\nA1\tR1"},
        {"in.tsv", "Name\tTape\nA1\tR1\n", {"out.tsv"}, "Name\tTape\n\nA1\tR1"},
        {"in.csv", "Name;Tape\nA1;R1,x\n", {"out.tsv", "--separator", "semicolon"}, "Name\tTape\n\nA1\tR1,x"},
        {"in.csv", "Name|Tape\nA1|R1\n", {"out.tsv", "--separator=|"}, "Name\tTape\n\nA1\tR1"},
        {"in.csv",
         "Title\n\nName,Tape\nA1,R1\n",
         {"out.tsv", "--first-line", "first"},
         "Title\tnewcol_001\n\nName\tTape\nA1\tR1",
         added},
        {"in.csv", "x\ny\nName,Tape\nA1,R1\n", {"out.tsv", "--first-line=3"}, "Name\tTape\n\nA1\tR1"},
        {"in.csv", "Name,Note\nA1,'x; y'\n", {"out.tsv", "--delimiter", "single"}, "Name\tNote\n\nA1\tx; y"},
        {"in.csv",
         "Name,Note\nA1,\u201Cx,y\u201D\n",
         {"out.tsv", "--ignore-oriented-quotes"},
         "Name\tNote\tnewcol_001\n\nA1\t\u201Cx\ty\u201D",
         added},
        {"in.csv",
         "Name,Note\nA1,\"x, \"\"y\"\"\nz\"\n",
         {"out.csv", "--delimiter", "standard"},
         "Name,Note\n\nA1,\"x, \"\"y\"\"\nz\""},
        // Lists are written plain: no heading values, no colour tag column.
        {"day3.EDL",
         kEdl,
         {"out.ale"},
         "Heading\n\nColumn\nId\tName\tStart\tEnd\tRecord_In\tRecord_Out\tClip_Name\tASC_SAT\n\nData\n"
         "001\tA003C001\t10:00:00:00\t10:00:02:00\t01:00:00:00\t01:00:02:00\tA003C001.mov\t1.0\n"
         "002\tA003C002\t10:01:00:00\t10:01:01:00\t01:00:02:00\t01:00:03:00\t\t\n"},
        {"grade.ccc",
         kCcc,
         {"out.csv"},
         "id,ASC_SOP,ASC_SAT,Description\n\nA003C001,(1.1 1.0 0.9)(0.0 0.0 0.01)(1.0 1.0 1.0),0.9,day look"},
        {"card.mhl",
         kMhl,
         {"out.csv", "--columns=md5,file"},
         "md5,file\n\n,A003/A003C001.mov\nd41d8cd98f00b204e9800998ecf8427e,A003/A003C002.mov"},
    };
    file("old.csv", "older and longer content than the new file");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input + " " + c.outputAndFlags.back());
        std::vector<std::string> args{"convert", c.text.empty() ? data(c.input) : file(c.input, c.text),
                                      temp(c.outputAndFlags[0])};
        args.insert(args.end(), c.outputAndFlags.begin() + 1, c.outputAndFlags.end());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, c.err);
        EXPECT_EQ(result.out, c.out);
        EXPECT_EQ(readAll(temp(c.outputAndFlags[0])), c.expected);
    }
}

TEST_F(ConvertCommandTest, FailuresExitOneWithOneLineAndWriteNothing) {
    fs::create_directories(m_dir / "folder.ale");
    fs::create_directories(m_dir / "taken.ale" / "inside");
    fs::create_directories(m_dir / "folder.edl");
    const std::string notAFolder = file("plain/file.txt", "not a folder");
    std::string wide;
    for (int i = 0; i < 500'000; ++i)
        wide += "a,";
    file("wide.csv", wide + "\n");
    struct Case {
        std::string name, input, output, err;
        lumbra::cli::testing::ChildSetup setup = {};
    };
    const std::vector<Case> cases{
        {"missing input", temp("missing.ale"), temp("out.csv"),
         "Cannot read " + temp("missing.ale") + ": the file does not exist\n"},
        {"input is a folder", temp("folder.ale"), temp("out.csv"),
         "Cannot read " + temp("folder.ale") + ": it is a folder, not a file\n"},
        {"input without suffix", temp("plain"), temp("out.csv"),
         "Cannot read " + temp("plain") + ": no file suffix to choose the format by\n"},
        {"input without heading", data("no_heading.ale"), temp("out.csv"),
         "Cannot read " + data("no_heading.ale") + ", line 1: no \"Heading\" line: not an ALE file\n"},
        {"unknown input suffix", data("clips.txt"), temp("out.csv"),
         "Cannot read " + data("clips.txt") + ": unknown file suffix \".txt\"\n"},
        {"unknown output suffix", data("clips.ale"), temp("out.xlsx"),
         "Cannot write " + temp("out.xlsx") + ": unknown file suffix \".xlsx\"\n"},
        {"missing csv", temp("missing.csv"), temp("out.tsv"),
         "Cannot read " + temp("missing.csv") + ": the file cannot be read\n"},
        {"a list that cannot be read", temp("folder.edl"), temp("out.csv"),
         "Cannot read " + temp("folder.edl") + ": the file cannot be read\n"},
        {"output folder cannot be made (ale)", data("clips.ale"), notAFolder + "/out.ale",
         "Cannot write " + notAFolder + "/out.ale: ERROR: couldn't create directory " + notAFolder + "\n"},
        {"output folder cannot be made (csv)", data("clips.ale"), notAFolder + "/sub/out.csv",
         "Cannot write " + notAFolder + "/sub/out.csv: ERROR: couldn't crete directory " + notAFolder +
             "/sub\n"},
        {"output is a folder, left as it was", data("clips.ale"), temp("taken.ale"),
         "Cannot write " + temp("taken.ale") + ": ERROR while saving file " + temp("taken.ale") + "\n"},
        {"out of memory",
         temp("wide.csv"),
         temp("out.ale"),
         "lumbra-cli: out of memory\n",
         {.unprivileged = false, .memoryLimit = 96 << 20, .goneWorkingFolder = {}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto result = run({"convert", c.input, c.output}, c.setup);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, c.err);
        EXPECT_FALSE(fs::is_regular_file(c.output));
    }
    EXPECT_TRUE(fs::is_directory(m_dir / "taken.ale" / "inside"));

    // Folder rights do not bind the super-user.
    if (::geteuid() == 0)
        return;
    fs::create_directories(m_dir / "readonly");
    fs::permissions(m_dir / "readonly", fs::perms::owner_read | fs::perms::owner_exec);
    const std::string output = temp("readonly/out.tsv");
    auto result = run({"convert", data("clips.ale"), output});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "Cannot write " + output + ": ERROR while saving file " + output + "\n");
    EXPECT_TRUE(fs::is_empty(m_dir / "readonly"));
}

// Every command's wrong command line: status 2, what was wrong on standard error, nothing written.
TEST_F(ConvertCommandTest, WrongCommandLinesExitTwo) {
    const std::string ale = file("in.ale", "Heading\n\nColumn\nA\n\nData\n1\n");
    const std::string csv = file("in.csv", "A\n1\n");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{}, "Usage: lumbra-cli"},
        {{"frobnicate"}, "Usage: lumbra-cli"},
        {{"convert", ale}, "Usage: lumbra-cli convert"},
        {{"convert", ale, temp("a.csv"), temp("b.csv")}, "Usage: lumbra-cli convert"},
        {{"convert", ale, temp("a.csv"), "--quoted"}, "Usage: lumbra-cli convert"},
        {{"convert", ale, temp("a.csv"), "--columns"}, "Usage: lumbra-cli convert"},
        {{"convert", ale, temp("a.csv"), "--columns="}, "Usage: lumbra-cli convert"},
        {{"convert", csv, temp("a.csv"), "--separator", "ab"}, ""},
        {{"convert", csv, temp("a.csv"), "--delimiter"}, ""},
        {{"convert", csv, temp("a.csv"), "--first-line", "0"}, ""},
        {{"convert", csv, temp("a.csv"), "--first-line=custom"}, ""},
        {{"convert", ale, temp("a.csv"), "--separator", "tab"},
         "lumbra-cli convert: --separator, --delimiter, --first-line and --ignore-oriented-quotes apply to "
         ".csv "
         "and .tsv input only\n"},
        {{"project"}, "lumbra-cli project: "},
        {{"project", "rename", temp("P")}, "lumbra-cli project: "},
        {{"project", "import", temp("P")}, "lumbra-cli project: "},
        {{"project", "copy", temp("P")}, "lumbra-cli project: "},
        {{"project", "info", temp("P"), "--fps", "25"}, "lumbra-cli project: "},
        {{"project", "save", temp("P"), "--yes", "--no"}, "lumbra-cli project: "},
        {{"project", "info", temp("P"), "--separator", "tab"},
         "lumbra-cli project: --separator does not apply to info\n"},
        {{"project", "create", temp("Q"), "--tape", "A\"B"}, "lumbra-cli project: "},
        {{"bin", "export", temp("P"), "clips"}, "lumbra-cli bin: PATH, BIN and OUTPUT are needed\n"},
        {{"db"}, "lumbra-cli db: a subcommand is needed"},
        {{"db", "list", temp("P"), "--separator", "tab"},
         "lumbra-cli db: --separator does not apply to list"},
        {{"db", "tool", temp("P"), "t", "sort", "A"}, "lumbra-cli db: unknown tool \"sort\""},
        {{"mhl"}, "lumbra-cli mhl: FILE is needed\n"},
        {{"mhl", "a.mhl", "b.mhl"}, ""},
    };
    for (const auto& [args, err] : cases) {
        SCOPED_TRACE(args.empty() ? "" : args.back());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find(err), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "");
    }
    EXPECT_FALSE(fs::exists(temp("a.csv")));
    EXPECT_FALSE(fs::exists(temp("Q")));

    auto help = run({"convert", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_TRUE(help.out.starts_with("Usage: lumbra-cli convert INPUT OUTPUT"));
}

TEST_F(ConvertCommandTest, MhlPrintsColumnsThenRowsForAnySuffix) {
    auto result = run({"mhl", file("card.mhl", kMhl)});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "file\tsize\txxhash64\tmd5\nA003/A003C001.mov\t4096\t0123456789abcdef\t\n"
                          "A003/A003C002.mov\t\t\td41d8cd98f00b204e9800998ecf8427e\n");
    EXPECT_EQ(run({"mhl", file("list.txt", "<hash>\n<file>a</file>\n</hash>\n")}).out, "file\na\n");
    auto missing = run({"mhl", temp("gone.mhl")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.err, "Cannot read " + temp("gone.mhl") + ": the file could not be read\n");
}

} // namespace
