#include "base/console.h"
#include "table_test_support.h"
#include "tables/ale_table.h"

#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

using testing::columnOf;
using testing::FakeBin;
using testing::makeTable;
using testing::RecordingProject;
using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;

TEST(ALETable, RowValues) {
    ALETable t = makeTable({"A", "B"}, {{{"A", "1"}, {"B", "2"}}, {{"B", "x"}}});
    EXPECT_EQ(t.rowValues(0), (Names{"1", "2"}));
    EXPECT_EQ(t.rowValues(1), (Names{"", "x"}));
    EXPECT_EQ(t.rowValues(0, Names{"B", "Z", "A"}), (Names{"2", "", "1"}));
    EXPECT_EQ(t.rowValues(-1), std::nullopt);
    EXPECT_EQ(t.rowValues(2), std::nullopt);
    auto none = t.rowValues(0, Names{});
    ASSERT_TRUE(none.has_value());
    EXPECT_TRUE(none->empty());
    EXPECT_EQ(ALETable().rowValues(0), std::nullopt);
}

TEST(ALETable, FindAndRemoveEntries) {
    ALETable t =
        makeTable({"Name", "Tape"}, {{{"Tape", "T1"}}, {{"Name", "A"}, {"Tape", "T2"}}, {{"Name", "A"}}});
    EXPECT_EQ(t.findEntry(RowData{{"Scene", "1"}}), t.data[0]);
    EXPECT_EQ(t.findEntry(RowData{{"Name", "A"}}), t.data[0]);
    EXPECT_EQ(t.findEntry(RowData{{"Name", "A"}, {"Tape", "T2"}}), t.data[1]);
    EXPECT_EQ(t.findEntry(RowData{{"Name", "B"}, {"Tape", "T9"}}), nullptr);
    EXPECT_EQ(t.findEntries(RowData{{"Tape", "T2"}}), (std::vector<EntryPtr>{t.data[1], t.data[2]}));
    EXPECT_EQ(t.findEntries(RowData{}).size(), 3u);

    EntryPtr middle = t.data[1];
    t.removeEntry(middle.get());
    EXPECT_EQ(t.data.size(), 2u);
    EXPECT_EQ(middle->table, &t);
    ALEEntry stranger;
    t.removeEntry(&stranger);
    t.removeEntry(middle.get());
    EXPECT_EQ(t.data.size(), 2u);
    EXPECT_EQ(columnOf(t, "Name"), (Names{"(missing)", "A"}));
}

TEST(ALETable, SwapAndMoveColumns) {
    struct Case {
        const char* name;
        long from;
        long to;
        std::optional<long> reached;
        Names cols;
        Lines printed;
    };
    const Case cases[] = {
        {"before the start stops at 0", 0, -5, 0, {"A", "B", "C", "D"}, {}},
        {"past the end stops last", 2, 99, 3, {"A", "B", "D", "C"}, {}},
        {"to the left", 3, 1, 1, {"A", "D", "B", "C"}, {}},
        {"to the right", 0, 2, 2, {"B", "C", "A", "D"}, {}},
        {"in place", 1, 1, 1, {"A", "B", "C", "D"}, {}},
        {"from past the end", 4, 0, std::nullopt, {"A", "B", "C", "D"}, {"ERROR: index out of bound: 4"}},
        {"from negative", -1, 0, std::nullopt, {"A", "B", "C", "D"}, {"ERROR: index out of bound: -1"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = makeTable({"A", "B", "C", "D"}, {});
        base::PrintCapture capture;
        EXPECT_EQ(t.moveColumn(c.from, c.to), c.reached);
        EXPECT_EQ(t.cols, c.cols);
        EXPECT_EQ(capture.lines(), c.printed);
    }

    ALETable t = makeTable({"A", "B", "C"}, {});
    base::PrintCapture capture;
    EXPECT_EQ(t.moveColumn("C", 0), 0);
    EXPECT_EQ(t.cols, (Names{"C", "A", "B"}));
    EXPECT_EQ(t.moveColumn("Z", 0), std::nullopt);
    EXPECT_TRUE(capture.lines().empty());
    EXPECT_TRUE(t.swapColumns(0, 2));
    EXPECT_EQ(t.cols, (Names{"B", "A", "C"}));
    EXPECT_FALSE(t.swapColumns(0, 3));
    EXPECT_FALSE(t.swapColumns(-1, 0));
    EXPECT_TRUE(t.swapColumns("A", "C"));
    EXPECT_EQ(t.cols, (Names{"B", "C", "A"}));
    EXPECT_FALSE(t.swapColumns("A", "Z"));
    EXPECT_EQ(t.cols, (Names{"B", "C", "A"}));
}

TEST(ALETable, RenameColumn) {
    RecordingProject project;
    ALETable t = makeTable({"A", "B"}, {{{"A", "1"}, {"B", "2"}}, {{"B", "3"}}, {{"A", ""}}}, &project);
    {
        base::PrintCapture capture;
        EXPECT_EQ(t.renameColumn("A", "A"), (std::pair<std::string, std::string>{"A", "A"}));
        EXPECT_EQ(t.renameColumn("A", "B"), std::nullopt);
        EXPECT_EQ(t.renameColumn("Z", "Y"), std::nullopt);
        EXPECT_EQ(capture.lines(), (Lines{"ERROR: there is another column named B",
                                          "ERROR: Z is not a column of this ALEtable T"}));
    }
    EXPECT_EQ(t.cols, (Names{"A", "B"}));
    EXPECT_TRUE(project.changed.empty());

    EXPECT_EQ(t.renameColumn("A", "New"), (std::pair<std::string, std::string>{"A", "New"}));
    EXPECT_EQ(t.cols, (Names{"New", "B"}));
    EXPECT_EQ(columnOf(t, "New"), (Names{"1", "(missing)", ""}));
    EXPECT_EQ(columnOf(t, "A"), (Names{"(missing)", "(missing)", "(missing)"}));
    EXPECT_EQ(columnOf(t, "B"), (Names{"2", "3", "(missing)"}));
    // Two writes for each row that held the old name, none for the others.
    EXPECT_EQ(project.callsFor(t.data[0].get()), 2);
    EXPECT_EQ(project.callsFor(t.data[1].get()), 0);
    EXPECT_EQ(project.callsFor(t.data[2].get()), 2);
}

TEST(ALETable, LockedBinDropsRowWritesButNotColumnChanges) {
    FakeBin bin;
    RecordingProject project;
    ALETable t = makeTable({"A", "B"}, {{{"A", "1"}, {"B", "2"}}}, &project);
    t.bin = &bin;
    bin.locked = true;

    EXPECT_TRUE(t.deleteColumn("B"));
    EXPECT_EQ(t.cols, (Names{"A"}));
    EXPECT_EQ(t.data[0]->value("B"), "2");
    EXPECT_EQ(t.aleText({}, false), "Heading\n\nColumn\nA\n\nData\n1\n");

    EXPECT_EQ(t.renameColumn("A", "C"), (std::pair<std::string, std::string>{"A", "C"}));
    EXPECT_EQ(t.cols, (Names{"C"}));
    EXPECT_EQ(t.data[0]->value("A"), "1");
    EXPECT_EQ(t.data[0]->value("C"), std::nullopt);
    EXPECT_TRUE(project.changed.empty());

    // A found row keeps its cells; a new row is added, but empty.
    EXPECT_EQ(t.updateEntry(RowData{{"A", "1"}, {"D", "x"}}, {"A"}, {}, {{"A", true}, {"D", true}}), 1);
    EXPECT_EQ(t.data[0]->data(), (RowData{{"A", "1"}, {"B", "2"}}));
    EXPECT_EQ(t.updateEntry(RowData{{"A", "9"}}, {"A"}, {}, {{"A", true}}), 2);
    ASSERT_EQ(t.data.size(), 2u);
    EXPECT_TRUE(t.data[1]->data().empty());
    EXPECT_TRUE(project.changed.empty());
    t.data.pop_back();

    bin.locked = false;
    t.cols = {"A", "B"};
    EXPECT_TRUE(t.deleteColumn("B"));
    EXPECT_EQ(t.data[0]->value("B"), std::nullopt);
    EXPECT_FALSE(t.deleteColumn("B"));
    EXPECT_EQ(project.changed.size(), 1u);
}

TEST(ALETable, SortEntries) {
    struct Case {
        const char* name;
        bool ascending;
        Names order;
    };
    const Case cases[] = {
        {"false puts the smallest first", false, {"", "(missing)", "a", "b"}},
        {"true puts the greatest first", true, {"b", "a", "", "(missing)"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = makeTable({"V"}, {{{"V", "b"}}, {{"V", "a"}}, {{"V", ""}}, {}});
        t.sortEntries("V", c.ascending);
        EXPECT_EQ(columnOf(t, "V"), c.order);
    }
    ALETable t = makeTable({"V"}, {{{"V", "b"}}, {{"V", "a"}}});
    t.sortEntries("W", false);
    EXPECT_EQ(columnOf(t, "V"), (Names{"b", "a"}));
}

TEST(ALETable, ColumnIsConstant) {
    ALETable t =
        makeTable({"A", "B", "C"}, {{{"A", "x"}, {"B", ""}}, {{"A", "x"}}, {{"A", "x"}, {"C", "1"}}});
    EXPECT_TRUE(t.columnIsConstant("A"));
    EXPECT_TRUE(t.columnIsConstant("B"));
    EXPECT_FALSE(t.columnIsConstant("C"));
    EXPECT_FALSE(t.columnIsConstant("Z"));
    EXPECT_TRUE(makeTable({"A"}, {}).columnIsConstant("A"));
}

TEST(ALETable, DefinesId) {
    ALETable t = makeTable({"Name", "Take", "Tape"}, {{{"Name", "A"}, {"Take", "1"}, {"Tape", "T"}},
                                                      {{"Name", "A"}, {"Take", "2"}, {"Tape", "T"}},
                                                      {{"Name", "B"}, {"Take", "1"}, {"Tape", "T"}}});
    struct Case {
        const char* name;
        Names fields;
        bool allowMissing;
        bool expected;
    };
    const Case cases[] = {
        {"no fields", {}, true, false},
        {"one repeated column", {"Name"}, false, false},
        {"two columns together", {"Name", "Take"}, false, true},
        {"constant column", {"Tape"}, false, false},
        {"missing field refused", {"Name", "Take", "Scene"}, false, false},
        {"missing field allowed", {"Name", "Take", "Scene"}, true, true},
        {"only missing fields", {"Scene"}, true, false},
        {"one real column with a missing one tests the real one", {"Scene", "Take"}, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(t.definesId(c.fields, c.allowMissing), c.expected);
    }
    ALETable unique = makeTable({"Take"}, {{{"Take", "1"}}, {{"Take", "2"}}, {}});
    EXPECT_TRUE(unique.definesId({"Scene", "Take"}, true));
    // Missing and empty values are the same value.
    ALETable blanks = makeTable({"Take"}, {{{"Take", "1"}}, {{"Take", ""}}, {}});
    EXPECT_FALSE(blanks.definesId({"Take"}, false));
    EXPECT_FALSE(ALETable().definesId({}, true));
    EXPECT_TRUE(makeTable({"A"}, {}).definesId({"A"}, false));
    EXPECT_TRUE(makeTable({"A"}, {{}}).definesId({"A"}, false));
}

TEST(ALETable, RemapColumns) {
    RecordingProject project;
    ALETable t = makeTable({"A", "B", "C"}, {{{"A", "1"}, {"B", "2"}, {"C", "3"}}, {{"B", "4"}}}, &project);
    {
        base::PrintCapture capture;
        EXPECT_FALSE(t.remapColumns({{"A", "B"}}));
        ASSERT_EQ(capture.lines().size(), 1u);
        const std::string& line = capture.lines()[0];
        EXPECT_TRUE(line == "ERROR: trying to remap both 'A' and 'B' to 'B'. Remapping cancelled." ||
                    line == "ERROR: trying to remap both 'B' and 'A' to 'B'. Remapping cancelled.")
            << line;
        EXPECT_FALSE(t.remapColumns({{"A", "X"}, {"C", "X"}}));
    }
    EXPECT_EQ(t.cols, (Names{"A", "B", "C"}));
    EXPECT_EQ(t.rowValues(0), (Names{"1", "2", "3"}));
    EXPECT_TRUE(project.changed.empty());

    EXPECT_TRUE(t.remapColumns({{"A", "B"}, {"B", "A"}, {"Z", "Y"}}));
    EXPECT_EQ(t.cols, (Names{"B", "A", "C"}));
    EXPECT_EQ(t.rowValues(0), (Names{"1", "2", "3"}));
    EXPECT_EQ(t.data[0]->data(), (RowData{{"B", "1"}, {"A", "2"}, {"C", "3"}}));
    EXPECT_EQ(t.data[1]->data(), (RowData{{"A", "4"}}));
    EXPECT_EQ(project.changed.size(), 2u);
}

TEST(ALETable, Compare) {
    ALETable here = makeTable({"Name", "Tape", "Start"}, {{{"Name", "A"}, {"Tape", "T1"}}, {{"Name", "B"}}});
    ALETable other = makeTable(
        {"Scene", "Name", "Tape"},
        {{{"Name", "A"}, {"Tape", "T1"}}, {{"Name", "B"}, {"Tape", "T1"}}, {{"Name", "C"}, {"Tape", "T1"}}});
    auto byName = here.compare(other, {"Name"});
    EXPECT_EQ(byName.found_entries, (std::vector<EntryPtr>{other.data[0], other.data[1]}));
    EXPECT_EQ(byName.new_entries, (std::vector<EntryPtr>{other.data[2]}));
    EXPECT_EQ(byName.columns_missing, (Names{"Start"}));
    EXPECT_EQ(byName.columns_new, (Names{"Scene"}));
    EXPECT_TRUE(byName.conflicts.empty());

    // Unlike findEntry, a row here that lacks an id key does not match.
    auto byNameAndTape = here.compare(other, {"Name", "Tape"});
    EXPECT_EQ(byNameAndTape.found_entries, (std::vector<EntryPtr>{other.data[0]}));
    EXPECT_EQ(byNameAndTape.new_entries, (std::vector<EntryPtr>{other.data[1], other.data[2]}));

    auto noIds = here.compare(other, {});
    EXPECT_EQ(noIds.found_entries.size(), 3u);
    EXPECT_TRUE(noIds.new_entries.empty());
    // Several ids keep their values apart: "ab" + "c" is not "a" + "bc".
    auto split = makeTable({"Name", "Tape"}, {{{"Name", "ab"}, {"Tape", "c"}}});
    EXPECT_TRUE(
        split.compare(makeTable({"Name", "Tape"}, {{{"Name", "a"}, {"Tape", "bc"}}}), {"Name", "Tape"})
            .found_entries.empty());
    auto emptyHere = makeTable({"Name"}, {}).compare(other, {});
    EXPECT_EQ(emptyHere.new_entries.size(), 3u);
    EXPECT_TRUE(emptyHere.found_entries.empty());

    ALETable a;
    ALETable b;
    a.field_delim = "TABS";
    b.field_delim = "TABS";
    a.video_format = "1080";
    b.fps = "25";
    a.audio_format = "48khz";
    b.audio_format = "44khz";
    a.film_format = "";
    a.tape = "T1";
    EXPECT_EQ(a.compare(b, {}).conflicts, (Names{"video_format", "fps", "audio_format", "film_format"}));
    EXPECT_TRUE(a.compare(*a.copy(false), {}).conflicts.empty());
}

TEST(ALETable, DuplicateRows) {
    struct Case {
        const char* name;
        std::vector<testing::Cells> rows;
        std::vector<long> expected;
    };
    const Case cases[] = {
        {"three of one value, each once", {{{"V", "x"}}, {{"V", "x"}}, {{"V", "x"}}}, {2, 0, 1}},
        {"empty and missing cells are duplicates", {{{"V", "a"}}, {{"V", ""}}, {}}, {2, 1}},
        {"no duplicates", {{{"V", "a"}}, {{"V", "b"}}}, {}},
        // Sorted greatest first with the merge's tie rules: c, b(2), b(0), a(3), a(1).
        {"numbers in sorted order",
         {{{"V", "b"}}, {{"V", "a"}}, {{"V", "b"}}, {{"V", "a"}}, {{"V", "c"}}},
         {2, 0, 3, 1}},
        {"case matters", {{{"V", "a"}}, {{"V", "A"}}}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = makeTable({"V"}, c.rows);
        EXPECT_EQ(t.duplicateRows("V"), c.expected);
    }
    EXPECT_TRUE(makeTable({"V"}, {{}, {}}).duplicateRows("W").empty());
}

TEST(ALETable, CanDeriveTimecodes) {
    const std::vector<testing::Cells> good = {{{"S", "01:00:00:00"}, {"E", "01:00:10:00"}},
                                              {{"S", "02:00:00:00"}, {"D", "00:00:01:00"}}};
    struct Case {
        const char* name;
        std::optional<std::string> fps;
        std::vector<testing::Cells> rows;
        bool expected;
    };
    const Case cases[] = {
        {"two of three in every row", "25", good, true},
        {"fractional rate", "23.976", good, true},
        {"no rate", std::nullopt, good, false},
        {"rate below one", "0.5", good, false},
        {"rate of exactly one", "1", good, true},
        {"rate not a number", "PAL", good, false},
        {"no rows", "25", {}, true},
        {"a row with one timecode", "25", {{{"S", "01:00:00:00"}, {"E", "bad"}}}, false},
        {"three-part text is no timecode", "25", {{{"S", "01:00:00"}, {"E", "01:00:10"}}}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ALETable t = makeTable({"S", "E", "D"}, c.rows);
        t.fps = c.fps;
        EXPECT_EQ(t.canDeriveTimecodes("S", "E", "D"), c.expected);
    }
}

TEST(ALETable, AddNumberedColumn) {
    ALETable t = makeTable({"newcol_001", "newcol_003"}, {{{"newcol_001", "x"}}});
    t.addNumberedColumn();
    t.addNumberedColumn();
    EXPECT_EQ(t.cols, (Names{"newcol_001", "newcol_003", "newcol_002", "newcol_004"}));
    EXPECT_EQ(t.data[0]->data(), (RowData{{"newcol_001", "x"}}));
}

TEST(ALETable, UpdateEntry) {
    RecordingProject project;
    ALETable t = makeTable({"Name", "Tape", "Scene"},
                           {{{"Name", "A"}, {"Tape", "T1"}, {"Scene", "1"}}, {{"Name", "B"}}}, &project);
    {
        base::PrintCapture capture;
        EXPECT_EQ(t.updateEntry(RowData{{"Name", "A"}, {"Scene", "9"}}, {"Name"}, {}, {{"Name", true}}), -1);
        EXPECT_EQ(capture.lines(), Lines{"ERROR: cannot update entry as the priorities array has a number of "
                                         "entries different from the number of columns"});
        EXPECT_EQ(t.data.size(), 2u);
    }

    // Found, a held value without priority stays, a held value with priority changes, a new key is set.
    EXPECT_EQ(t.updateEntry(RowData{{"Name", "A"}, {"Tape", "T9"}, {"Scene", "9"}, {"Take", "3"}}, {"Name"},
                            {}, {{"Name", false}, {"Tape", false}, {"Scene", true}, {"Take", false}}),
              1);
    EXPECT_EQ(t.data[0]->data(), (RowData{{"Name", "A"}, {"Tape", "T1"}, {"Scene", "9"}, {"Take", "3"}}));

    // Not found: a new row, linked to the table, without the project.
    EXPECT_EQ(t.updateEntry(RowData{{"Name", "C"}, {"Tape", "T2"}}, {"Name"}, {},
                            {{"Name", false}, {"Tape", false}}),
              2);
    ASSERT_EQ(t.data.size(), 3u);
    EXPECT_EQ(t.data[2]->data(), (RowData{{"Name", "C"}, {"Tape", "T2"}}));
    EXPECT_EQ(t.data[2]->table, &t);
    EXPECT_EQ(t.data[2]->sharedstuff, nullptr);

    // The incoming "Clip" is the table's "Name": the id is looked up through the map backwards.
    EXPECT_EQ(t.updateEntry(RowData{{"Clip", "B"}, {"Reel", "R5"}}, {"Name"},
                            {{"Clip", "Name"}, {"Reel", "Tape"}}, {{"Clip", true}, {"Reel", true}}),
              1);
    EXPECT_EQ(t.data[1]->data(), (RowData{{"Name", "B"}, {"Tape", "R5"}}));
    EXPECT_EQ(t.data.size(), 3u);

    // An id given by its incoming name maps forward to the table's name.
    EXPECT_EQ(t.updateEntry(RowData{{"Clip", "C"}, {"Scene", "4"}}, {"Clip"}, {{"Clip", "Name"}},
                            {{"Clip", false}, {"Scene", false}}),
              1);
    EXPECT_EQ(t.data[2]->value("Scene"), "4");

    // An id the record lacks leaves the criteria: the first row matches.
    EXPECT_EQ(t.updateEntry(RowData{{"Scene", "7"}}, {"Name"}, {}, {{"Scene", true}}), 1);
    EXPECT_EQ(t.data[0]->value("Scene"), "7");
    EXPECT_EQ(t.data.size(), 3u);
}

TEST(ALETable, CallersBreakingTheRulesDoNotEndTheProgram) {
    // A row of the other table without an id key matches nothing here.
    ALETable here = makeTable({"Name"}, {{{"Name", "A"}}, {}});
    ALETable other = makeTable({"Name"}, {{{"Tape", "T"}}, {{"Name", "A"}}});
    auto result = here.compare(other, {"Name"});
    EXPECT_EQ(result.found_entries, (std::vector<EntryPtr>{other.data[1]}));
    EXPECT_EQ(result.new_entries, (std::vector<EntryPtr>{other.data[0]}));

    // Priorities of the right size but without a key keep what the row holds.
    EXPECT_EQ(
        here.updateEntry(RowData{{"Name", "A"}, {"Tape", "T"}}, {"Name"}, {}, {{"Name", true}, {"X", true}}),
        1);
    EXPECT_EQ(here.data[0]->data(), (RowData{{"Name", "A"}, {"Tape", "T"}}));
    EXPECT_EQ(
        here.updateEntry(RowData{{"Name", "A"}, {"Tape", "U"}}, {"Name"}, {}, {{"Name", true}, {"X", true}}),
        1);
    EXPECT_EQ(here.data[0]->value("Tape"), "T");
}

TEST(ALETable, CopyIsDeepAndPointsAtTheClone) {
    FakeBin bin;
    RecordingProject project;
    ALETable t = makeTable({"A"}, {{{"A", "1"}}, {{"A", "2"}}}, &project);
    t.tablename = "day1";
    t.bin = &bin;
    t.state = false;
    t.fps = "25";
    t.tape = "T";
    t.data[0]->associatedSmartBins.push_back(&t);

    auto clone = t.copy(true);
    EXPECT_EQ(clone->tablename, "day1_cl");
    EXPECT_EQ(clone->bin, nullptr);
    EXPECT_FALSE(clone->state);
    EXPECT_EQ(clone->fps, "25");
    EXPECT_EQ(clone->tape, "T");
    EXPECT_EQ(clone->cols, t.cols);
    ASSERT_EQ(clone->data.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NE(clone->data[i], t.data[i]);
        EXPECT_EQ(clone->data[i]->data(), t.data[i]->data());
        EXPECT_EQ(clone->data[i]->table, clone.get());
        EXPECT_EQ(clone->data[i]->sharedstuff, &project);
        EXPECT_TRUE(clone->data[i]->associatedSmartBins.empty());
    }
    clone->data[0]->setData(RowData{{"A", "changed"}});
    EXPECT_EQ(t.data[0]->value("A"), "1");
    EXPECT_EQ(t.copy(false)->data[0]->sharedstuff, nullptr);
    EXPECT_EQ(t.data[0]->table, &t);
}

// A table that lists rows of other bins, as smart tables do: its rows never point back at it.
class ListingTable : public ALETable {
public:
    ListingTable() : ALETable(false) {}
    void parse(std::string text) { parseText(std::move(text)); }
};

TEST(ALETable, RowsOfAListingTableDoNotPointAtIt) {
    ListingTable listing;
    base::PrintCapture capture;
    listing.parse("Heading\nFIELD_DELIM\tTABS\nColumn\nName\nData\na\n");
    EXPECT_TRUE(listing.state);
    ASSERT_EQ(listing.data.size(), 1u);
    EXPECT_EQ(listing.data[0]->table, nullptr);
    EXPECT_EQ(listing.updateEntry(RowData{{"Name", "b"}}, {"Name"}, {}, {{"Name", true}}), 2);
    ASSERT_EQ(listing.data.size(), 2u);
    EXPECT_EQ(listing.data[1]->table, nullptr);
    EXPECT_EQ(listing.data[1]->value("Name"), "b");
}

} // namespace
} // namespace lumbra::tables
