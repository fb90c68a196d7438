#include "app/bin_box_columns.h"
#include "app/bin_box_edits.h"
#include "app/bin_box_search.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <gtest/gtest.h>

namespace lumbra::app {
namespace {

using tables::ALETable;
using tables::ColumnsDefaultWidth;
using tables::ColumnsLayout;
using tables::RowData;

// A project with one bin of three clips, its layout "Lay" (Name, Tape, Comments, the tag column), in the
// bins tree under a group so that paths can be checked.
struct BoxFixture {
    BoxFixture() {
        sharedstuff.autosave = false;
        auto table = std::make_unique<ALETable>();
        table->tablename = "day1";
        table->cols = {"Name", "Tape", "Comments", "Lumbra_Color_Tag"};
        for (const RowData& row : {RowData{{"Name", "A001"}, {"Tape", "T1"}, {"Lumbra_Color_Tag", "RED"}},
                                   RowData{{"Name", "b002"}, {"Tape", "T2"}, {"Comments", "nice take"}},
                                   RowData{{"Name", "C003"}, {"Comments", "Take two"}}})
            table->appendEntry(std::make_shared<tables::ALEEntry>(row));
        auto layout = std::make_shared<ColumnsLayout>(
            "Lay", std::vector<std::string>{"Name", "Tape", "Comments", "Lumbra_Color_Tag"});
        bin = std::make_shared<project::Bin>(std::move(table), &sharedstuff, layout, true);
        group = std::make_shared<project::BinsTreeEntry>("group", nullptr, std::vector<project::TreeNode>{},
                                                         &sharedstuff);
        group->addBin(bin);
        sharedstuff.bins->addChild(group);
        sharedstuff.bins->rebuildArray();
        for (project::BinsTreeEntry* node : sharedstuff.bins->flatten())
            node->identity().hasChanged = false;
    }

    [[nodiscard]] std::string value(long row, const std::string& column) const {
        return std::string(bin->table()->data[static_cast<std::size_t>(row)]->data().valueOr(column));
    }
    [[nodiscard]] bool hasKey(long row, const std::string& column) const {
        return bin->table()->data[static_cast<std::size_t>(row)]->data().contains(column);
    }

    project::SharedStuff sharedstuff;
    std::shared_ptr<project::Bin> bin;
    project::TreeNode group;
};

TEST(BinBoxColumns, TagWordsReadInAnyCase) {
    struct Case {
        const char* word;
        RowTag expected;
    };
    for (const Case& c : {Case{"Red", RowTag::red}, Case{"GREEN", RowTag::green}, Case{"blue", RowTag::blue},
                          Case{"yElLoW", RowTag::yellow}, Case{"Pink", RowTag::pink},
                          Case{"purple", RowTag::purple}, Case{"None", RowTag::none}, Case{"", RowTag::none},
                          Case{"orange", RowTag::none}, Case{" red", RowTag::none}}) {
        SCOPED_TRACE(c.word);
        EXPECT_EQ(rowTag(c.word), c.expected);
    }
}

TEST(BinBoxColumns, PinnedColumnsFollowThePinnedListFilteredByTheLayout) {
    const std::vector<std::string> layout = {"Name", "Start", "Tape", "End"};
    EXPECT_EQ(splitColumns({"End", "Scene", "Name"}, layout),
              (ColumnSplit{{"End", "Name"}, {"Start", "Tape"}}));
    EXPECT_EQ(splitColumns({}, layout), (ColumnSplit{{}, layout}));
    EXPECT_EQ(splitColumns({"Scene"}, {}), ColumnSplit{});
}

TEST(BinBoxColumns, WidthRuleForColumnsWithoutStoredWidth) {
    BoxFixture f;
    struct Case {
        ColumnsDefaultWidth rule;
        ColumnSizing main;
        ColumnSizing pinned;
    };
    for (const Case& c :
         {Case{ColumnsDefaultWidth::fittoheader, ColumnSizing::sizeToFit, ColumnSizing::sizeToFit},
          Case{ColumnsDefaultWidth::asneeded, ColumnSizing::sizeToFit, ColumnSizing::sizeToFit},
          Case{ColumnsDefaultWidth::fittocontent, ColumnSizing::untouched, ColumnSizing::untouched},
          Case{ColumnsDefaultWidth::fixed, ColumnSizing::given, ColumnSizing::untouched}}) {
        SCOPED_TRACE(static_cast<int>(c.rule));
        tables::ProjectLayouts layouts;
        layouts.columnsdefaultwidth = c.rule;
        EXPECT_EQ(columnSpecs({"Name"}, false, *f.bin, layouts, {})[0].sizing, c.main);
        EXPECT_EQ(columnSpecs({"Name"}, true, *f.bin, layouts, {})[0].sizing, c.pinned);
    }
}

TEST(BinBoxColumns, FittingCountsCharactersTimesEight) {
    BoxFixture f;
    ContentWidths widths;
    EXPECT_DOUBLE_EQ(widths.width(*f.bin->table(), "Comments"), 9 * 8.0);
    EXPECT_DOUBLE_EQ(widths.width(*f.bin->table(), "Nowhere"), 0.0);
    f.bin->table()->data[0]->setData(RowData{{"Name", "Ça été"}});
    EXPECT_DOUBLE_EQ(widths.width(*f.bin->table(), "Name"), 6 * 8.0);
    // Edits keep a counted column exact without reading its rows again: the widest value may shrink.
    widths.replace("Comments", "nice take", "ok");
    EXPECT_DOUBLE_EQ(widths.width(*f.bin->table(), "Comments"), 8 * 8.0); // "Take two"
    widths.replace("Comments", "", "a much longer comment");
    EXPECT_DOUBLE_EQ(widths.width(*f.bin->table(), "Comments"), 21 * 8.0);

    EXPECT_DOUBLE_EQ(fittedWidth(100.0, 40.0, true), 40.0);
    EXPECT_DOUBLE_EQ(fittedWidth(100.0, 40.0, false), 100.0);
    EXPECT_DOUBLE_EQ(fittedWidth(10.0, 40.0, false), 40.0);
}

TEST(BinBoxColumns, StoredWidthCopiesASharedLayoutOnceAndMarksTheBin) {
    BoxFixture f;
    const auto shared = f.bin->layout;
    EXPECT_TRUE(storeColumnWidth(f.sharedstuff, *f.bin, "Name", 120.0));
    EXPECT_EQ(f.bin->layout->name, "Lay+");
    EXPECT_NE(f.bin->layout, shared);
    EXPECT_TRUE(shared->colwidths.empty());
    EXPECT_EQ(f.bin->layout->columns, shared->columns);
    EXPECT_TRUE(f.bin->hasChanged);
    EXPECT_TRUE(f.group->hasChanged);
    EXPECT_TRUE(f.sharedstuff.something_to_save);

    // A "+" layout changes in place; the same width again changes nothing.
    const auto own = f.bin->layout;
    EXPECT_TRUE(storeColumnWidth(f.sharedstuff, *f.bin, "Tape", 50.0));
    EXPECT_EQ(f.bin->layout, own);
    EXPECT_EQ(own->colwidths, (std::map<std::string, double>{{"Name", 120.0}, {"Tape", 50.0}}));
    f.bin->hasChanged = false;
    EXPECT_FALSE(storeColumnWidth(f.sharedstuff, *f.bin, "Tape", 50.0));
    EXPECT_FALSE(f.bin->hasChanged);
}

TEST(BinBoxColumns, BlockMovesStayInsideTheTable) {
    const std::vector<std::string> cols = {"a", "b", "c", "d", "e"};
    struct Case {
        const char* name;
        std::vector<std::size_t> selected;
        std::size_t from;
        std::size_t to;
        std::optional<std::vector<std::string>> order;
        std::vector<std::size_t> moved;
    };
    const std::vector<Case> cases = {
        {"one right by two", {1}, 1, 3, std::vector<std::string>{"a", "c", "d", "b", "e"}, {3}},
        {"block left by one", {2, 3}, 3, 2, std::vector<std::string>{"a", "c", "d", "b", "e"}, {1, 2}},
        {"clamped at the end", {1, 2}, 1, 4, std::vector<std::string>{"a", "d", "e", "b", "c"}, {3, 4}},
        {"clamped at the start", {2, 3}, 3, 0, std::vector<std::string>{"c", "d", "a", "b", "e"}, {0, 1}},
        {"already at the end", {3, 4}, 3, 4, std::nullopt, {}},
        {"nothing selected", {}, 1, 3, std::nullopt, {}},
        {"pointer past the table", {1}, 1, 9, std::nullopt, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto move = moveColumnBlock(cols, c.selected, c.from, c.to);
        ASSERT_EQ(move.has_value(), c.order.has_value());
        if (move) {
            EXPECT_EQ(move->order, *c.order);
            EXPECT_EQ(move->selected, c.moved);
        }
    }
}

TEST(BinBoxColumns, MainMovesReorderTheLayoutAroundPinnedColumns) {
    BoxFixture f;
    f.sharedstuff.projectLayouts.pinnedColumns = {"Tape", "Name"};
    // Shown in the main table: Comments, tag; the pinned Tape keeps its place in the layout.
    EXPECT_EQ(
        reorderedWithin({"Name", "Tape", "Comments", "Lumbra_Color_Tag"}, {"Lumbra_Color_Tag", "Comments"}),
        (std::vector<std::string>{"Name", "Tape", "Lumbra_Color_Tag", "Comments"}));
    ASSERT_TRUE(applyMainColumnsOrder(f.sharedstuff, *f.bin, {"Lumbra_Color_Tag", "Comments"}));
    EXPECT_EQ(f.bin->layout->name, "Lay+");
    EXPECT_EQ(f.bin->layout->columns,
              (std::vector<std::string>{"Name", "Tape", "Lumbra_Color_Tag", "Comments"}));

    applyPinnedColumnsOrder(f.sharedstuff, {"Name", "Tape"});
    EXPECT_EQ(f.sharedstuff.projectLayouts.pinnedColumns, (std::vector<std::string>{"Name", "Tape"}));

    f.bin->setLock(true);
    EXPECT_FALSE(applyMainColumnsOrder(f.sharedstuff, *f.bin, {"Comments", "Lumbra_Color_Tag"}));
    EXPECT_EQ(f.bin->layout->columns,
              (std::vector<std::string>{"Name", "Tape", "Lumbra_Color_Tag", "Comments"}));
}

TEST(BinBoxEdits, TypedValuesStoreClearOrAreRefused) {
    struct Case {
        const char* name;
        long row;
        std::string column;
        std::string text;
        CellEditOutcome outcome;
        bool keyAfter;
        std::string valueAfter;
        bool dirty;
    };
    const std::vector<Case> cases = {
        {"new value", 0, "Tape", "T9", CellEditOutcome::stored, true, "T9", true},
        {"same value", 0, "Tape", "T1", CellEditOutcome::unchanged, true, "T1", false},
        {"three underscores clear", 0, "Tape", "___", CellEditOutcome::cleared, false, "", true},
        {"empty clears", 1, "Comments", "", CellEditOutcome::cleared, false, "", true},
        {"clearing an absent key", 0, "Comments", "_", CellEditOutcome::unchanged, false, "", false},
        {"underscores among text are text", 0, "Tape", "_a_", CellEditOutcome::stored, true, "_a_", true},
        {"tag column refused", 0, "Lumbra_Color_Tag", "Blue", CellEditOutcome::refused, true, "RED", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        BoxFixture f;
        const CellEditResult result = editCell(f.sharedstuff, *f.bin, c.row, c.column, c.text);
        EXPECT_EQ(result.outcome, c.outcome);
        EXPECT_EQ(f.hasKey(c.row, c.column), c.keyAfter);
        EXPECT_EQ(f.value(c.row, c.column), c.valueAfter);
        EXPECT_EQ(f.sharedstuff.something_to_save, c.dirty);
        EXPECT_EQ(f.group->hasChanged, c.dirty);
    }
}

TEST(BinBoxEdits, LockedColumnRestoresAndOutOfRangeRowsAreRefused) {
    BoxFixture f;
    f.bin->lockedColumns = {"Name"};
    const CellEditResult result = editCell(f.sharedstuff, *f.bin, 1, "Name", "changed");
    EXPECT_EQ(result.outcome, CellEditOutcome::refused);
    EXPECT_EQ(result.restoreText, "b002");
    EXPECT_EQ(f.value(1, "Name"), "b002");
    EXPECT_EQ(editCell(f.sharedstuff, *f.bin, 3, "Tape", "x").outcome, CellEditOutcome::refused);
}

TEST(BinBoxEdits, NewColumnJoinsTheTableAndOpenBinsAreRedrawn) {
    BoxFixture f;
    const CellEditResult closed = editCell(f.sharedstuff, *f.bin, 2, "Scene", "12A");
    EXPECT_EQ(closed.outcome, CellEditOutcome::stored);
    EXPECT_TRUE(closed.binsToRefresh.empty());
    EXPECT_EQ(f.bin->table()->cols.back(), "Scene");
    EXPECT_EQ(f.value(2, "Scene"), "12A");

    f.bin->setSelected(true);
    const CellEditResult open = editCell(f.sharedstuff, *f.bin, 2, "Scene", "12B");
    EXPECT_EQ(open.binsToRefresh, (std::vector<project::Bin*>{f.bin.get()}));
    EXPECT_EQ(std::count(f.bin->table()->cols.begin(), f.bin->table()->cols.end(), "Scene"), 1);
}

TEST(BinBoxSearch, FirstHitsScanRowsThenLayoutColumns) {
    BoxFixture f;
    const ColumnSplit split = splitColumns({"Comments"}, f.bin->layout->columns);
    EXPECT_EQ(searchDataFirst(*f.bin->table(), split, f.bin->layout->columns, "b0"),
              (SearchHit{1, "Name", false}));
    EXPECT_EQ(searchHeadersFirst(split, "e"), (SearchHit{-1, "Comments", true}));
    EXPECT_EQ(searchHeadersFirst(split, "scene"), std::nullopt);
}

TEST(BinBoxSearch, NextResumesAfterTheLastHitWrapsAndStopsAfterOnePass) {
    BoxFixture f;
    const ColumnSplit split = splitColumns({"Comments"}, f.bin->layout->columns);
    const auto columns = searchColumns(split, f.bin->layout->columns);
    EXPECT_EQ(columns, (std::vector<std::string>{"Comments", "Name", "Tape", "Lumbra_Color_Tag"}));
    BinSearchState state;
    const auto next = [&](const std::string& text) {
        return searchDataNext(state, *f.bin->table(), split, columns, text);
    };
    EXPECT_EQ(next("t"), (SearchHit{0, "Tape", false}));
    EXPECT_EQ(next("t"), (SearchHit{1, "Comments", true}));
    EXPECT_EQ(next("t"), (SearchHit{1, "Tape", false}));
    EXPECT_EQ(next("t"), (SearchHit{2, "Comments", true}));
    EXPECT_EQ(next("t"), (SearchHit{0, "Tape", false})); // wrapped
    // A changed text starts at the first cell again.
    EXPECT_EQ(next("T"), (SearchHit{0, "Tape", false}));
    EXPECT_EQ(next("c003"), (SearchHit{2, "Name", false}));
    EXPECT_EQ(next("c003"), (SearchHit{2, "Name", false})); // the only hit, found again after a full pass
    EXPECT_EQ(next("nowhere"), std::nullopt);
    EXPECT_EQ(state.last_found_row, -1);
    EXPECT_EQ(next(""), std::nullopt);
    EXPECT_EQ(searchDataNext(state, *f.bin->table(), {}, {}, "t"), std::nullopt);
    const ALETable empty;
    EXPECT_EQ(searchDataNext(state, empty, split, columns, "x"), std::nullopt);
}

TEST(BinBoxSearch, HeadersNextWrapsOverColumns) {
    const ColumnSplit split{{"Scene"}, {"Name", "Sound Roll", "Scene Notes"}};
    const auto columns = searchColumns(split, {"Name", "Scene", "Sound Roll", "Scene Notes"});
    BinSearchState state;
    EXPECT_EQ(searchHeadersNext(state, split, columns, "scene"), (SearchHit{-1, "Scene", true}));
    EXPECT_EQ(searchHeadersNext(state, split, columns, "scene"), (SearchHit{-1, "Scene Notes", false}));
    EXPECT_EQ(searchHeadersNext(state, split, columns, "scene"), (SearchHit{-1, "Scene", true}));
    EXPECT_EQ(searchHeadersNext(state, split, columns, "ROLL"), (SearchHit{-1, "Sound Roll", false}));
    EXPECT_EQ(searchHeadersNext(state, split, columns, "take"), std::nullopt);
    EXPECT_EQ(searchHeadersNext(state, split, {}, "scene"), std::nullopt);
}

} // namespace
} // namespace lumbra::app
