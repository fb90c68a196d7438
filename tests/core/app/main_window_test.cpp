#include "app/bin_saving.h"
#include "app/bins_list_commands.h"
#include "app/box_tiling.h"
#include "app/layout_menu.h"
#include "app/main_window_log.h"
#include "base/console.h"
#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <gtest/gtest.h>

namespace lumbra::app {
namespace {

using base::NotificationType;
using project::testing::makeTable;
using project::testing::readFile;
using project::testing::TempFolder;

std::tm at(int h, int m, int s) {
    std::tm t{};
    t.tm_hour = h;
    t.tm_min = m;
    t.tm_sec = s;
    return t;
}

TEST(MainWindowLog, NewestFirstWithTimeAndTailClear) {
    MainWindowLog log;
    log.add("first", at(9, 5, 7));
    log.add("second", at(23, 59, 0));
    EXPECT_EQ(log.text(), "23:59:00 - second\n09:05:07 - first");

    for (int i = 2; i < 3000; ++i)
        log.add("line " + std::to_string(i), at(10, 0, 0));
    ASSERT_EQ(log.lines().size(), 3000u);
    EXPECT_EQ(log.lines().back(), "09:05:07 - first");

    log.add("the 3001st", at(11, 0, 0));
    ASSERT_EQ(log.lines().size(), 2002u);
    EXPECT_EQ(log.lines()[0], "11:00:00 - the 3001st");
    EXPECT_EQ(log.lines()[1], "-- LONG LOG: TAIL CLEARED --");
    // The oldest thousand went: line 1000 is the oldest left.
    EXPECT_EQ(log.lines().back(), "10:00:00 - line 1000");

    // The marker is an ordinary line afterwards and moves down.
    log.add("next", at(11, 0, 1));
    EXPECT_EQ(log.lines()[2], "-- LONG LOG: TAIL CLEARED --");
}

TEST(MainWindowLog, NotificationTitleByKindWhenNoneGiven) {
    EXPECT_EQ(logNotification("t", "", NotificationType::OK).title, "Operation executed");
    EXPECT_EQ(logNotification("t", "", NotificationType::WARNING).title, "Warning");
    EXPECT_EQ(logNotification("t", "", NotificationType::KO).title, "Operation not executed");
    EXPECT_EQ(logNotification("Saved to x", "Saved", NotificationType::OK).title, "Saved");
}

TEST(BoxTiling, ModesAndCounts) {
    EXPECT_EQ(multiViewModeForTag(1), MultiViewMode::portrait);
    EXPECT_EQ(multiViewModeForTag(2), MultiViewMode::landscape);
    EXPECT_EQ(multiViewModeForTag(0), MultiViewMode::standard);
    EXPECT_EQ(multiViewModeForTag(7), MultiViewMode::standard);

    EXPECT_TRUE(tileFrames(0, 1000, 800, MultiViewMode::standard).empty());
    EXPECT_EQ(tileFrames(2, 1010, 800, MultiViewMode::standard),
              (std::vector<BoxFrame>{{0, 0, 500, 800}, {510, 0, 500, 800}}));
    EXPECT_EQ(tileFrames(4, 1010, 810, MultiViewMode::standard),
              (std::vector<BoxFrame>{
                  {0, 0, 500, 400}, {510, 0, 500, 400}, {0, 410, 500, 400}, {510, 410, 500, 400}}));
    EXPECT_EQ(tileFrames(3, 920, 600, MultiViewMode::portrait),
              (std::vector<BoxFrame>{{0, 0, 300, 600}, {310, 0, 300, 600}, {620, 0, 300, 600}}));
    EXPECT_EQ(tileFrames(2, 600, 810, MultiViewMode::landscape),
              (std::vector<BoxFrame>{{0, 0, 600, 400}, {0, 410, 600, 400}}));
    // Five: box i goes to column i mod 3, row i / 3; the first two columns hold two boxes.
    EXPECT_EQ(tileFrames(5, 920, 410, MultiViewMode::standard),
              (std::vector<BoxFrame>{{0, 0, 300, 200},
                                     {310, 0, 300, 200},
                                     {620, 0, 300, 410},
                                     {0, 210, 300, 200},
                                     {310, 210, 300, 200}}));
}

// A project whose main window stands, so its log lines reach the scripted user.
struct Project {
    Project() { s.mainWindow = &window; }
    base::ScriptedInteraction interaction;
    project::SharedStuff s{&interaction};
    project::MainWindowLink window;
    base::PrintCapture printed;

    project::Bin& addBin(const std::string& name, bool open) {
        auto bin = std::make_shared<project::Bin>(makeTable(name), &s, s.projectLayouts.baseLayout, true);
        project::Bin& ref = *bin;
        s.bins->addChild(std::make_shared<project::BinsTreeEntry>(name, std::move(bin)));
        s.bins->rebuildArray();
        ref.setSelected(open);
        return ref;
    }
};

TEST(LayoutMenu, ItemsMarkTheDefault) {
    Project p;
    auto& layouts = p.s.projectLayouts;
    layouts.baseLayout->columns = {"Name", "Tape"};
    layouts.layouts.push_back(
        std::make_shared<tables::ColumnsLayout>("Mine", std::vector<std::string>{"Tape", "Name"}));
    layouts.layouts.push_back(
        std::make_shared<tables::ColumnsLayout>("Same", std::vector<std::string>{"Name", "Tape"}));
    std::vector<std::string> titles;
    for (const auto& item : layoutMenuItems(p.s))
        titles.push_back(item.title);
    EXPECT_EQ(titles, (std::vector<std::string>{"-- [Default] Default", "-- Project Original Default --",
                                                "-- System Default --", "Mine", "Same"}));

    project::Bin& bin = p.addBin("b", true);
    p.s.activeBin = &bin;
    titles.clear();
    for (const auto& item : layoutMenuItems(p.s))
        titles.push_back(item.title);
    // The active bin uses the default, yet only the default's own entry is marked.
    EXPECT_EQ(titles[3], "-- Active Bin Layout --");
}

TEST(LayoutMenu, SetDefaultReachesBinsOnTheDefaultOnly) {
    Project p;
    project::Bin& onDefault = p.addBin("a", true);
    onDefault.layout = std::make_shared<tables::ColumnsLayout>("Default", std::vector<std::string>{"Old"});
    project::Bin& own = p.addBin("b", false);
    own.layout = std::make_shared<tables::ColumnsLayout>("Own", std::vector<std::string>{"Tape"});
    tables::ColumnsLayout chosen("Chosen", {"Name", "Start"});
    chosen.colwidths["Name"] = 120.0;

    setDefaultLayout(p.s, chosen);
    EXPECT_EQ(p.s.projectLayouts.baseLayout->columns, chosen.columns);
    EXPECT_EQ(p.s.projectLayouts.baseLayout->colwidths, chosen.colwidths);
    EXPECT_EQ(p.s.projectLayouts.baseLayout->name, "Default");
    ASSERT_TRUE(p.s.projectLayouts.lastSelectedDefault);
    EXPECT_EQ(p.s.projectLayouts.lastSelectedDefault->name, "Chosen");
    EXPECT_EQ(onDefault.layout, p.s.projectLayouts.baseLayout);
    EXPECT_EQ(own.layout->name, "Own");
    EXPECT_EQ(p.interaction.logLines().back(),
              (base::ScriptedInteraction::LogLine{"Default layout updated", true, "Applied",
                                                  NotificationType::OK}));

    auto applied = std::make_shared<tables::ColumnsLayout>("Grade", std::vector<std::string>{"ASC_SOP"});
    applyLayoutToOpenBins(p.s, applied);
    EXPECT_EQ(onDefault.layout, applied);
    EXPECT_EQ(own.layout->name, "Own");
    EXPECT_EQ(p.interaction.logLines().back().text, "Layout applied to open bins");
}

TEST(BinSaving, AleAndCsvWithLayoutColumnsAndLogLines) {
    Project p;
    TempFolder folder;
    project::Bin& bin = p.addBin("day1", false);
    bin.layout = std::make_shared<tables::ColumnsLayout>("Tape only", std::vector<std::string>{"Tape"});
    bin.table()->film_format = "35mm";

    p.s.saving_film_format = false;
    ASSERT_TRUE(saveBinAsALE(p.s, bin, (folder.path / "out.ale").string()));
    const std::string ale = readFile(folder.path / "out.ale");
    EXPECT_EQ(ale.find("FILM_FORMAT"), std::string::npos);
    EXPECT_NE(ale.find("Column\nTape\n"), std::string::npos);
    EXPECT_EQ(p.interaction.logLines().back().text, "Bin correctly saved");
    // The box is checked, but an empty project film format is none: no box is offered and no line written.
    p.s.saving_film_format = true;
    for (const auto& [projectFormat, written] : {std::pair{"", false}, std::pair{"35mm", true}}) {
        SCOPED_TRACE(projectFormat);
        p.s.film_format = projectFormat;
        EXPECT_EQ(offersFilmFormat(p.s), written);
        ASSERT_TRUE(saveBinAsALE(p.s, bin, (folder.path / "out.ale").string()));
        EXPECT_EQ(readFile(folder.path / "out.ale").find("FILM_FORMAT\t35mm") != std::string::npos, written);
    }

    EXPECT_EQ(rememberedCsvSeparator(p.s), ",");
    EXPECT_EQ(p.s.options.at("csvSeparator"), ",");
    ASSERT_TRUE(saveBinAsCSV(p.s, bin, (folder.path / "out.csv").string(), "TAB", false));
    // Names, an empty line, then the rows; no heading block and no final line feed.
    EXPECT_EQ(readFile(folder.path / "out.csv"), "Tape\n\nA001\nA001");
    EXPECT_EQ(p.interaction.logLines().back().text, "CSV Correctly saved");

    EXPECT_FALSE(saveBinAsCSV(p.s, bin, folder.str(), ",", false));
    EXPECT_EQ(p.interaction.logLines().back().text, "ERROR while saving to .csv file");
    logChooserFailure(p.s, true);
    EXPECT_EQ(p.interaction.logLines().back().text, "Operation aborted by user");
    EXPECT_FALSE(p.interaction.logLines().back().notify);
}

TEST(BinsListCommands, NewBinsAndGroupsGoWhereTheClickWas) {
    Project p;
    p.s.fps = "25";
    p.s.tlResolution = "1080";
    p.s.film_format = "35mm";
    project::Bin& first = createEmptyBin(p.s);
    EXPECT_EQ(first.table()->tablename, "bin_01");
    EXPECT_EQ(first.table()->fps, "25");
    EXPECT_EQ(first.table()->video_format, "1080");
    EXPECT_EQ(first.table()->film_format, "35mm");
    EXPECT_EQ(first.layout, p.s.projectLayouts.baseLayout);

    project::BinsTreeEntry& group = addGroup(p.s, *p.s.bins);
    EXPECT_EQ(group.name(), "Group_01");
    // A click on a bin inside the group puts the new bin beside it, in the group.
    project::Bin& inGroup = createEmptyBin(p.s, {&group, -1});
    project::Bin& beside = createEmptyBin(p.s, {group.children.front().get(), 0});
    EXPECT_EQ(inGroup.table()->tablename, "bin_02");
    ASSERT_EQ(group.children.size(), 2u);
    EXPECT_EQ(group.children[0]->bin.get(), &beside);
    EXPECT_EQ(group.children[1]->bin.get(), &inGroup);
    EXPECT_EQ(p.s.bins->toarray.size(), 3u);
    EXPECT_EQ(addGroup(p.s, *p.s.bins, {&group, -1}).name(), "Group_02");
}

TEST(BinsListCommands, HeaderClicksOrderTheTree) {
    using Mode = project::BinsTreeOrderingMode;
    EXPECT_EQ(orderingForHeader("Bin"), Mode::alphabetical);
    EXPECT_EQ(orderingForHeader("Created"), Mode::lastcreated);
    EXPECT_FALSE(orderingForHeader("Clips").has_value());

    Project p;
    p.addBin("day10", false);
    p.addBin("Day2", false);
    p.addBin("day1", false);
    auto names = [&] {
        std::vector<std::string> out;
        for (const auto& child : p.s.bins->children)
            out.push_back(child->name());
        return out;
    };
    p.s.bins->lastascending = false;
    orderBinsTree(*p.s.bins, Mode::bytag);
    EXPECT_FALSE(p.s.bins->lastascending);
    orderBinsTree(*p.s.bins, Mode::alphabetical);
    EXPECT_FALSE(p.s.bins->lastascending);
    // Names as people read them: case aside, numbers by value.
    EXPECT_EQ(names(), (std::vector<std::string>{"day1", "Day2", "day10"}));
    orderBinsTree(*p.s.bins, Mode::alphabetical);
    EXPECT_TRUE(p.s.bins->lastascending);
    EXPECT_EQ(names(), (std::vector<std::string>{"day10", "Day2", "day1"}));

    setBinsOpen(p.s, {p.s.bins.get()}, true);
    for (project::Bin* bin : p.s.bins->toarray)
        EXPECT_TRUE(bin->selected());
}

} // namespace
} // namespace lumbra::app
