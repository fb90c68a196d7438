#include "app/fields_selection.h"
#include "app/picker_trees.h"
#include "core/project/project_test_support.h"
#include "project/shared_stuff.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace lumbra::app {
namespace {

using Columns = std::vector<std::string>;

TEST(SingleInput, WhatCanBeConfirmed) {
    struct Case {
        std::string name;
        SingleInputRules rules;
        std::string text;
        bool accepted;
    };
    const std::vector<Case> cases = {
        {"empty allowed", {{}, true, std::nullopt}, "", true},
        {"empty refused", {{}, false, std::nullopt}, "", false},
        {"a taken name", {{"bin_01", "Day"}, false, std::nullopt}, "Day", false},
        {"taken names compare whole", {{"Day"}, false, std::nullopt}, "Day 2", true},
        {"a character no bin name holds", {{}, false, std::nullopt}, "a;b", false},
        {"curly braces", {{}, false, std::nullopt}, "@{x}", false},
        {"own unusable characters replace the shared ones", {{}, false, Columns{"#"}}, "a;b", true},
        {"own unusable character found", {{}, false, Columns{"#"}}, "a#b", false},
        {"spaces and dots are fine", {{}, false, std::nullopt}, "Day 1.2", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.rules.accepts(c.text), c.accepted);
    }
}

TEST(PickerFilter, LowerCaseContains) {
    const Columns names = {"Name", "Tape", "Sound Roll", "TAKE", "Ärger"};
    EXPECT_EQ(filterNames(names, ""), names);
    EXPECT_EQ(filterNames(names, "ta"), (Columns{"Tape", "TAKE"}));
    EXPECT_EQ(filterNames(names, "D R"), (Columns{"Sound Roll"}));
    EXPECT_EQ(filterNames(names, "zz"), Columns{});
}

class PickerProject : public ::testing::Test {
protected:
    void SetUp() override {
        stuff.autosave = false;
        stuff.projectLayouts.baseLayout =
            std::make_shared<tables::ColumnsLayout>("Default", Columns{"Name", "End"});
        dailies = std::make_shared<tables::ColumnsLayout>("Dailies", Columns{"Name", "Scene", "Take"});
        stuff.projectLayouts.layouts.push_back(dailies);
        auto bin = project::testing::makeBin("Day 1", &stuff);
        bin->layout = std::make_shared<tables::ColumnsLayout>("Own", Columns{"Camroll"});
        group = project::testing::makeGroup("Shoot");
        group->addBin(bin);
        group->addBin(project::testing::makeBin("Day 2", &stuff));
        stuff.bins->addChild(group);
        stuff.bins->addBin(project::testing::makeBin("Extras", &stuff));
    }

    project::SharedStuff stuff;
    std::shared_ptr<tables::ColumnsLayout> dailies;
    project::TreeNode group;
};

// The chooser's walk is in the layout editor's shell test; these are the answers it does not reach.
TEST_F(PickerProject, FieldsSelectionSourcesAndRefusals) {
    FieldsSelection selection;
    selection.setup(stuff);
    EXPECT_EQ(selection.popupTitles(), (Columns{"<All columns>", "Default", "Dailies"}));
    for (const char* column : {"Camroll", "End", "Name", "Scene", "Take", "Tape"})
        EXPECT_NE(std::ranges::find(selection.allColumns, column), selection.allColumns.end()) << column;
    selection.setFilter("a");
    selection.selectLayout("Dailies");
    EXPECT_EQ(selection.filterText, "") << "choosing a source empties the filter";
    selection.setFilter("E");
    EXPECT_EQ(selection.filteredColumns, (Columns{"Name", "Scene", "Take"}));
    selection.selectLayout("Default");
    selection.selectLayout("No such layout");
    EXPECT_EQ(selection.filteredColumns, (Columns{"Name", "End"}));
    selection.selectLayout("<All columns>");
    EXPECT_EQ(selection.mode, ColumnsMode::custom);
    EXPECT_EQ(selection.filteredColumns, selection.allColumns);

    EXPECT_TRUE(selection.addColumn("Take"));
    EXPECT_FALSE(selection.addColumn("Take"));
    EXPECT_TRUE(selection.addCustomColumn(std::string("My \"col\"")));
    EXPECT_FALSE(selection.addCustomColumn(std::string()));
    EXPECT_FALSE(selection.addCustomColumn(std::nullopt));
    EXPECT_EQ(selection.fieldsListLine(), R"(fetched FIELDSLIST: ["Take", "My \"col\""])");
    EXPECT_TRUE(selection.removeColumn("Take"));
    EXPECT_FALSE(selection.removeColumn("Take"));
    EXPECT_EQ(selection.selectedColumns, (Columns{"My \"col\""}));
}

std::vector<std::string> titles(const LayoutMixedTreeEntry& root) {
    std::vector<std::string> out;
    for (const auto* entry : root.flatten()) {
        out.push_back(entry->id);
    }
    return out;
}

TEST_F(PickerProject, MixedTreeSearch) {
    stuff.bins->children[0]->children[0]->bin->setSelected(true);
    auto extra = std::make_shared<tables::ColumnsLayout>("Checks", Columns{"Tape"});
    const auto layouts = mixedPickerLayouts({extra}, stuff);

    const auto all = layoutSetterMixedTree(stuff, true, layouts, "");
    EXPECT_EQ(titles(all),
              (Columns{"", "Any Column", "Bins", "Project Bins", "Shoot", "Day 1", "Day 2", "Extras",
                       "Open Bins", "Day 1", "Smart Bins", "Layouts", "Checks", "Dailies"}));
    EXPECT_TRUE(all.children[0].anyColumns);
    EXPECT_FALSE(all.children[0].isGroup());

    struct Case {
        std::string search;
        bool showBin;
        Columns expected;
    };
    const std::vector<Case> cases = {
        {"nothing matches this",
         true,
         {"", "Any Column", "Bins", "Project Bins", "Open Bins", "Smart Bins", "Layouts"}},
        {"nothing matches this", false, {"", "Any Column", "Layouts"}},
        {"DAY 2",
         true,
         {"", "Any Column", "Bins", "Project Bins", "Shoot", "Day 2", "Open Bins", "Smart Bins", "Layouts"}},
        {"shoot",
         true,
         {"", "Any Column", "Bins", "Project Bins", "Shoot", "Day 1", "Day 2", "Open Bins", "Smart Bins",
          "Layouts"}},
        {"ai", false, {"", "Any Column", "Layouts", "Dailies"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.search);
        EXPECT_EQ(titles(layoutSetterMixedTree(stuff, c.showBin, layouts, c.search)), c.expected);
    }
    const auto found = layoutSetterMixedTree(stuff, false, layouts, "check");
    ASSERT_EQ(found.children[1].children.size(), 1u);
    EXPECT_EQ(found.children[1].children[0].columnsLayout, extra);
}

TEST_F(PickerProject, BinPickerTree) {
    EXPECT_EQ(titles(binSetterTree(stuff, false)),
              (Columns{"", "Project Bins", "Shoot", "Day 1", "Day 2", "Extras", "Open Bins"}));
    const auto withSmart = binSetterTree(stuff, true);
    EXPECT_EQ(withSmart.children.back().id, "Smart Bins");
    EXPECT_TRUE(withSmart.children[0].children[0].isGroup());
    EXPECT_EQ(withSmart.children[0].children[1].bin, stuff.bins->children[1]->bin.get());
}

std::vector<std::string> names(const BinTreeEntriesSelection& selection) {
    std::vector<std::string> out;
    for (const auto& entry : selection.selectedBinTreeEntries()) {
        out.push_back(entry->name());
    }
    return out;
}

TEST_F(PickerProject, CheckBoxesOfBinsAndGroups) {
    const project::TreeNode day1 = group->children[0];
    const project::TreeNode day2 = group->children[1];

    BinTreeEntriesSelection staticGroups(true);
    staticGroups.toggle(day2);
    EXPECT_TRUE(staticGroups.isChecked(*day2));
    staticGroups.toggle(group);
    EXPECT_EQ(names(staticGroups), (Columns{"Day 2", "Day 1"})) << "the missing bin joins, the group never";
    EXPECT_FALSE(staticGroups.isChecked(*group));
    staticGroups.toggle(group);
    EXPECT_EQ(names(staticGroups), Columns{}) << "all were checked: all go";

    // The same entry as a copy (same uuid) counts as the same row.
    staticGroups.toggle(day1);
    auto copy = project::BinsTreeEntry::shallowCopy(*day1);
    EXPECT_TRUE(staticGroups.isChecked(*copy));
    staticGroups.toggle(copy);
    EXPECT_EQ(names(staticGroups), Columns{});

    BinTreeEntriesSelection plainGroups(false);
    plainGroups.toggle(day1);
    plainGroups.toggle(group);
    EXPECT_EQ(names(plainGroups), (Columns{"Day 1", "Shoot"}));
    plainGroups.toggle(group);
    EXPECT_EQ(names(plainGroups), (Columns{"Day 1"}));
}

} // namespace
} // namespace lumbra::app
