#include "cli_test_support.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::CliResult;
using lumbra::cli::testing::readAll;

class ConvertCommandTest : public lumbra::cli::testing::CliTest {};

// clips.ale as the reader gives it: the colour tag and the heading's tape come first.
const std::string clipsHeading = "Heading\n"
                                 "FIELD_DELIM\tTABS\n"
                                 "VIDEO_FORMAT\t1080\n"
                                 "FPS\t25\n"
                                 "AUDIO_FORMAT\t48khz\n";
const std::string clipsColumns = "Lumbra_Color_Tag\tTape\tName\tStart\tEnd\tScene\tComments";
const std::string clipsRows = "\nNone\tA001\tA001C001\t10:00:00:00\t10:00:05:00\t12\tgood take"
                              "\nNone\tA001\tA001C002\t10:00:05:00\t\t12A\t";

// The writers' bytes are checked in the core tests; these cases check that each suffix and option reaches
// them.
TEST_F(ConvertCommandTest, WritesTheFormatChosenBySuffix) {
    struct Case {
        std::string name;
        std::string input;
        std::string output;
        std::vector<std::string> options;
        std::string expected;
        std::string expectedOut;
        std::string expectedErr = "";
    };
    const std::vector<Case> cases{
        {"ale without film format",
         "clips.ale",
         "out.ale",
         {"--omit-film-format"},
         clipsHeading + "TAPE\tA001\n\nColumn\n" + clipsColumns + "\n\nData" + clipsRows + "\n",
         ""},
        {"csv with metadata, a value holding the separator quoted",
         "clips.ale",
         "out.csv",
         {"--metadata"},
         "Metadata\nVIDEO_FORMAT,1080\nFPS,25\nAUDIO_FORMAT,48khz\nFILM_FORMAT,\"35mm, 4 "
         "perf\"\nTAPE,A001\nColumn\n"
         "Lumbra_Color_Tag,Tape,Name,Start,End,Scene,Comments\n"
         "\nNone,A001,A001C001,10:00:00:00,10:00:05:00,12,good take"
         "\nNone,A001,A001C002,10:00:05:00,,12A,",
         ""},
        {"tsv with metadata without film format",
         "clips.ale",
         "out.tsv",
         {"--omit-film-format", "--metadata"},
         "Metadata\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\nTAPE\tA001\nColumn\n" + clipsColumns +
             "\n" + clipsRows,
         ""},
        {"columns in csv, option after the files",
         "clips.ale",
         "out.csv",
         {"--columns=Comments,Start"},
         "Comments,Start\n\ngood take,10:00:00:00\n,10:00:05:00",
         ""},
        {"columns the table lacks, written empty with a warning",
         "clips.ale",
         "out.csv",
         {"--columns", "Nope,Scene,Other"},
         "Nope,Scene,Other\n\n,12,\n,12A,",
         "",
         "Warning: " + temp("out.csv") + ": the table has no column Nope, Other; written empty\n"},
        {"suffixes in any case, warnings on standard output",
         "crlf_no_delim.ALE",
         "OUT.ALE",
         {},
         "Heading\nFIELD_DELIM\tTABS\nFPS\t24\n\nColumn\nLumbra_Color_"
         "Tag\tName\tTape\n\nData\nNone\tB002C007\tB002\n",
         "WARNING: field delimiter not specified, assuming TABS\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> args{"convert", data(c.input), temp(c.output)};
        args.insert(args.end(), c.options.begin(), c.options.end());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, c.expectedErr);
        EXPECT_EQ(result.out, c.expectedOut);
        EXPECT_EQ(readAll(temp(c.output)), c.expected);
    }
}

TEST_F(ConvertCommandTest, ReplacesAnExistingOutput) {
    std::ofstream(temp("out.csv")) << "older and longer content than the new file";
    auto result = run({"convert", data("clips.ale"), temp("out.csv"), "--columns", "Scene"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(readAll(temp("out.csv")), "Scene\n\n12\n12A");
}

TEST_F(ConvertCommandTest, FailuresExitOneWithOneLineNamingTheFile) {
    fs::create_directories(m_dir / "plain");
    fs::create_directories(m_dir / "folder.ale");
    std::ofstream(m_dir / "plain" / "file.txt") << "not a folder";
    const std::string notAFolder = temp("plain/file.txt");
    struct Case {
        std::string name;
        std::string input;
        std::string output;
        std::string expectedErr;
        std::string expectedOut;
    };
    const std::vector<Case> cases{
        {"missing input", temp("missing.ale"), temp("out.csv"),
         "Cannot read " + temp("missing.ale") + ": the file does not exist\n",
         "file " + temp("missing.ale") + " does not exist\n"},
        {"input is a folder", temp("folder.ale"), temp("out.csv"),
         "Cannot read " + temp("folder.ale") + ": it is a folder, not a file\n",
         temp("folder.ale") + " is a directory\n"},
        {"input without suffix", temp("plain"), temp("out.csv"),
         "Cannot read " + temp("plain") + ": no file suffix to choose the format by\n", ""},
        {"input without heading", data("no_heading.ale"), temp("out.csv"),
         "Cannot read " + data("no_heading.ale") + ", line 1: no \"Heading\" line: not an ALE file\n",
         "ERROR: file is missing heading\n"},
        {"unknown input suffix", data("clips.txt"), temp("out.csv"),
         "Cannot read " + data("clips.txt") + ": unknown file suffix \".txt\"\n", ""},
        {"unknown output suffix", data("clips.ale"), temp("out.xlsx"),
         "Cannot write " + temp("out.xlsx") + ": unknown file suffix \".xlsx\"\n", ""},
        {"output folder cannot be made (ale)", data("clips.ale"), notAFolder + "/out.ale",
         "Cannot write " + notAFolder + "/out.ale: ERROR: couldn't create directory " + notAFolder + "\n",
         "ERROR: couldn't create directory " + notAFolder + "\n"},
        {"output folder cannot be made (csv)", data("clips.ale"), notAFolder + "/sub/out.csv",
         "Cannot write " + notAFolder + "/sub/out.csv: ERROR: couldn't crete directory " + notAFolder +
             "/sub\n",
         "ERROR: couldn't crete directory " + notAFolder + "/sub\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto result = run({"convert", c.input, c.output});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, c.expectedErr);
        EXPECT_EQ(result.out, c.expectedOut);
        EXPECT_FALSE(fs::exists(c.output));
    }
}

TEST_F(ConvertCommandTest, WhatEscapesACommandEndsItWithOneLineAndStatusOne) {
    // Half a million fields on one line need more memory than the child is given.
    std::string line;
    for (int i = 0; i < 500'000; ++i)
        line += "a,";
    std::ofstream(temp("wide.csv")) << line << '\n';
    struct Case {
        const char* name;
        std::vector<std::string> args;
        lumbra::cli::testing::ChildSetup setup;
        std::string err;
    };
    const std::vector<Case> cases{
        {"out of memory",
         {"convert", temp("wide.csv"), temp("out.ale")},
         {.unprivileged = false, .memoryLimit = 96 << 20, .goneWorkingFolder = {}},
         "lumbra-cli: out of memory\n"},
        {"working folder gone",
         {"project", "info", "P"},
         {.unprivileged = false, .memoryLimit = 0, .goneWorkingFolder = temp("gone")},
         "Cannot open P: the working folder cannot be read\n"},
        {"working folder gone, create",
         {"project", "create", "P"},
         {.unprivileged = false, .memoryLimit = 0, .goneWorkingFolder = temp("gone")},
         "Cannot create P: the working folder cannot be read\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto result = run(c.args, c.setup);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, c.err);
    }
}

TEST_F(ConvertCommandTest, FailedWriteOverAFolderLeavesItAsItWas) {
    fs::create_directories(m_dir / "taken.ale" / "inside");
    const std::string output = temp("taken.ale");
    auto result = run({"convert", data("clips.ale"), output});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "Cannot write " + output + ": ERROR while saving file " + output + "\n");
    EXPECT_EQ(result.out, "ERROR while saving file " + output + "\n");
    EXPECT_TRUE(fs::is_directory(m_dir / "taken.ale" / "inside"));
    EXPECT_EQ(std::distance(fs::directory_iterator(m_dir), fs::directory_iterator()),
              3); // taken.ale, stdout, stderr
}

TEST_F(ConvertCommandTest, UnwritableFolderFailsAndLeavesNoFile) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "folder permissions do not hold for root";
    fs::create_directories(m_dir / "readonly");
    fs::permissions(m_dir / "readonly", fs::perms::owner_read | fs::perms::owner_exec);
    const std::string output = temp("readonly/out.tsv");
    auto result = run({"convert", data("clips.ale"), output});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "Cannot write " + output + ": ERROR while saving file " + output + "\n");
    EXPECT_EQ(result.out, "ERROR while saving file " + output + "\n");
    EXPECT_TRUE(fs::is_empty(m_dir / "readonly"));
}

TEST_F(ConvertCommandTest, BadUsageExitsTwoWithUsageOnStandardError) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {"no command", {}},
        {"unknown command", {"frobnicate"}},
        {"one file only", {"convert", data("clips.ale")}},
        {"three files", {"convert", data("clips.ale"), temp("a.csv"), temp("b.csv")}},
        {"unknown option", {"convert", data("clips.ale"), temp("a.csv"), "--quoted"}},
        {"columns without a list", {"convert", data("clips.ale"), temp("a.csv"), "--columns"}},
        {"columns with an empty list", {"convert", data("clips.ale"), temp("a.csv"), "--columns="}},
    };
    for (const auto& [name, args] : cases) {
        SCOPED_TRACE(name);
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("Usage: lumbra-cli"), std::string::npos);
        EXPECT_EQ(result.out, "");
        EXPECT_FALSE(fs::exists(temp("a.csv")));
    }
}

TEST_F(ConvertCommandTest, HelpGoesToStandardOutput) {
    auto top = run({"--help"});
    EXPECT_EQ(top.exitCode, 0);
    EXPECT_EQ(top.err, "");
    EXPECT_NE(top.out.find("convert"), std::string::npos);
    auto convert = run({"convert", "--help"});
    EXPECT_EQ(convert.exitCode, 0);
    EXPECT_EQ(convert.err, "");
    EXPECT_TRUE(convert.out.starts_with("Usage: lumbra-cli convert INPUT OUTPUT"));
    EXPECT_NE(convert.out.find("--columns"), std::string::npos);
}

} // namespace
