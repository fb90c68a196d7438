#include "base/console.h"
#include "table_test_support.h"
#include "tables/ale_table.h"

#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

using testing::Cells;
using testing::columnOf;
using testing::FakeBin;
using testing::makeTable;
using testing::RecordingProject;
using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;

TEST(ALETable, RowValuesAndFinding) {
    ALETable t =
        makeTable({"Name", "Tape"}, {{{"Tape", "T1"}}, {{"Name", "A"}, {"Tape", "T2"}}, {{"Name", "A"}}});
    EXPECT_EQ(t.rowValues(1), (Names{"A", "T2"}));
    EXPECT_EQ(t.rowValues(0, Names{"Tape", "Z", "Name"}), (Names{"T1", "", ""}));
    EXPECT_EQ(t.rowValues(-1), std::nullopt);
    EXPECT_EQ(t.rowValues(3), std::nullopt);
    // A criterion the row lacks does not stop it matching.
    EXPECT_EQ(t.findEntry(RowData{{"Name", "A"}}), t.data[0]);
    EXPECT_EQ(t.findEntry(RowData{{"Name", "A"}, {"Tape", "T2"}}), t.data[1]);
    EXPECT_EQ(t.findEntry(RowData{{"Name", "B"}, {"Tape", "T9"}}), nullptr);
    EXPECT_EQ(t.findEntries(RowData{{"Tape", "T2"}}), (std::vector<EntryPtr>{t.data[1], t.data[2]}));

    EntryPtr middle = t.data[1];
    t.removeEntry(middle.get());
    ALEEntry stranger;
    t.removeEntry(&stranger);
    t.removeEntry(middle.get());
    EXPECT_EQ(columnOf(t, "Name"), (Names{"(missing)", "A"}));
    EXPECT_EQ(middle->table, &t);
}

TEST(ALETable, MoveAndSwapColumns) {
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
    EXPECT_EQ(t.moveColumn("C", 0), 0);
    EXPECT_EQ(t.moveColumn("Z", 0), std::nullopt);
    EXPECT_TRUE(t.swapColumns(0, 2));
    EXPECT_FALSE(t.swapColumns(0, 3));
    EXPECT_FALSE(t.swapColumns(-1, 0));
    EXPECT_TRUE(t.swapColumns("A", "C"));
    EXPECT_FALSE(t.swapColumns("A", "Z"));
    EXPECT_EQ(t.cols, (Names{"B", "C", "A"}));
}

TEST(ALETable, RenameAndRemapColumns) {
    RecordingProject project;
    ALETable t = makeTable({"A", "B"}, {{{"A", "1"}, {"B", "2"}}, {{"B", "3"}}, {{"A", ""}}}, &project);
    {
        base::PrintCapture capture;
        EXPECT_EQ(t.renameColumn("A", "A"), (std::pair<std::string, std::string>{"A", "A"}));
        EXPECT_EQ(t.renameColumn("A", "B"), std::nullopt);
        EXPECT_EQ(t.renameColumn("Z", "Y"), std::nullopt);
        EXPECT_FALSE(t.remapColumns({{"A", "X"}, {"B", "X"}}));
        ASSERT_EQ(capture.lines().size(), 3u);
        EXPECT_EQ(
            Lines(capture.lines().begin(), capture.lines().begin() + 2),
            (Lines{"ERROR: there is another column named B", "ERROR: Z is not a column of this ALEtable T"}));
        EXPECT_TRUE(
            capture.contains("ERROR: trying to remap both 'A' and 'B' to 'X'. Remapping cancelled.") ||
            capture.contains("ERROR: trying to remap both 'B' and 'A' to 'X'. Remapping cancelled."));
    }
    EXPECT_EQ(t.cols, (Names{"A", "B"}));
    EXPECT_TRUE(project.changed.empty());

    EXPECT_EQ(t.renameColumn("A", "New"), (std::pair<std::string, std::string>{"A", "New"}));
    EXPECT_EQ(t.cols, (Names{"New", "B"}));
    EXPECT_EQ(columnOf(t, "New"), (Names{"1", "(missing)", ""}));
    EXPECT_EQ(columnOf(t, "A"), (Names{"(missing)", "(missing)", "(missing)"}));
    // Two writes for each row that held the old name, none for the others.
    EXPECT_EQ(project.callsFor(t.data[0].get()), 2);
    EXPECT_EQ(project.callsFor(t.data[1].get()), 0);

    // A swap in one step; an unknown name is passed over.
    EXPECT_TRUE(t.remapColumns({{"New", "B"}, {"B", "New"}, {"Z", "Y"}}));
    EXPECT_EQ(t.cols, (Names{"B", "New"}));
    EXPECT_EQ(t.data[0]->data(), (RowData{{"B", "1"}, {"New", "2"}}));
    EXPECT_EQ(t.data[1]->data(), (RowData{{"New", "3"}}));
}

TEST(ALETable, LockedBinDropsRowWritesButNotColumnChanges) {
    FakeBin bin;
    RecordingProject project;
    ALETable t = makeTable({"A", "B"}, {{{"A", "1"}, {"B", "2"}}}, &project);
    t.bin = &bin;
    bin.locked = true;
    EXPECT_TRUE(t.deleteColumn("B"));
    EXPECT_EQ(t.renameColumn("A", "C"), (std::pair<std::string, std::string>{"A", "C"}));
    EXPECT_EQ(t.cols, (Names{"C"}));
    EXPECT_EQ(t.data[0]->data(), (RowData{{"A", "1"}, {"B", "2"}}));
    // A found row keeps its cells; a new row is added, but empty.
    EXPECT_EQ(t.updateEntry(RowData{{"A", "1"}, {"D", "x"}}, {"A"}, {}, {{"A", true}, {"D", true}}), 1);
    EXPECT_EQ(t.data[0]->data(), (RowData{{"A", "1"}, {"B", "2"}}));
    EXPECT_EQ(t.updateEntry(RowData{{"A", "9"}}, {"A"}, {}, {{"A", true}}), 2);
    EXPECT_TRUE(t.data.at(1)->data().empty());
    EXPECT_TRUE(project.changed.empty());

    bin.locked = false;
    t.cols = {"A", "B"};
    EXPECT_TRUE(t.deleteColumn("B"));
    EXPECT_FALSE(t.deleteColumn("B"));
    EXPECT_EQ(t.data[0]->value("B"), std::nullopt);
    EXPECT_EQ(project.changed.size(), 1u);
}

TEST(ALETable, ColumnQueries) {
    ALETable t =
        makeTable({"Name", "Take", "Tape", "V"}, {{{"Name", "A"}, {"Take", "1"}, {"Tape", "T"}, {"V", "b"}},
                                                  {{"Name", "A"}, {"Take", "2"}, {"Tape", "T"}, {"V", ""}},
                                                  {{"Name", "B"}, {"Take", "1"}, {"Tape", "T"}, {"V", "b"}},
                                                  {{"Name", "C"}, {"Take", "1"}, {"Tape", "T"}}});
    EXPECT_TRUE(t.columnIsConstant("Tape"));
    EXPECT_FALSE(t.columnIsConstant("Take"));
    EXPECT_FALSE(t.columnIsConstant("Z"));
    struct Case {
        Names fields;
        bool allowMissing;
        bool expected;
    };
    const Case ids[] = {
        {{}, true, false},
        {{"Name"}, false, false},
        {{"Name", "Take"}, false, true},
        {{"Tape"}, false, false},
        {{"Name", "Take", "Scene"}, false, false},
        {{"Name", "Take", "Scene"}, true, true},
        {{"Scene"}, true, false},
        {{"Scene", "Take"}, true, false},
        {{"Name", "V"}, false, true},
    };
    for (const auto& c : ids) {
        SCOPED_TRACE(::testing::PrintToString(c.fields));
        EXPECT_EQ(t.definesId(c.fields, c.allowMissing), c.expected);
    }
    // Missing and empty values are one value.
    EXPECT_FALSE(makeTable({"V"}, {{{"V", "1"}}, {{"V", ""}}, {}}).definesId({"V"}, false));

    struct Duplicates {
        std::vector<Cells> rows;
        std::vector<long> expected;
    };
    const Duplicates duplicates[] = {
        {{{{"V", "x"}}, {{"V", "x"}}, {{"V", "x"}}}, {2, 0, 1}},
        {{{{"V", "a"}}, {{"V", ""}}, {}}, {2, 1}},
        {{{{"V", "a"}}, {{"V", "A"}}}, {}},
        // Sorted greatest first with the merge's tie rules: c, b(2), b(0), a(3), a(1).
        {{{{"V", "b"}}, {{"V", "a"}}, {{"V", "b"}}, {{"V", "a"}}, {{"V", "c"}}}, {2, 0, 3, 1}},
    };
    for (const auto& c : duplicates)
        EXPECT_EQ(makeTable({"V"}, c.rows).duplicateRows("V"), c.expected);
    EXPECT_TRUE(t.duplicateRows("W").empty());
}

TEST(ALETable, SortEntries) {
    for (bool ascending : {false, true}) {
        ALETable t = makeTable({"V"}, {{{"V", "b"}}, {{"V", "a"}}, {{"V", ""}}, {}});
        t.sortEntries("V", ascending);
        const Names expected =
            ascending ? Names{"b", "a", "", "(missing)"} : Names{"", "(missing)", "a", "b"};
        EXPECT_EQ(columnOf(t, "V"), expected);
    }
    ALETable t = makeTable({"V"}, {{{"V", "b"}}, {{"V", "a"}}});
    t.sortEntries("W", false);
    EXPECT_EQ(columnOf(t, "V"), (Names{"b", "a"}));
}

TEST(ALETable, Compare) {
    ALETable here =
        makeTable({"Name", "Tape", "Start"}, {{{"Name", "A"}, {"Tape", "T1"}}, {{"Name", "B"}}, {}});
    ALETable other = makeTable({"Scene", "Name", "Tape"}, {{{"Name", "A"}, {"Tape", "T1"}},
                                                           {{"Name", "B"}, {"Tape", "T1"}},
                                                           {{"Name", "C"}, {"Tape", "T1"}},
                                                           {}});
    auto byName = here.compare(other, {"Name"});
    // A row of the other table without an id key matches nothing here.
    EXPECT_EQ(byName.found_entries, (std::vector<EntryPtr>{other.data[0], other.data[1]}));
    EXPECT_EQ(byName.new_entries, (std::vector<EntryPtr>{other.data[2], other.data[3]}));
    EXPECT_EQ(byName.columns_missing, (Names{"Start"}));
    EXPECT_EQ(byName.columns_new, (Names{"Scene"}));
    // Unlike findEntry, a row here that lacks an id key does not match.
    EXPECT_EQ(here.compare(other, {"Name", "Tape"}).found_entries, (std::vector<EntryPtr>{other.data[0]}));
    EXPECT_EQ(here.compare(other, {}).found_entries.size(), 4u);
    // Several ids keep their values apart: "ab" + "c" is not "a" + "bc".
    auto split = makeTable({"Name", "Tape"}, {{{"Name", "ab"}, {"Tape", "c"}}});
    EXPECT_TRUE(
        split.compare(makeTable({"Name", "Tape"}, {{{"Name", "a"}, {"Tape", "bc"}}}), {"Name", "Tape"})
            .found_entries.empty());
    EXPECT_EQ(makeTable({"Name"}, {}).compare(other, {}).new_entries.size(), 4u);

    ALETable a;
    ALETable b;
    a.field_delim = b.field_delim = "TABS";
    a.video_format = "1080";
    b.fps = "25";
    a.audio_format = "48khz";
    b.audio_format = "44khz";
    a.film_format = "";
    a.tape = "T1";
    EXPECT_EQ(a.compare(b, {}).conflicts, (Names{"video_format", "fps", "audio_format", "film_format"}));
    EXPECT_TRUE(a.compare(*a.copy(false), {}).conflicts.empty());
}

TEST(ALETable, CanDeriveTimecodes) {
    const std::vector<Cells> good = {{{"S", "01:00:00:00"}, {"E", "01:00:10:00"}},
                                     {{"S", "02:00:00:00"}, {"D", "00:00:01:00"}}};
    struct Case {
        std::optional<std::string> fps;
        std::vector<Cells> rows;
        bool expected;
    };
    const Case cases[] = {
        {"25", good, true},
        {"23.976", good, true},
        {std::nullopt, good, false},
        {"0.5", good, false},
        {"1", good, true},
        {"PAL", good, false},
        {"25", {}, true},
        {"25", {{{"S", "01:00:00:00"}, {"E", "bad"}}}, false},
        {"25", {{{"S", "01:00:00"}, {"E", "01:00:10"}}}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fps.value_or("no rate") + (c.expected ? " derives" : " does not"));
        ALETable t = makeTable({"S", "E", "D"}, c.rows);
        t.fps = c.fps;
        EXPECT_EQ(t.canDeriveTimecodes("S", "E", "D"), c.expected);
    }
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
    }
    // Found, a held value without priority stays, a held value with priority changes, a new key is set.
    EXPECT_EQ(t.updateEntry(RowData{{"Name", "A"}, {"Tape", "T9"}, {"Scene", "9"}, {"Take", "3"}}, {"Name"},
                            {}, {{"Name", false}, {"Tape", false}, {"Scene", true}, {"Take", false}}),
              1);
    EXPECT_EQ(t.data[0]->data(), (RowData{{"Name", "A"}, {"Tape", "T1"}, {"Scene", "9"}, {"Take", "3"}}));
    // Not found: a new row, linked to the table, without the project.
    EXPECT_EQ(t.updateEntry(RowData{{"Name", "C"}}, {"Name"}, {}, {{"Name", false}}), 2);
    EXPECT_EQ(t.data.at(2)->table, &t);
    EXPECT_EQ(t.data[2]->sharedstuff, nullptr);
    // The incoming "Clip" is the table's "Name": the id is looked up through the map backwards.
    EXPECT_EQ(t.updateEntry(RowData{{"Clip", "B"}, {"Reel", "R5"}}, {"Name"},
                            {{"Clip", "Name"}, {"Reel", "Tape"}}, {{"Clip", true}, {"Reel", true}}),
              1);
    EXPECT_EQ(t.data[1]->data(), (RowData{{"Name", "B"}, {"Tape", "R5"}}));
    // An id given by its incoming name maps forward to the table's name.
    EXPECT_EQ(t.updateEntry(RowData{{"Clip", "C"}, {"Scene", "4"}}, {"Clip"}, {{"Clip", "Name"}},
                            {{"Clip", false}, {"Scene", false}}),
              1);
    EXPECT_EQ(t.data[2]->value("Scene"), "4");
    // An id the record lacks leaves the criteria: the first row matches.
    EXPECT_EQ(t.updateEntry(RowData{{"Scene", "7"}}, {"Name"}, {}, {{"Scene", true}}), 1);
    EXPECT_EQ(t.data[0]->value("Scene"), "7");
    // Priorities of the right size but without a key keep what the row holds.
    EXPECT_EQ(
        t.updateEntry(RowData{{"Name", "B"}, {"Tape", "U"}}, {"Name"}, {}, {{"Name", true}, {"X", true}}), 1);
    EXPECT_EQ(t.data[1]->value("Tape"), "R5");
    EXPECT_EQ(t.data.size(), 3u);
}

TEST(ALETable, CopyIsDeepAndPointsAtTheClone) {
    FakeBin bin;
    RecordingProject project;
    ALETable t = makeTable({"A"}, {{{"A", "1"}}, {{"A", "2"}}}, &project);
    t.tablename = "day1";
    t.bin = &bin;
    t.state = false;
    t.fps = "25";
    t.data[0]->associatedSmartBins.push_back(&t);

    auto clone = t.copy(true);
    EXPECT_EQ(clone->tablename, "day1_cl");
    EXPECT_EQ(clone->bin, nullptr);
    EXPECT_EQ(std::tie(clone->state, clone->fps, clone->cols), std::tie(t.state, t.fps, t.cols));
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

    // A move re-points the rows at the table they are now in.
    ALETable moved = std::move(t);
    EXPECT_EQ(moved.data[0]->table, &moved);
}

// A table that lists rows of other bins, as smart tables do: its rows never point back at it.
class ListingTable : public ALETable {
public:
    ListingTable() : ALETable(false) {}
};

TEST(ALETable, RowsOfAListingTableDoNotPointAtIt) {
    ListingTable listing;
    listing.appendEntry(std::make_shared<ALEEntry>(RowData{{"Name", "a"}}));
    EXPECT_EQ(listing.updateEntry(RowData{{"Name", "b"}}, {"Name"}, {}, {{"Name", true}}), 2);
    ASSERT_EQ(listing.data.size(), 2u);
    EXPECT_EQ(listing.data[0]->table, nullptr);
    EXPECT_EQ(listing.data[1]->table, nullptr);
}

} // namespace
} // namespace lumbra::tables
