#include "base/console.h"
#include "core/corpus_files.h"
#include "import/edl_parser.h"
#include "import/file_formats.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using Row = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

using lumbra::testing::corpusEntries;
using lumbra::testing::corpusFile;
const Names kSixColumns{"Id", "Name", "Start", "End", "Record_In", "Record_Out"};

// What the files say, read by eye: the title, the events, the first event whole, and the columns.
struct EdlFile {
    const char* name;
    std::string title;
    std::size_t rows;
    Names cols;
    Row firstRow;
};

const EdlFile kEdlFiles[] = {
    // Starts with an empty line; the bare "* sq001_s001" remarks hold no colon and are passed over.
    {"AcademySoftwareFoundation_OpenTimelineIO__25fps.edl",
     "SQ0002_A2",
     4,
     {"Id", "Name", "Start", "End", "Record_In", "Record_Out", " FROM CLIP NAME"},
     {{"Id", "001"},
      {"Name", "SC00.JPG"},
      {"Start", "01:00:00:00"},
      {"End", "01:00:06:11"},
      {"Record_In", "00:00:00:00"},
      {"Record_Out", "00:00:06:11"},
      {" FROM CLIP NAME", "sq001_s001"}}},
    // Zero-length cuts before the dissolves are events of their own; "* BLEND, DISSOLVE" has no colon.
    {"AcademySoftwareFoundation_OpenTimelineIO__dissolve_test_4.edl",
     "TRANSITION_TEST_2",
     8,
     kSixColumns,
     {{"Id", "001"},
      {"Name", "ABC0000."},
      {"Start", "01:00:06:18"},
      {"End", "01:00:08:00"},
      {"Record_In", "01:04:11:17"},
      {"Record_Out", "01:04:12:23"}}},
    // "AUD  3" under the event is an event line of its own.
    {"AcademySoftwareFoundation_OpenTimelineIO__multi_audio.edl",
     "MultiAudio",
     2,
     {"Id", "Name", "Start", "End", "Record_In", "Record_Out", " FROM CLIP NAME"},
     {{"Id", "001"},
      {"Name", "AX"},
      {"Start", "00:00:00:00"},
      {"End", "00:56:55:22"},
      {"Record_In", "00:00:00:00"},
      {"Record_Out", "00:56:55:22"},
      {" FROM CLIP NAME", "AX"}}},
    // Tabs are no blanks: the cut type and the first timecode make one token of four parts.
    {"AcademySoftwareFoundation_OpenTimelineIO__mixed_tabs_test.edl",
     "Example_Screening.01",
     0,
     {},
     {{"Id", "001"},
      {"Name", "ZZ100_50"},
      {"Start", "C\t\t01:00:04:05"},
      {"End", "01:00:05:12"},
      {"Record_In", "00:59:53:11"},
      {"Record_Out", "00:59:54:18"},
      {" FROM CLIP NAME", "ZZ100_501 (LAY3)"},
      {" SOURCE FILE", "ZZ100_501.LAY3.01"}}},
    {"AcademySoftwareFoundation_OpenTimelineIO__premiere_example.edl",
     "Premiere_Example.01",
     2,
     {"Id", "Name", "Start", "End", "Record_In", "Record_Out", " FROM CLIP NAME"},
     {{"Id", "001"},
      {"Name", "AX"},
      {"Start", "01:00:04:05"},
      {"End", "01:00:05:12"},
      {"Record_In", "00:59:53:11"},
      {"Record_Out", "00:59:54:18"},
      {" FROM CLIP NAME", "ZZ100_501.take_1.0001.exr"}}},
    // Comments without a blank behind the star: the clip name is known.
    {"AcademySoftwareFoundation_OpenTimelineIO__no_spaces_test.edl",
     "Example_Screening.01",
     0,
     {},
     {{"Id", "001"},
      {"Name", "ZZ100_50"},
      {"Start", "01:00:04:05"},
      {"End", "01:00:05:12"},
      {"Record_In", "00:59:53:11"},
      {"Record_Out", "00:59:54:18"},
      {"Clip_Name", "ZZ100_501 (LAY3)"},
      {"SOURCE FILE", "ZZ100_501.LAY3.01"}}},
    {"iluvcapra_pycmx__cdl_frmc_example01.edl",
     "cdl_frmc_example01",
     1,
     {"Id", "Name", "Start", "End", "Record_In", "Record_Out", "Clip_Name", "FRMC START", "ASC_SOP",
      "ASC_SAT"},
     {{"Id", "000001"},
      {"Name", "C004C008_240813ZW"},
      {"Start", "14:41:59:15"},
      {"End", "14:42:03:21"},
      {"Record_In", "01:00:00:00"},
      {"Record_Out", "01:00:04:06"},
      {"Clip_Name", "QTLF_101_010_113_BG_01_V001"},
      {"FRMC START", "1001 FRMC END: 1102 FRMC DURATION:102"},
      {"ASC_SOP", "(1.04751 1.0378 1.02485)(-0.00909 0.00062 0.01468)(1.0 1.0 1.0)"},
      {"ASC_SAT", "1.0"}}},
    // 39 events, 33 of them with a marker; wide blanks in the marker are collapsed.
    {"iluvcapra_pycmx__cdl_example01.edl",
     "cdl_example01",
     39,
     {},
     {{"Id", "000001"},
      {"Name", "B_0031C010_241010_133208_h1C2T"},
      {"Start", "13:30:27:13"},
      {"End", "13:30:29:01"},
      {"Record_In", "02:13:08:12"},
      {"Record_Out", "02:13:10:00"},
      {"Clip_Name", "117C-3-B"},
      {"LOC", "02:13:08:12 Green Sc 117 INTERCUT"},
      {"LOC_TIMESTAMP", "02:13:08:12"},
      {"LOC_COLOR", "Green"},
      {"LOC_NAME", "Sc"},
      {"ASC_SOP", "(0.9405 0.9439 0.9424)(-0.0500 -0.0276 -0.0144)(0.8888 0.9138 0.9896)"},
      {"ASC_SAT", "0.9640"}}},
};

TEST(EDLCorpus, EveryFileLoads) {
    std::map<std::string, const EdlFile*> described;
    for (const auto& f : kEdlFiles)
        described[f.name] = &f;
    std::size_t seen = 0;
    for (const auto& path : corpusEntries("edl")) {
        const std::string name = path.filename().string();
        SCOPED_TRACE(name);
        base::PrintCapture capture;
        std::optional<tables::EDLTable> table = parseEDLFile(path.string());
        ASSERT_TRUE(table);
        EXPECT_TRUE(capture.lines().empty());
        ASSERT_GE(table->cols.size(), kSixColumns.size());
        EXPECT_EQ(Names(table->cols.begin(), table->cols.begin() + 6), kSixColumns);
        EXPECT_FALSE(table->data.empty());
        // Every event line that makes a row has two tokens at least.
        for (const auto& entry : table->data)
            EXPECT_TRUE(entry.data.contains("Id") && entry.data.contains("Name"));

        auto it = described.find(name);
        if (it == described.end())
            continue;
        ++seen;
        const EdlFile& f = *it->second;
        EXPECT_EQ(table->name, f.title);
        if (f.rows > 0) {
            EXPECT_EQ(table->data.size(), f.rows);
        }
        if (!f.cols.empty()) {
            EXPECT_EQ(table->cols, f.cols);
        }
        EXPECT_EQ(table->data.front().data.toMap(), f.firstRow);
    }
    EXPECT_EQ(seen, std::size(kEdlFiles));
}

TEST(EDLCorpus, MarkersFillTheirColumns) {
    auto table = parseEDLFile(corpusFile("edl", "iluvcapra_pycmx__cdl_example01.edl"));
    ASSERT_TRUE(table);
    std::size_t marked = 0;
    for (const auto& entry : table->data)
        marked += entry.data.contains("LOC") && entry.data.contains("LOC_COLOR") ? 1 : 0;
    // 37 marker lines under 33 events: four events have two, and the second one stays.
    EXPECT_EQ(marked, 33u);
    ASSERT_GE(table->data.size(), 18u);
    const auto& eighteenth = table->data[17].data;
    EXPECT_EQ(eighteenth.valueOr("Id"), "000018");
    EXPECT_EQ(eighteenth.valueOr("LOC"), "02:13:56:13 White VFX 117_GUD_0160 add Norway landscape");
    EXPECT_EQ(eighteenth.valueOr("LOC_COLOR"), "White");
    EXPECT_EQ(eighteenth.valueOr("LOC_NAME"), "VFX");
}

TEST(EDLCorpus, ColourListsHaveNoReaderOfTheirOwn) {
    for (const auto& path : corpusEntries("cdl")) {
        SCOPED_TRACE(path.filename().string());
        EXPECT_EQ(import::formatForPath(path.string()), nullptr);
    }
}

} // namespace
} // namespace lumbra::import
