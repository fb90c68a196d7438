#include "base/console.h"
#include "base/text_file.h"
#include "core/tables/table_test_support.h"
#include "import/ale_reader.h"
#include "import/ale_writer.h"
#include "import/csv_writer.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace lumbra::import {
namespace {

using tables::ALETable;
using tables::RowData;
using tables::testing::fileBytes;
using tables::testing::makeTable;
using tables::testing::TempDir;
using Names = std::vector<std::string>;

// Two columns, two rows; the second row lacks B and the first holds a quote.
ALETable sampleTable() {
    ALETable t = makeTable({"A", "B"}, {{{"A", "1"}, {"B", "say \"hi\""}}, {{"A", "3"}}});
    t.field_delim = "TABS";
    t.video_format = "1080";
    t.fps = "25";
    t.audio_format = "48khz";
    t.film_format = "35mm, 4 perf";
    t.tape = "T1";
    return t;
}

void noHeadings(ALETable& t) {
    t.field_delim = t.video_format = t.fps = t.audio_format = t.film_format = t.tape = std::nullopt;
}

TEST(TableWriters, TextBytes) {
    using Write = std::function<std::string(const ALETable&)>;
    auto ale = [](Names columns, bool omitFilm) -> Write {
        return [=](const ALETable& t) { return aleText(t, columns, omitFilm); };
    };
    auto csv = [](std::string sep, bool meta, Names columns, bool omitFilm) -> Write {
        return [=](const ALETable& t) { return csvText(t, sep, meta, columns, omitFilm); };
    };
    const std::string heads =
        "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\n";
    const std::string rows = "\n\nColumn\nA\tB\n\nData\n1\tsay \"hi\"\n3\t\n";
    const std::string csvRows = "A,B\n\n1,\"say \"\"hi\"\"\"\n3,";
    struct Case {
        const char* name;
        std::function<void(ALETable&)> change;
        Write write;
        std::string expected;
    };
    const Case cases[] = {
        {"every heading, in the writer's order",
         {},
         ale({}, false),
         heads + "FILM_FORMAT\t35mm, 4 perf\nTAPE\tT1" + rows},
        {"film format omitted", {}, ale({}, true), heads + "TAPE\tT1" + rows},
        {"empty tape left out", [](ALETable& t) { t.tape = ""; }, ale({}, true),
         heads.substr(0, heads.size() - 1) + rows},
        {"other empty headings written",
         [](ALETable& t) {
             noHeadings(t);
             t.video_format = t.film_format = "";
         },
         ale({}, false), "Heading\nVIDEO_FORMAT\t\nFILM_FORMAT\t" + rows},
        {"no headings", noHeadings, ale({}, true), "Heading" + rows},
        {"given columns, one unknown",
         {},
         ale({"B", "X", "A"}, true),
         heads + "TAPE\tT1\n\nColumn\nB\tX\tA\n\nData\nsay \"hi\"\t\t1\n\t\t3\n"},
        {"no rows end in Data and a line feed", [](ALETable& t) { t.data.clear(); }, ale({"A"}, true),
         heads + "TAPE\tT1\n\nColumn\nA\n\nData\n"},
        {"no columns", [](ALETable& t) { t.cols.clear(); }, ale({}, true),
         heads + "TAPE\tT1\n\nColumn\n\n\nData\n\n\n"},
        {"csv with metadata, no delimiter line",
         {},
         csv(",", true, {}, false),
         "Metadata\nVIDEO_FORMAT,1080\nFPS,25\nAUDIO_FORMAT,48khz\nFILM_FORMAT,\"35mm, 4 "
         "perf\"\nTAPE,T1\nColumn\n" +
             csvRows},
        {"csv metadata without film format and empty tape", [](ALETable& t) { t.tape = ""; },
         csv(";", true, {}, true),
         "Metadata\nVIDEO_FORMAT;1080\nFPS;25\nAUDIO_FORMAT;48khz\nColumn\nA;B\n\n1;\"say \"\"hi\"\"\"\n3;"},
        {"csv metadata with no headings", noHeadings, csv(",", true, {}, false),
         "Metadata\nColumn\n" + csvRows},
        {"csv without metadata", {}, csv(",", false, {}, false), csvRows},
        {"csv, tab and given columns",
         {},
         csv("\t", false, {"B", "A"}, false),
         "B\tA\n\n\"say \"\"hi\"\"\"\t1\n\t3"},
        {"csv, longer separator", {}, csv(" | ", false, {}, false), "A | B\n\n1 | \"say \"\"hi\"\"\"\n3 | "},
        {"csv, no rows", [](ALETable& t) { t.data.clear(); }, csv(",", false, {}, false), "A,B\n"},
        {"csv quotes a separator or line feed",
         [](ALETable& t) {
             t = makeTable({"A,a", "B"}, {{{"A,a", "1"}, {"B", "x\ny"}}});
         },
         csv(",", false, {}, false), "\"A,a\",B\n\n1,\"x\ny\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = sampleTable();
        if (c.change)
            c.change(t);
        EXPECT_EQ(c.write(t), c.expected);
    }
}

TEST(TableWriters, SavesAndTheirFailures) {
    TempDir dir;
    ALETable t = sampleTable();
    const std::string blocker = dir.write("blocker", "a file where a folder should be");
    const std::string old = dir.write("old.ale", "old");
    base::setWriteFailureHook([](const std::string& path) { return path.ends_with("failing.ale"); });
    struct Case {
        const char* name;
        bool csv;
        std::string path;
        bool overwrite;
        // The one line printed and put in the reason; empty for a save that works.
        std::string message;
    };
    const std::string exists = "ERROR: file exists, but overwrite is set to false";
    const Case cases[] = {
        {"ale into new folders", false, dir.file("a/deeper/out.ale"), false, ""},
        {"csv into new folders", true, dir.file("c/deeper/out.csv"), false, ""},
        {"ale over a file", false, blocker, false, exists},
        {"csv over a file", true, blocker, false, exists},
        {"ale over a file, told to", false, old, true, ""},
        {"ale folder blocked", false, blocker + "/sub/x.ale", false,
         "ERROR: couldn't create directory " + blocker + "/sub"},
        {"csv folder blocked", true, blocker + "/x.csv", false, "ERROR: couldn't crete directory " + blocker},
        {"ale write fails", false, dir.file("failing.ale"), true,
         "ERROR while saving file " + dir.file("failing.ale")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        base::PrintCapture capture;
        std::string reason;
        const bool saved = c.csv ? saveCSV(t, c.path, ",", true, {"A"}, c.overwrite, false, &reason)
                                 : saveALE(t, c.path, {}, c.overwrite, true, &reason);
        EXPECT_EQ(saved, c.message.empty());
        EXPECT_EQ(reason, c.message);
        EXPECT_EQ(capture.lines(), c.message.empty() ? Names{} : Names{c.message});
    }
    base::setWriteFailureHook({});
    EXPECT_EQ(fileBytes(dir.file("a/deeper/out.ale")), aleText(t, {}, true));
    EXPECT_EQ(fileBytes(old), aleText(t, {}, true));
    EXPECT_EQ(fileBytes(dir.file("c/deeper/out.csv")), csvText(t, ",", true, {"A"}, false));
    EXPECT_EQ(fileBytes(blocker), "a file where a folder should be");
    EXPECT_FALSE(std::filesystem::exists(dir.file("failing.ale")));

    // A plain file name has no folder to make.
    auto cwd = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    EXPECT_TRUE(saveALE(t, "plain.ale", {}, false, false));
    std::filesystem::current_path(cwd);
    EXPECT_EQ(fileBytes(dir.file("plain.ale")), aleText(t, {}, false));
}

TEST(TableWriters, ALargeTableIsWrittenInPartsAsOneTextOrNotAtAll) {
    TempDir dir;
    ALETable t = makeTable(
        {"A", "B"}, std::vector<tables::testing::Cells>(30000, {{"A", std::string(80, 'a')}, {"B", "b\tc"}}));
    const std::string ale = dir.write("big.ale", "old");
    base::setWriteFailureHook([](const std::string&) { return true; });
    {
        base::PrintCapture capture;
        EXPECT_FALSE(saveALE(t, ale, {}, true, false));
    }
    base::setWriteFailureHook({});
    EXPECT_EQ(fileBytes(ale), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
    const std::string csv = dir.file("big.csv");
    ASSERT_TRUE(saveALE(t, ale, {}, true, false, nullptr, true));
    ASSERT_TRUE(saveCSV(t, csv, ",", true, {}, false, false));
    EXPECT_EQ(fileBytes(ale), aleText(t, {}, false, true));
    EXPECT_EQ(fileBytes(csv), csvText(t, ",", true, {}, false));
}

TEST(TableWriters, RandomTablesReadBackTheSame) {
    // Cells from pieces that the reader keeps as they are, and (the last five) those that a bin's own
    // file keeps through its escapes.
    const char* pieces[] = {
        "a",  "B",  " ",  "\xC3\xA9", "e\xCC\x81", "Data", "Column", "01:00:00:00", "\xF0\x9F\x8E\xAC",
        "\n", "\t", "\"", "\\",       "\r\n"};
    TempDir dir;
    std::mt19937 random(20261123);
    auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const bool escaped = round % 2 == 1;
        const std::size_t usable = std::size(pieces) - (escaped ? 0 : 5);
        Names cols{"Lumbra_Color_Tag"};
        for (std::size_t c = 0, n = 1 + pick(6); c < n; ++c)
            cols.push_back("C" + std::to_string(c));
        std::vector<tables::testing::Cells> rows(pick(5));
        for (auto& row : rows) {
            row.emplace_back("Lumbra_Color_Tag", "None");
            for (std::size_t c = 1; c < cols.size(); ++c) {
                std::string value;
                for (std::size_t k = 0, n = pick(4); k < n; ++k)
                    value += pieces[pick(usable)];
                if (!value.empty())
                    row.emplace_back(cols[c], value);
            }
        }
        ALETable table = makeTable(cols, rows);
        table.field_delim = "TABS";
        table.fps = pick(2) ? "25" : "23.976";
        table.tape = pick(2) ? " Reel  7" : "";
        std::string text = aleText(table, {}, false, escaped);
        // An export keeps the ALE rules and never carries the escapes.
        EXPECT_EQ(aleText(table, {}, false).find("VALUE_ESCAPES"), std::string::npos);

        base::PrintCapture capture;
        ReadResult read = parseALEText(text, "back");
        ASSERT_FALSE(read.failure) << text;
        const ALETable& back = *read.table;
        EXPECT_TRUE(capture.lines().empty());
        Names expectedCols = cols;
        if (!table.tape->empty())
            expectedCols.insert(expectedCols.begin(), "Tape");
        EXPECT_EQ(back.cols, expectedCols);
        ASSERT_EQ(back.data.size(), table.data.size()) << text;
        for (std::size_t i = 0; i < table.data.size(); ++i) {
            RowData expected = table.data[i]->data();
            if (!table.tape->empty())
                expected.set("Tape", *table.tape);
            EXPECT_EQ(back.data[i]->data(), expected) << text;
            EXPECT_EQ(back.data[i]->table, &back);
        }
        EXPECT_EQ(aleText(back, cols, false, escaped), text);

        // A save counts its text's size beforehand, a column asked for twice included.
        Names twice = cols;
        twice.push_back(cols.back());
        const std::string path = dir.file("round.ale");
        ASSERT_TRUE(saveALE(table, path, twice, true, false, nullptr, escaped));
        EXPECT_EQ(fileBytes(path), aleText(table, twice, false, escaped));
    }
}

} // namespace
} // namespace lumbra::import
