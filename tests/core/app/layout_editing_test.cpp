#include "app/layout_editing.h"
#include "base/console.h"
#include "core/project/project_test_support.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <gtest/gtest.h>

namespace lumbra::app {
namespace {

using project::testing::readFile;
using project::testing::TempFolder;
using Columns = std::vector<std::string>;

TEST(LayoutEditing, NameRules) {
    tables::ProjectLayouts layouts;
    layouts.layouts.push_back(std::make_shared<tables::ColumnsLayout>("Dailies"));
    struct Case {
        std::string name;
        LayoutNameState expected;
    };
    const std::vector<Case> cases = {
        {"", {false, false}},        {"Default", {false, false}},     {"Default layout", {true, false}},
        {"Defaults", {true, false}}, {"Bin Columns", {false, false}}, {"Custom", {false, false}},
        {"custom", {true, false}},   {"Mine+", {false, false}},       {"a/b", {false, false}},
        {"a@b", {false, false}},     {"line\nbreak", {false, false}}, {"Dailies", {true, true}},
        {"dailies", {true, false}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(validateLayoutName(c.name, layouts), c.expected);
    }
    EXPECT_EQ(validateLayoutName("Dailies", layouts).buttonTitle(), "Update");
    EXPECT_EQ(validateLayoutName("Other", layouts).buttonTitle(), "Create");
}

TEST(LayoutEditing, PreviewCutOnlyPastFiftyRows) {
    EXPECT_EQ(previewCutText(0), std::nullopt);
    EXPECT_EQ(previewCutText(50), std::nullopt);
    EXPECT_EQ(previewCutText(51), "Preview cut to 50 entries");
    EXPECT_EQ(previewCutText(100000), "Preview cut to 50 entries");
}

TEST(LayoutEditing, TakingColumnsFromTheSource) {
    LayoutEditor editor;
    editor.columns = {"Name", "Start"};
    editor.useColumns({"Name", "Tape", "Scene", "Take", "Start", "Tracks"}, "Any Columns");
    editor.setFilter("TA");
    ASSERT_EQ(editor.filteredsupportcolumns, (Columns{"Tape", "Take", "Start"}));

    // "Start" is there already; the others go behind the selected first row.
    EXPECT_EQ(editor.takeSelected({2, 0, 1}, {0}), (std::vector<std::size_t>{1, 2}));
    EXPECT_EQ(editor.columns, (Columns{"Name", "Tape", "Take", "Start"}));

    editor.setFilter("");
    EXPECT_EQ(editor.takeAll(), 2u);
    EXPECT_EQ(editor.columns, (Columns{"Name", "Tape", "Take", "Start", "Scene", "Tracks"}));
    EXPECT_EQ(editor.takeAll(), 0u);
    EXPECT_EQ(editor.columns.size(), 6u);

    // A new source empties the filter.
    editor.setFilter("zz");
    tables::ColumnsLayout source("Sound", {"Sound Roll", "Name"});
    editor.useLayout(source);
    EXPECT_EQ(editor.sourceTitle, "Sound");
    EXPECT_EQ(editor.filterText, "");
    EXPECT_EQ(editor.filteredsupportcolumns, (Columns{"Sound Roll", "Name"}));
}

TEST(LayoutEditing, AddOneColumnWhereTheSelectionIs) {
    struct Case {
        std::string name;
        std::vector<std::size_t> selection;
        Columns expected;
        std::optional<std::size_t> row;
    };
    const std::vector<Case> cases = {
        {"nothing selected: at the end", {}, {"A", "B", "C", "X"}, 3},
        {"last row selected: at the end", {2}, {"A", "B", "C", "X"}, 3},
        {"behind the selected row", {0}, {"A", "X", "B", "C"}, 1},
        {"behind the last of several", {0, 1}, {"A", "B", "X", "C"}, 2},
        {"a row past the end counts as none", {9}, {"A", "B", "C", "X"}, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        LayoutEditor editor;
        editor.columns = {"A", "B", "C"};
        EXPECT_EQ(editor.addColumn("X", c.selection), c.row);
        EXPECT_EQ(editor.columns, c.expected);
    }
    LayoutEditor editor;
    editor.columns = {"A", "B"};
    EXPECT_EQ(editor.addColumn("A", {}), std::nullopt);
    EXPECT_EQ(editor.columns, (Columns{"A", "B"}));
}

TEST(LayoutEditing, BlockMovesKeepDistancesAndStopAtTheEnds) {
    struct Case {
        std::string name;
        std::vector<std::size_t> rows;
        long steps;
        Columns expected;
        std::vector<std::size_t> selected;
    };
    const std::vector<Case> cases = {
        {"top with the first row selected changes nothing", {0}, -6, {"a", "b", "c", "d", "e", "f"}, {0}},
        {"one up", {2, 4}, -1, {"a", "c", "b", "e", "d", "f"}, {1, 3}},
        {"ten up stops at the first row", {2, 4}, -10, {"c", "a", "e", "b", "d", "f"}, {0, 2}},
        {"down with the last row selected changes nothing",
         {3, 5},
         1,
         {"a", "b", "c", "d", "e", "f"},
         {3, 5}},
        {"to the bottom", {0, 2}, 6, {"b", "d", "e", "a", "f", "c"}, {3, 5}},
        {"ten down, unsorted selection", {1, 0}, 10, {"c", "d", "e", "f", "a", "b"}, {4, 5}},
        {"one down in the middle", {2}, 1, {"a", "b", "d", "c", "e", "f"}, {3}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        LayoutEditor editor;
        editor.columns = {"a", "b", "c", "d", "e", "f"};
        EXPECT_EQ(editor.moveRows(c.rows, c.steps), c.selected);
        EXPECT_EQ(editor.columns, c.expected);
    }
}

TEST(LayoutEditing, RemovingColumns) {
    LayoutEditor editor;
    editor.columns = {"a", "b", "c", "d"};
    editor.removeRows({3, 1, 7});
    EXPECT_EQ(editor.columns, (Columns{"a", "c"}));
    editor.removeAll();
    EXPECT_TRUE(editor.columns.empty());
}

class LayoutEditingProject : public ::testing::Test {
protected:
    void SetUp() override {
        stuff.autosave = false;
        stuff.currentFolder = folder.str();
        stuff.projectName = "Proj";
        auto existing = std::make_shared<tables::ColumnsLayout>("Existing", Columns{"Name", "Tape"});
        existing->colwidths["Name"] = 120.5;
        existing->setUuid("11111111-0000-0000-0000-000000000001");
        stuff.projectLayouts.layouts.push_back(existing);
        bin = project::testing::makeBin("Day 1", &stuff);
        bin->layout = std::make_shared<tables::ColumnsLayout>("Day cols", Columns{"Name"});
        stuff.bins->addBin(bin);
    }

    std::string layoutFile(tables::ColumnsLayout& layout) {
        return readFile(folder.path / "Proj" / "layout" / (layout.name + " - " + layout.uuid()) /
                        (layout.name + ".layout"));
    }

    TempFolder folder;
    project::SharedStuff stuff;
    std::shared_ptr<project::Bin> bin;
    base::PrintCapture capture;
};

// Updating a layout in place is walked in the layout editor's shell test; a new one goes in by name.
TEST_F(LayoutEditingProject, CreateSavesANewLayoutInNameOrderAndTheBinUsesIt) {
    LayoutEditor editor;
    editor.setup(*bin);
    EXPECT_EQ(editor.sourceTitle, "Day 1");
    editor.columns = {"Tape", "Name"};
    editor.name = "Fresh";
    auto result = editor.confirm(stuff.projectLayouts);
    ASSERT_TRUE(result);
    EXPECT_EQ(stuff.projectLayouts.layouts.size(), 1u) << "confirming alone adds nothing";
    EXPECT_TRUE(adoptEditedLayout(stuff, *bin, result));
    ASSERT_EQ(stuff.projectLayouts.layouts.size(), 2u);
    EXPECT_EQ(stuff.projectLayouts.layouts[1].get(), result.get());
    EXPECT_EQ(bin->layout, result);
    EXPECT_TRUE(stuff.something_to_save);
    EXPECT_EQ(layoutFile(*result), "Fresh\nTape\nName");
}

TEST_F(LayoutEditingProject, RefusedNameGivesNoAnswerAndCancelChangesNothing) {
    LayoutEditor editor;
    editor.setup(*bin);
    editor.name = "Default";
    EXPECT_EQ(editor.confirm(stuff.projectLayouts), nullptr);

    const auto before = bin->layout;
    EXPECT_TRUE(adoptEditedLayout(stuff, *bin, nullptr));
    EXPECT_EQ(bin->layout, before);
    EXPECT_FALSE(stuff.something_to_save);
    EXPECT_FALSE(std::filesystem::exists(folder.path / "Proj" / "layout"));
}

} // namespace
} // namespace lumbra::app
