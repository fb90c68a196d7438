#include "import/ale_reader.h"
#include "table_test_support.h"
#include "tables/ale_entry.h"
#include "tables/ale_table.h"

#include <functional>
#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

using testing::FakeBin;
using testing::RecordingProject;

TEST(RowData, KeysAreNamesAndMissingReadsEmpty) {
    RowData row{{"Name", "A"}, {"Start", ""}};
    EXPECT_EQ(row.valueOr("Name"), "A");
    EXPECT_EQ(row.valueOr("Start"), "");
    EXPECT_TRUE(row.contains("Start"));
    EXPECT_FALSE(row.contains("End"));
    EXPECT_EQ(row.valueOr("never used as a column anywhere"), "");
    EXPECT_EQ(row.find("never used as a column anywhere"), std::nullopt);

    row.set("Name", "B");
    EXPECT_EQ(row.size(), 2u);
    EXPECT_EQ(row.valueOr("Name"), "B");
    EXPECT_TRUE(row.erase("Start"));
    EXPECT_FALSE(row.erase("Start"));
    EXPECT_FALSE(row.erase("not a key of any row"));

    std::map<std::string, std::string> map{{"b", "2"}, {"a", "1"}, {"c", ""}};
    EXPECT_EQ(RowData::fromMap(map).toMap(), map);
    // Rows built in a different order hold the same map.
    EXPECT_EQ((RowData{{"x", "1"}, {"y", "2"}}), (RowData{{"y", "2"}, {"x", "1"}}));
}

TEST(ALEEntry, ValueProjectionAndEmptiness) {
    ALEEntry row(RowData{{"Name", "A"}, {"Blank", ""}});
    EXPECT_EQ(row.value("Name"), "A");
    EXPECT_EQ(row.value("Blank"), "");
    EXPECT_EQ(row.value("Missing"), std::nullopt);

    RowData projected = row.projection({"Missing", "Name"});
    EXPECT_EQ(projected.toMap(), (std::map<std::string, std::string>{{"Missing", ""}, {"Name", "A"}}));
    EXPECT_TRUE(row.projection({}).empty());

    struct Case {
        const char* name;
        RowData data;
        bool empty;
    };
    const Case cases[] = {
        {"no keys", {}, true},
        {"only empty texts", {{"a", ""}, {"b", ""}}, true},
        {"a blank is text", {{"a", ""}, {"b", " "}}, false},
        {"one value", {{"a", "x"}}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(ALEEntry(c.data).isEmpty(), c.empty);
    }
}

TEST(ALEEntry, MatchesPassesOverKeysTheRowLacks) {
    ALEEntry row(RowData{{"Name", "A"}, {"Tape", "T1"}});
    struct Case {
        const char* name;
        RowData criteria;
        bool matches;
    };
    const Case cases[] = {
        {"no criteria", {}, true},
        {"same value", {{"Name", "A"}}, true},
        {"other value", {{"Name", "B"}}, false},
        {"key the row lacks", {{"Scene", "1"}}, true},
        {"lacked key and same value", {{"Scene", "1"}, {"Tape", "T1"}}, true},
        {"lacked key and other value", {{"Scene", "1"}, {"Tape", "T2"}}, false},
        {"empty criteria value against a value", {{"Name", ""}}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(matches(row, c.criteria), c.matches);
    }
}

TEST(ALEEntry, CopyHasNoTableNoAssociationsAndSharedStuffOnRequest) {
    RecordingProject project;
    ALETable table;
    ALETable smart;
    ALEEntry row(RowData{{"Name", "A"}}, &project, &table);
    row.associatedSmartBins.push_back(&smart);

    auto kept = row.copy(true);
    EXPECT_EQ(kept->data(), row.data());
    EXPECT_EQ(kept->sharedstuff, &project);
    EXPECT_EQ(kept->table, nullptr);
    EXPECT_TRUE(kept->associatedSmartBins.empty());
    EXPECT_EQ(row.copy(false)->sharedstuff, nullptr);
    EXPECT_TRUE(project.changed.empty());
}

TEST(ALEEntry, Associations) {
    ALETable a;
    ALETable b;
    ALEEntry row;
    row.associatedSmartBins = {&a, &b, &a};
    EXPECT_TRUE(row.isAssociated(&a));
    row.removeAssociation(&a);
    EXPECT_EQ(row.associatedSmartBins, (std::vector<const ALETable*>{&b, &a}));
    row.removeAssociation(&b);
    row.removeAssociation(&b);
    EXPECT_EQ(row.associatedSmartBins, (std::vector<const ALETable*>{&a}));
    EXPECT_FALSE(row.isAssociated(&b));
}

TEST(ALEEntry, WriteGoesThroughTheLockAndTellsTheProject) {
    FakeBin bin;
    RecordingProject project;
    ALETable table;
    table.bin = &bin;
    ALEEntry row(RowData{{"Name", "A"}}, &project, &table);

    EXPECT_TRUE(row.setData(RowData{{"Name", "B"}}));
    EXPECT_EQ(row.value("Name"), "B");
    EXPECT_EQ(project.changed, std::vector<const ALEEntry*>{&row});

    bin.locked = true;
    EXPECT_FALSE(row.setData(RowData{{"Name", "C"}}));
    EXPECT_EQ(row.value("Name"), "B");
    EXPECT_EQ(project.changed.size(), 1u);

    // Without a bin, or without a table, nothing can lock the row.
    table.bin = nullptr;
    EXPECT_TRUE(row.setData(RowData{{"Name", "D"}}));
    ALEEntry loose(RowData{}, nullptr, nullptr);
    EXPECT_TRUE(loose.setData(RowData{{"Name", "E"}}));
    EXPECT_EQ(loose.value("Name"), "E");
    EXPECT_EQ(project.changed.size(), 2u);
}

// Faults of text shared by a table's rows: each case edits a table read from text, then reads every row.
TEST(ALEEntry, EditsKeepTheOtherValuesOfTheirTable) {
    using Rows = std::vector<std::vector<std::string>>;
    struct Case {
        const char* name;
        std::function<void(ALETable&)> edit;
        std::vector<std::string> columns;
        Rows rows;
    };
    const Case cases[] = {
        {"edit after a column rename",
         [](ALETable& t) {
             t.renameColumn("Tape", "Reel");
             EXPECT_TRUE(t.data[0]->setValue("Reel", "R9"));
         },
         {"Name", "Tape", "Reel"},
         {{"A", "", "R9"}, {"B", "", "T2"}}},
        {"a copy edited on its own",
         [](ALETable& t) {
             auto copy = t.copy(false);
             copy->data[0]->setValue("Name", "Z");
             copy->deleteColumn("Tape");
         },
         {"Name", "Tape"},
         {{"A", "T1"}, {"B", "T2"}}},
        {"a view kept through many later edits",
         [](ALETable& t) {
             std::string_view kept = t.data[1]->data().valueOr("Name");
             for (int i = 0; i < 20000; ++i)
                 t.data[0]->setValue("Tape", std::string(static_cast<std::size_t>(i % 300), 'x'));
             t.updateEntry(RowData{{"Name", "C"}}, {"Name"}, {}, {{"Name", true}});
             EXPECT_EQ(kept, "B");
         },
         {"Name", "Tape"},
         {{"A", std::string(199, 'x')}, {"B", "T2"}, {"C", ""}}},
        {"a locked bin drops the edit",
         [](ALETable& t) {
             static FakeBin locked;
             locked.locked = true;
             t.bin = &locked;
             EXPECT_FALSE(t.data[0]->setValue("Name", "Z"));
             t.renameColumn("Tape", "Reel");
             t.bin = nullptr;
         },
         {"Name", "Tape", "Reel"},
         {{"A", "T1", ""}, {"B", "T2", ""}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        import::ReadResult read = import::parseALEText(
            "Heading\nFIELD_DELIM\tTABS\n\nColumn\nName\tTape\n\nData\nA\tT1\nB\tT2\n", "t");
        ALETable& t = *read.table;
        c.edit(t);
        Rows rows;
        for (long i = 0; i < static_cast<long>(t.data.size()); ++i)
            rows.push_back(*t.rowValues(i, c.columns));
        EXPECT_EQ(rows, c.rows);
    }
}

} // namespace
} // namespace lumbra::tables
