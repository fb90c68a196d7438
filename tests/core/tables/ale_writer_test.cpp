#include "base/console.h"
#include "base/text_file.h"
#include "table_test_support.h"
#include "tables/ale_table.h"

#include <gtest/gtest.h>
#include <random>

namespace lumbra::tables {
namespace {

using testing::fileBytes;
using testing::makeTable;
using testing::TempDir;
using Lines = std::vector<std::string>;
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

TEST(ALEWriter, AleTextBytes) {
    const std::string rows = "\n\nColumn\nA\tB\n\nData\n1\tsay \"hi\"\n3\t\n";
    struct Case {
        const char* name;
        std::function<void(ALETable&)> change;
        Names columns;
        bool omitFilmFormat;
        std::string expected;
    };
    const Case cases[] = {
        {"every heading, in the writer's order",
         [](ALETable&) {},
         {},
         false,
         "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\n"
         "FILM_FORMAT\t35mm, 4 perf\nTAPE\tT1" +
             rows},
        {"film format omitted",
         [](ALETable&) {},
         {},
         true,
         "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\nTAPE\tT1" + rows},
        {"empty tape",
         [](ALETable& t) { t.tape = ""; },
         {},
         false,
         "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\n"
         "FILM_FORMAT\t35mm, 4 perf" +
             rows},
        {"empty values of other headings are written",
         [](ALETable& t) {
             t.field_delim.reset();
             t.video_format = "";
             t.fps.reset();
             t.audio_format.reset();
             t.film_format = "";
             t.tape.reset();
         },
         {},
         false,
         "Heading\nVIDEO_FORMAT\t\nFILM_FORMAT\t" + rows},
        {"no headings",
         [](ALETable& t) {
             t.field_delim.reset();
             t.video_format.reset();
             t.fps.reset();
             t.audio_format.reset();
             t.film_format.reset();
             t.tape.reset();
         },
         {},
         true,
         "Heading" + rows},
        {"given columns, one unknown",
         [](ALETable& t) { t.tape.reset(); },
         {"B", "X", "A"},
         true,
         "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\n\nColumn\nB\tX\tA\n\n"
         "Data\nsay \"hi\"\t\t1\n\t\t3\n"},
        {"no rows ends in Data and a line feed",
         [](ALETable& t) { t.data.clear(); },
         {"A"},
         true,
         "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_"
         "FORMAT\t48khz\nTAPE\tT1\n\nColumn\nA\n\n"
         "Data\n"},
        {"no columns",
         [](ALETable& t) {
             t.cols.clear();
             t.tape.reset();
         },
         {},
         true,
         "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_"
         "FORMAT\t48khz\n\nColumn\n\n\nData\n\n\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = sampleTable();
        c.change(t);
        EXPECT_EQ(t.aleText(c.columns, c.omitFilmFormat), c.expected);
    }
}

TEST(ALEWriter, CsvTextBytes) {
    struct Case {
        const char* name;
        std::function<void(ALETable&)> change;
        std::string separator;
        bool withMetadata;
        Names columns;
        bool omitFilmFormat;
        std::string expected;
    };
    const Case cases[] = {
        {"with metadata, no field delimiter line",
         [](ALETable&) {},
         ",",
         true,
         {},
         false,
         "Metadata\nVIDEO_FORMAT,1080\nFPS,25\nAUDIO_FORMAT,48khz\nFILM_FORMAT,\"35mm, 4 "
         "perf\"\nTAPE,T1\nColumn\n"
         "A,B\n\n1,\"say \"\"hi\"\"\"\n3,"},
        {"metadata without film format and empty tape",
         [](ALETable& t) { t.tape = ""; },
         ";",
         true,
         {},
         true,
         "Metadata\nVIDEO_FORMAT;1080\nFPS;25\nAUDIO_FORMAT;48khz\nColumn\nA;B\n\n1;\"say \"\"hi\"\"\"\n3;"},
        {"metadata with no headings",
         [](ALETable& t) {
             t.video_format.reset();
             t.fps.reset();
             t.audio_format.reset();
             t.film_format.reset();
             t.tape.reset();
         },
         ",",
         true,
         {},
         false,
         "Metadata\nColumn\nA,B\n\n1,\"say \"\"hi\"\"\"\n3,"},
        {"without metadata", [](ALETable&) {}, ",", false, {}, false, "A,B\n\n1,\"say \"\"hi\"\"\"\n3,"},
        {"tab and given columns",
         [](ALETable&) {},
         "\t",
         false,
         {"B", "A"},
         false,
         "B\tA\n\n\"say \"\"hi\"\"\"\t1\n\t3"},
        {"longer separator",
         [](ALETable&) {},
         " | ",
         false,
         {},
         false,
         "A | B\n\n1 | \"say \"\"hi\"\"\"\n3 | "},
        {"no rows", [](ALETable& t) { t.data.clear(); }, ",", false, {}, false, "A,B\n"},
        {"a separator or line feed in a name or value is quoted",
         [](ALETable& t) {
             t = makeTable({"A,a", "B"}, {{{"A,a", "1"}, {"B", "x\ny"}}});
         },
         ",",
         false,
         {},
         false,
         "\"A,a\",B\n\n1,\"x\ny\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = sampleTable();
        c.change(t);
        EXPECT_EQ(t.csvText(c.separator, c.withMetadata, c.columns, c.omitFilmFormat), c.expected);
    }
}

TEST(ALEWriter, SaveRefusesToOverwriteAndCreatesFolders) {
    TempDir dir;
    ALETable t = sampleTable();
    struct Case {
        const char* name;
        std::function<bool(const std::string& path, bool overwrite)> save;
        std::string expected;
    };
    const Case cases[] = {
        {"ale", [&](const std::string& p, bool o) { return t.saveALE(p, {}, o, true); }, t.aleText({}, true)},
        {"csv", [&](const std::string& p, bool o) { return t.saveCSV(p, ",", true, {"A"}, o, false); },
         t.csvText(",", true, {"A"}, false)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string path = dir.file(std::string(c.name) + "/deeper/out.txt");
        {
            base::PrintCapture capture;
            EXPECT_TRUE(c.save(path, false));
            EXPECT_TRUE(capture.lines().empty());
        }
        EXPECT_EQ(fileBytes(path), c.expected);

        dir.write(std::string(c.name) + "/deeper/out.txt", "old");
        {
            base::PrintCapture capture;
            EXPECT_FALSE(c.save(path, false));
            EXPECT_EQ(capture.lines(), Lines{"ERROR: file exists, but overwrite is set to false"});
        }
        EXPECT_EQ(fileBytes(path), "old");
        EXPECT_TRUE(c.save(path, true));
        EXPECT_EQ(fileBytes(path), c.expected);
    }
}

TEST(ALEWriter, SaveFailures) {
    TempDir dir;
    ALETable t = sampleTable();
    std::string blocker = dir.write("blocker", "a file where a folder should be");
    {
        base::PrintCapture capture;
        EXPECT_FALSE(t.saveALE(blocker + "/sub/x.ale", {}, false, false));
        EXPECT_EQ(capture.lines(), Lines{"ERROR: couldn't create directory " + blocker + "/sub"});
    }
    {
        base::PrintCapture capture;
        EXPECT_FALSE(t.saveCSV(blocker + "/x.csv", ",", false, {}, false, false));
        EXPECT_EQ(capture.lines(), Lines{"ERROR: couldn't crete directory " + blocker});
    }
    {
        std::string path = dir.file("failing.ale");
        base::setWriteFailureHook([](const std::string&) { return true; });
        base::PrintCapture capture;
        bool saved = t.saveALE(path, {}, true, false);
        bool savedCsv = t.saveCSV(path, ",", false, {}, true, false);
        base::setWriteFailureHook({});
        EXPECT_FALSE(saved);
        EXPECT_FALSE(savedCsv);
        EXPECT_EQ(capture.lines(),
                  (Lines{"ERROR while saving file " + path, "ERROR while saving file " + path}));
    }
    {
        // A plain file name has no folder to make.
        auto cwd = std::filesystem::current_path();
        std::filesystem::current_path(dir.path());
        base::PrintCapture capture;
        EXPECT_TRUE(t.saveALE("plain.ale", {}, false, false));
        std::filesystem::current_path(cwd);
        EXPECT_TRUE(capture.lines().empty());
        EXPECT_EQ(fileBytes(dir.file("plain.ale")), t.aleText({}, false));
    }
}

TEST(ALEWriter, ALargeTableIsWrittenInPartsAsOneTextOrNotAtAll) {
    TempDir dir;
    ALETable t = makeTable({"A", "B"},
                           std::vector<testing::Cells>(30000, {{"A", std::string(80, 'a')}, {"B", "b\tc"}}));
    const std::string ale = dir.write("big.ale", "old");
    base::setWriteFailureHook([](const std::string&) { return true; });
    {
        base::PrintCapture capture;
        EXPECT_FALSE(t.saveALE(ale, {}, true, false));
    }
    base::setWriteFailureHook({});
    EXPECT_EQ(fileBytes(ale), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
    const std::string csv = dir.file("big.csv");
    ASSERT_TRUE(t.saveALE(ale, {}, true, false, nullptr, true));
    ASSERT_TRUE(t.saveCSV(csv, ",", true, {}, false, false));
    EXPECT_EQ(fileBytes(ale), t.aleText({}, false, true));
    EXPECT_EQ(fileBytes(csv), t.csvText(",", true, {}, false));
}

TEST(ALEWriter, RoundTripGivesTheSameTable) {
    TempDir dir;
    const std::string file = "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080 i\nFPS\t23.976\n"
                             "AUDIO_FORMAT\t48khz\nFILM_FORMAT\t35mm, 4 perf\nTAPE\tReel 1\n\n"
                             "Column\nName\t\tStart\tName\n\nData\n"
                             "A\t\t01:00:00:00\tx\n"
                             "\tn\t\t\t\textra\n"
                             "C \tcaf\xC3\xA9\n";
    std::string path = dir.write("first.ale", file);
    base::PrintCapture capture;
    ALETable first(path);
    ASSERT_TRUE(first.state);
    first.data[1]->setData([&] {
        RowData d = first.data[1]->data();
        d.set("Lumbra_Color_Tag", "Blue");
        return d;
    }());
    EXPECT_EQ(first.cols, (Names{"Lumbra_Color_Tag", "Tape", "Name", "NoName", "Start", "Name_2",
                                 "newcol_001", "newcol_002"}));

    ASSERT_TRUE(first.saveALE(dir.file("second.ale"), {}, false, false));
    ALETable second(dir.file("second.ale"));
    ASSERT_TRUE(second.state);
    EXPECT_EQ(second.cols, first.cols);
    EXPECT_EQ(second.field_delim, first.field_delim);
    EXPECT_EQ(second.video_format, first.video_format);
    EXPECT_EQ(second.fps, first.fps);
    EXPECT_EQ(second.audio_format, first.audio_format);
    EXPECT_EQ(second.film_format, first.film_format);
    EXPECT_EQ(second.tape, first.tape);
    ASSERT_EQ(second.data.size(), first.data.size());
    for (std::size_t i = 0; i < first.data.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(second.data[i]->data(), first.data[i]->data());
    }
    EXPECT_EQ(second.data[1]->value("Lumbra_Color_Tag"), "Blue");
    EXPECT_EQ(second.aleText({}, false), first.aleText({}, false));
    EXPECT_TRUE(capture.lines().empty());
}

TEST(ALEWriter, RandomTablesReadBackTheSame) {
    // Cells from pieces that the reader keeps as they are, and (the last five) those that a bin's own
    // file keeps through its escapes.
    const char* pieces[] = {
        "a",  "B",  " ",  "\xC3\xA9", "e\xCC\x81", "Data", "Column", "01:00:00:00", "\xF0\x9F\x8E\xAC",
        "\n", "\t", "\"", "\\",       "\r\n"};
    std::mt19937 random(20261123);
    auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const bool escaped = round % 2 == 1;
        const std::size_t usable = std::size(pieces) - (escaped ? 0 : 5);
        Names cols{"Lumbra_Color_Tag"};
        for (std::size_t c = 0, n = 1 + pick(6); c < n; ++c)
            cols.push_back("C" + std::to_string(c));
        std::vector<testing::Cells> rows(pick(5));
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
        std::string text = table.aleText({}, false, escaped);
        // An export keeps the ALE rules and never carries the escapes.
        EXPECT_EQ(table.aleText({}, false).find("VALUE_ESCAPES"), std::string::npos);

        base::PrintCapture capture;
        ALETable back = ALETable::fromText(text, "back");
        ASSERT_TRUE(back.state) << text;
        EXPECT_TRUE(capture.lines().empty());
        if (table.tape->empty()) {
            EXPECT_EQ(back.cols, cols);
        } else {
            EXPECT_EQ(back.tape, table.tape);
            Names withTape = cols;
            withTape.insert(withTape.begin(), "Tape");
            EXPECT_EQ(back.cols, withTape);
        }
        ASSERT_EQ(back.data.size(), table.data.size()) << text;
        for (std::size_t i = 0; i < table.data.size(); ++i) {
            RowData expected = table.data[i]->data();
            if (!table.tape->empty())
                expected.set("Tape", *table.tape);
            EXPECT_EQ(back.data[i]->data(), expected) << text;
        }
        EXPECT_EQ(back.aleText(cols, false, escaped), text);
    }
}

} // namespace
} // namespace lumbra::tables
