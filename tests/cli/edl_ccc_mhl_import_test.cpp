#include "cli_test_support.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

const std::string kEdl = "TITLE: Day 3\r\n"
                         "FCM: NON-DROP FRAME\r\n"
                         "001  A003C001 V     C        10:00:00:00 10:00:02:00 01:00:00:00 01:00:02:00\r\n"
                         "*FROM CLIP NAME:  A003C001.mov\r\n"
                         "*ASC_SAT 1.0\r\n"
                         "002  A003C002 V     D    012 10:01:00:00 10:01:01:00 01:00:02:00 01:00:03:00\r\n";
const std::string kCcc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<ColorCorrectionCollection xmlns=\"urn:ASC:CDL:v1.01\">\n"
                         "  <ColorCorrection id=\"A003C001\">\n"
                         "    <SOPNode>\n"
                         "      <Description>day look</Description>\n"
                         "      <Slope>1.1 1.0 0.9</Slope>\n"
                         "      <Offset>0.0 0.0 0.01</Offset>\n"
                         "      <Power>1.0 1.0 1.0</Power>\n"
                         "    </SOPNode>\n"
                         "    <SATNode><Saturation>0.9</Saturation></SATNode>\n"
                         "  </ColorCorrection>\n"
                         "</ColorCorrectionCollection>\n";
const std::string kMhl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<hashlist version=\"1.1\">\n"
                         "  <hash>\n"
                         "    <file>A003/A003C001.mov</file>\n"
                         "    <size>4096</size>\n"
                         "    <xxhash64>0123456789abcdef</xxhash64>\n"
                         "  </hash>\n"
                         "  <hash>\n"
                         "    <file>A003/A003C002.mov</file>\n"
                         "    <md5>d41d8cd98f00b204e9800998ecf8427e</md5>\n"
                         "  </hash>\n"
                         "</hashlist>\n";

class EdlCccMhlImportTest : public lumbra::cli::testing::CliTest {
protected:
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(temp(name), std::ios::binary) << bytes;
        return temp(name);
    }
};

// The readers' rows are checked in the core tests; these check that each suffix reaches its reader and
// that the table the converter writes is the plain one: no heading values, no colour tag column.
TEST_F(EdlCccMhlImportTest, ConvertReadsEachListBySuffix) {
    struct Case {
        std::string name;
        std::string input;
        std::string bytes;
        std::string output;
        std::string expected;
    };
    const std::vector<Case> cases{
        {"edl to ale", "day3.edl", kEdl, "out.ale",
         "Heading\n\nColumn\nId\tName\tStart\tEnd\tRecord_In\tRecord_Out\tClip_Name\tASC_SAT\n\nData\n"
         "001\tA003C001\t10:00:00:00\t10:00:02:00\t01:00:00:00\t01:00:02:00\tA003C001.mov\t1.0\n"
         "002\tA003C002\t10:01:00:00\t10:01:01:00\t01:00:02:00\t01:00:03:00\t\t\n"},
        {"edl to csv", "day3.EDL", kEdl, "out.csv",
         "Id,Name,Start,End,Record_In,Record_Out,Clip_Name,ASC_SAT\n\n"
         "001,A003C001,10:00:00:00,10:00:02:00,01:00:00:00,01:00:02:00,A003C001.mov,1.0\n"
         "002,A003C002,10:01:00:00,10:01:01:00,01:00:02:00,01:00:03:00,,"},
        {"ccc to ale", "grade.ccc", kCcc, "out.ale",
         "Heading\n\nColumn\nid\tASC_SOP\tASC_SAT\tDescription\n\nData\n"
         "A003C001\t(1.1 1.0 0.9)(0.0 0.0 0.01)(1.0 1.0 1.0)\t0.9\tday look\n"},
        {"ccc to csv", "grade.ccc", kCcc, "out.csv",
         "id,ASC_SOP,ASC_SAT,Description\n\nA003C001,(1.1 1.0 0.9)(0.0 0.0 0.01)(1.0 1.0 1.0),0.9,day look"},
        {"mhl to ale", "card.mhl", kMhl, "out.ale",
         "Heading\n\nColumn\nfile\tsize\txxhash64\tmd5\n\nData\n"
         "A003/A003C001.mov\t4096\t0123456789abcdef\t\n"
         "A003/A003C002.mov\t\t\td41d8cd98f00b204e9800998ecf8427e\n"},
        {"mhl to csv with chosen columns", "card.mhl", kMhl, "out.csv",
         "md5,file\n\n,A003/A003C001.mov\nd41d8cd98f00b204e9800998ecf8427e,A003/A003C002.mov"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> args{"convert", write(c.input, c.bytes), temp(c.output)};
        if (c.name.ends_with("chosen columns"))
            args.push_back("--columns=md5,file");
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(readAll(temp(c.output)), c.expected);
    }
}

TEST_F(EdlCccMhlImportTest, ConvertRefusesAListThatCannotBeRead) {
    fs::create_directories(temp("folder.edl"));
    auto result = run({"convert", temp("folder.edl"), temp("out.csv")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("ERROR WHILE READING FROM " + temp("folder.edl") + "\n"), std::string::npos)
        << result.out;
    EXPECT_EQ(result.err, "Cannot read " + temp("folder.edl") + ": the file cannot be read\n");
    EXPECT_FALSE(fs::exists(temp("out.csv")));

    auto cdl = run({"convert", write("grade.cdl", kCcc), temp("out.csv")});
    EXPECT_EQ(cdl.exitCode, 1);
    EXPECT_EQ(cdl.err, "Cannot read " + temp("grade.cdl") + ": unknown file suffix \".cdl\"\n");
}

TEST_F(EdlCccMhlImportTest, ProjectImportMakesOneBinPerList) {
    auto created = run({"project", "create", temp("P"), "--fps", "25"});
    ASSERT_EQ(created.exitCode, 0) << created.err;
    auto result = run({"project", "import", temp("P"), write("day3.edl", kEdl), write("grade.ccc", kCcc),
                       write("card.mhl", kMhl), temp("missing.mhl")});
    // The missing list is told and refused; the three others are loaded and saved all the same.
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "Cannot read " + temp("missing.mhl") + ": the file cannot be read\n");
    EXPECT_NE(result.out.find("[OK] Load OK: Successfully loaded 3 bins\n"), std::string::npos) << result.out;

    auto info = run({"project", "info", temp("P")});
    EXPECT_EQ(info.exitCode, 0) << info.err;
    // The EDL bin is named by its title, the others by their file names; read back from the project, each
    // bin's table has the colour tag column that the project's own files carry.
    std::map<std::string, std::string> bins;
    std::istringstream lines(info.out);
    for (std::string line; std::getline(lines, line);) {
        auto tab = line.find('\t');
        auto shape = line.find('\t', tab == std::string::npos ? tab : tab + 1);
        if (line.starts_with("  ") && shape != std::string::npos)
            bins[line.substr(2, tab - 2)] = line.substr(shape + 1);
    }
    EXPECT_EQ(bins, (std::map<std::string, std::string>{{"Day 3", "2 rows\t9 columns\tunlocked"},
                                                        {"grade", "1 row\t5 columns\tunlocked"},
                                                        {"card", "2 rows\t5 columns\tunlocked"}}))
        << info.out;

    int edlBins = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(temp("P")) / "_bins_")) {
        if (!entry.path().filename().string().starts_with("Day 3 - "))
            continue;
        ++edlBins;
        std::string ale = readAll(entry.path() / "Day 3.ale");
        // The list has no heading of its own: the project's frame rate fills it.
        EXPECT_NE(ale.find("FPS\t25\n"), std::string::npos) << ale;
        EXPECT_NE(ale.find("\nColumn\nId\tName\tStart\tEnd\tRecord_In\tRecord_Out\tClip_Name\tASC_SAT\n"),
                  std::string::npos)
            << ale;
    }
    EXPECT_EQ(edlBins, 1);
}

TEST_F(EdlCccMhlImportTest, MhlPrintsColumnsThenRows) {
    auto result = run({"mhl", write("card.mhl", kMhl)});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "file\tsize\txxhash64\tmd5\n"
                          "A003/A003C001.mov\t4096\t0123456789abcdef\t\n"
                          "A003/A003C002.mov\t\t\td41d8cd98f00b204e9800998ecf8427e\n");
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(m_dir))
        files.push_back(entry.path().filename().string());
    std::sort(files.begin(), files.end());
    EXPECT_EQ(files, (std::vector<std::string>{"card.mhl", "stderr.txt", "stdout.txt"}));

    // Any suffix: the command names the format.
    auto other = run({"mhl", write("list.txt", "<hash>\n<file>a</file>\n</hash>\n")});
    EXPECT_EQ(other.exitCode, 0) << other.err;
    EXPECT_EQ(other.out, "file\na\n");

    auto missing = run({"mhl", temp("gone.mhl")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.out,
              "ERROR reading " + temp("gone.mhl") + "\nERROR WHILE READING FROM " + temp("gone.mhl") + "\n");
    EXPECT_EQ(missing.err, "Cannot read " + temp("gone.mhl") + ": the file could not be read\n");

    auto usage = run({"mhl"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_TRUE(usage.err.starts_with("lumbra-cli mhl: FILE is needed\n")) << usage.err;
    EXPECT_EQ(run({"mhl", "a.mhl", "b.mhl"}).exitCode, 2);
}

} // namespace
