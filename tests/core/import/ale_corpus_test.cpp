#include "base/console.h"
#include "core/corpus_files.h"
#include "import/ale_reader.h"
#include "import/ale_writer.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace lumbra::import {
namespace {

namespace fs = std::filesystem;
using tables::ALETable;
using Names = std::vector<std::string>;

using lumbra::testing::corpusEntries;
using lumbra::testing::corpusFile;

// What the files say, read by eye: the names on the line after "Column", the clips with text,
// and the columns that the reader adds around them.
struct AleFile {
    const char* name;
    std::size_t fileColumns;
    std::string firstColumn;
    std::string lastColumn;
    std::size_t rows;
    bool tapeFromHeading;
    std::size_t numberedColumns;
    std::string firstName;
};

const AleFile kAleFiles[] = {
    {"AcademySoftwareFoundation_OpenTimelineIO__sample.ale", 129, "Color", "Comments", 4, false, 0,
     "test_017056"},
    {"AcademySoftwareFoundation_OpenTimelineIO__sample2.ale", 32, "Name", "COMMENTS", 2, false, 0, "19A-1xa"},
    {"AcademySoftwareFoundation_OpenTimelineIO__sample3.ale", 17, "Name", "R3D.HighlightRollOff", 4, false, 0,
     "A005_C010_0501J0"},
    {"AcademySoftwareFoundation_OpenTimelineIO__sampleUHD.ale", 7, "Name", "FPS", 1, false, 0,
     "A118_C029_1102JR"},
    {"AcademySoftwareFoundation_OpenTimelineIO__sample_cdl.ale", 17, "Name", "R3D.HighlightRollOff", 4, false,
     0, "A005_C010_0501J0"},
    // The names line ends in a tab, and the last line holds a tab only.
    {"DFTi_ale_parser.js__fixture.ale", 32, "Name", "Resolve_sizing", 28, false, 0, "101B-1a"},
    // The line after "Column" is empty: one unnamed column, the cells beyond it numbered.
    {"OpenTimelineIO_otio-ale-adapter__sample_blanks.ale", 1, "NoName", "NoName", 1, false, 36, ""},
    {"OpenTimelineIO_otio-ale-adapter__sample_no_blanks.ale", 245, "Name", "ZCoordPresent", 6, false, 0,
     "469C-4-1"},
    {"kloptops_ALEParser__all_headings.ALE", 58, "Name", "TC 25P", 5, false, 0, "01"},
    {"kloptops_ALEParser__simple.ALE", 4, "Name", "End", 1, true, 0, "CU Josh & Mary"},
};

TEST(Corpus, AleFilesLoad) {
    std::set<std::string> listed;
    for (const auto& f : kAleFiles)
        listed.insert(f.name);
    std::set<std::string> present;
    for (const auto& path : corpusEntries("ale"))
        present.insert(path.filename().string());
    EXPECT_EQ(present, listed);

    for (const auto& f : kAleFiles) {
        SCOPED_TRACE(f.name);
        base::PrintCapture capture;
        ReadResult read = readALE(corpusFile("ale", f.name));
        ASSERT_FALSE(read.failure);
        const ALETable& table = *read.table;
        EXPECT_TRUE(capture.lines().empty());
        EXPECT_EQ(table.tablename, std::string(f.name).substr(0, std::string(f.name).size() - 4));

        std::size_t added = 1 + (f.tapeFromHeading ? 1 : 0);
        ASSERT_EQ(table.cols.size(), added + f.fileColumns + f.numberedColumns);
        EXPECT_EQ(table.cols[0], "Lumbra_Color_Tag");
        EXPECT_EQ(table.cols[1] == "Tape", f.tapeFromHeading);
        EXPECT_EQ(table.cols[added], f.firstColumn);
        EXPECT_EQ(table.cols[added + f.fileColumns - 1], f.lastColumn);
        if (f.numberedColumns > 0) {
            EXPECT_EQ(table.cols.back(), "newcol_0" + std::to_string(f.numberedColumns));
        }
        std::set<std::string> unique(table.cols.begin(), table.cols.end());
        EXPECT_EQ(unique.size(), table.cols.size());

        ASSERT_EQ(table.data.size(), f.rows);
        for (const auto& row : table.data) {
            EXPECT_EQ(row->value("Lumbra_Color_Tag"), "None");
            EXPECT_EQ(row->table, &table);
        }
        EXPECT_EQ(table.data[0]->value("Name").value_or(""), f.firstName);

        // What the writer makes of it reads back to the same table.
        ReadResult reread = parseALEText(aleText(table, {}, false), "again");
        ASSERT_FALSE(reread.failure);
        const ALETable& again = *reread.table;
        EXPECT_EQ(std::tie(again.cols, again.field_delim, again.video_format, again.fps, again.audio_format,
                           again.film_format, again.tape),
                  std::tie(table.cols, table.field_delim, table.video_format, table.fps, table.audio_format,
                           table.film_format, table.tape));
        ASSERT_EQ(again.data.size(), table.data.size());
        for (std::size_t i = 0; i < table.data.size(); ++i)
            EXPECT_EQ(again.data[i]->data(), table.data[i]->data()) << "row " << i;
    }
}

TEST(Corpus, AleHeadings) {
    auto read = [](const char* name) {
        base::PrintCapture quiet;
        return std::move(*readALE(corpusFile("ale", name)).table);
    };
    // Every heading on one line: only the delimiter is read, as the second token.
    ALETable oneLine = read("AcademySoftwareFoundation_OpenTimelineIO__sample2.ale");
    EXPECT_EQ(oneLine.field_delim, "TABS");
    EXPECT_EQ(oneLine.video_format, std::nullopt);
    EXPECT_EQ(oneLine.fps, std::nullopt);
    ASSERT_FALSE(oneLine.data.empty());
    EXPECT_EQ(oneLine.data[0]->value("Camroll"), "XA007   ");

    ALETable all = read("kloptops_ALEParser__all_headings.ALE");
    EXPECT_EQ(all.video_format, "NTSC");
    EXPECT_EQ(all.film_format, "35mm, 4 perf");
    EXPECT_EQ(all.audio_format, "44khz");
    EXPECT_EQ(all.fps, "24");
    EXPECT_EQ(all.tape, std::nullopt);

    ALETable simple = read("kloptops_ALEParser__simple.ALE");
    EXPECT_EQ(simple.tape, "001");
    EXPECT_EQ(simple.rowValues(0),
              (Names{"None", "001", "CU Josh & Mary", "V", "01:00:00:00", "01:15:05:00"}));

    ALETable blanks = read("OpenTimelineIO_otio-ale-adapter__sample_blanks.ale");
    EXPECT_EQ(blanks.fps, "25");
    ASSERT_FALSE(blanks.data.empty());
    EXPECT_EQ(blanks.data[0]->value("NoName"), "A020C003_150905_E2XZ.mov");
    EXPECT_EQ(blanks.data[0]->value("newcol_001"), "V");

    ALETable colour = read("AcademySoftwareFoundation_OpenTimelineIO__sample.ale");
    ASSERT_GE(colour.data.size(), 4u);
    EXPECT_EQ(colour.data[0]->value("Color"), "   ");
    EXPECT_EQ(colour.data[3]->value("Name"), "Something");
}

TEST(Corpus, OtherFilesAreRefusedCleanly) {
    std::size_t tried = 0;
    for (const auto& folder : corpusEntries("")) {
        if (!fs::is_directory(folder) || folder.filename() == "ale" || folder.filename() == "LICENSES")
            continue;
        for (const auto& path : corpusEntries(folder.filename().string())) {
            SCOPED_TRACE(path.string());
            base::PrintCapture capture;
            ReadResult read = readALE(path.string());
            EXPECT_TRUE(read.failure);
            EXPECT_TRUE(read.table->data.empty());
            EXPECT_EQ(capture.lines(), Names{"ERROR: file is missing heading"});
            ++tried;
        }
    }
    EXPECT_GT(tried, 40u);
}

} // namespace
} // namespace lumbra::import
