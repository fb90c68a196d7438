#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
using lumbra::base::NotificationData;
using lumbra::base::NotificationType;
using lumbra::base::PrintCapture;
using lumbra::base::ScriptedInteraction;
using lumbra::tables::ALEEntry;
using lumbra::tables::EntryPtr;

namespace {

struct CountingDelegate : SharedStuffDelegate {
    void reloadBinsLists() override { ++reloads; }
    int reloads = 0;
};

} // namespace

TEST(SharedStuff, ProjectPathNeedsFolderAndName) {
    SharedStuff s;
    s.currentFolder = "/work";
    EXPECT_FALSE(s.projectPath());
    s.projectName = "Film";
    EXPECT_EQ(s.projectPath(), "/work/Film");
}

TEST(SharedStuff, AddingABinEndsWithTheDirtyRule) {
    for (bool autosave : {false, true}) {
        SCOPED_TRACE(autosave ? "autosave" : "no autosave");
        FilmProject p;
        p.s.autosave = autosave;
        CountingDelegate delegate;
        p.s.delegates.push_back(&delegate);
        TreeNode group = makeGroup("Group_01");
        p.s.bins->addChild(group);
        PrintCapture quiet;
        p.s.addBin(makeBin("bin_01", &p.s), group.get());
        EXPECT_EQ(namesOf(p.s.bins->toarray), Names{"bin_01"});
        EXPECT_EQ(group->children.size(), 1u);
        EXPECT_EQ(delegate.reloads, 1);
        EXPECT_EQ(p.s.something_to_save, !autosave);
        EXPECT_EQ(fs::exists(p.folder() / "tarelproject"), autosave);
    }
}

TEST(SharedStuff, OpenBinsAndAllBinsListPlainBinsFirst) {
    SharedStuff s;
    s.autosave = false;
    auto a = makeBin("A", &s), b = makeBin("B", &s), c = makeBin("C", &s);
    a->setSelected(true);
    c->setSelected(true);
    s.addBin(a);
    TreeNode group = makeGroup("Group_01");
    s.bins->addChild(group);
    s.addBin(b, group.get());
    s.addBin(c, group.get());
    s.addSmartbin(makeSmartLeaf("S", 0, &s)->bin);
    EXPECT_EQ(namesOf(s.openBins()), (Names{"A", "C", "S"}));
    EXPECT_EQ(namesOf(s.allBins()), (Names{"A", "B", "C", "S"}));
    // A closed box is no longer active.
    s.activeBin = a.get();
    s.showBox(*a, false);
    EXPECT_EQ(s.activeBin, nullptr);
    // The reader gives every table the colour tag column.
    s.projectLayouts.layouts.push_back(
        std::make_shared<lumbra::tables::ColumnsLayout>("L", Names{"Scene", "Name"}));
    s.projectLayouts.baseLayout->columns = {"Clip", "Tape"};
    EXPECT_EQ(s.allColumns()._data, (Names{"Clip", "Lumbra_Color_Tag", "Name", "Scene", "Tape"}));
}

TEST(SharedStuff, SmartBinsTestThePlainBinsAndChangedRows) {
    SharedStuff s;
    s.autosave = false;
    PrintCapture capture;
    s.addSmartbin(makeBin("plain", &s));
    EXPECT_TRUE(s.smartbins->children.empty());
    EXPECT_FALSE(s.something_to_save);
    s.addBin(makeBin("A", &s));
    s.addBin(makeBin("B", &s));
    auto smart = makeSmartLeaf("S", 0, &s)->bin;
    s.addSmartbin(smart);
    RecordingSmartTable* table = &smartTable(*smart);
    EXPECT_EQ(namesOf(table->bins), (Names{"A", "B"}));
    EXPECT_EQ(namesOf(s.smartbins->toarray), Names{"S"});
    EXPECT_TRUE(s.something_to_save);

    Bin& a = *s.bins->toarray[0];
    table->bins.clear();
    s.refreshSmartbins(a, true);
    EXPECT_EQ(namesOf(table->bins), Names{"A"});
    const EntryPtr row = a.table()->data.at(0);
    s.rowChanged(*row);
    ALEEntry loose;
    s.rowChanged(loose);
    EXPECT_EQ(table->rows, std::vector<const ALEEntry*>{row.get()});
}

TEST(SharedStuff, AJobOfTheSameNameIsOverwrittenOnlyWhenTheUserSays) {
    ScriptedInteraction user;
    SharedStuff s(&user);
    EXPECT_TRUE(s.addJob({"Export"}));
    EXPECT_TRUE(s.addJob({"Report"}));
    user.queueAlert("Cancel");
    EXPECT_FALSE(s.addJob({"Export"}));
    ASSERT_EQ(user.alerts().size(), 1u);
    EXPECT_EQ(user.alerts()[0].title, "Delete Existing Job?");
    EXPECT_EQ(user.alerts()[0].text, "A job named Export already exists. Overwrite it?");
    EXPECT_EQ(user.alerts()[0].buttons, (Names{"Overwrite", "Cancel"}));
    user.queueAlert("Overwrite");
    EXPECT_TRUE(s.addJob({"Export"}));
    auto jobNames = [](const SharedStuff& project) {
        Names out;
        for (const auto& job : project.tareljobs)
            out.push_back(job.name);
        return out;
    };
    EXPECT_EQ(jobNames(s), (Names{"Report", "Export"}));
    // Nobody to ask: the job stays as it was. Removing takes the first of that name.
    SharedStuff alone;
    EXPECT_TRUE(alone.addJob({"A"}));
    EXPECT_FALSE(alone.addJob({"A"}));
    alone.tareljobs = {{"A"}, {"B"}, {"A"}};
    EXPECT_TRUE(alone.removeJob("A"));
    EXPECT_FALSE(alone.removeJob("C"));
    EXPECT_EQ(jobNames(alone), (Names{"B", "A"}));
}

TEST(SharedStuff, LogLinesWaitForTheMainWindow) {
    ScriptedInteraction user;
    SharedStuff s(&user);
    PrintCapture capture;
    s.addLog("loaded", true, "Open", NotificationType::WARNING);
    s.addLog("quiet", false, "", NotificationType::OK);
    EXPECT_TRUE(capture.contains("loaded"));
    EXPECT_TRUE(user.logLines().empty());
    const std::vector<NotificationData> loaded{{"Open", "loaded", NotificationType::WARNING}};
    EXPECT_EQ(s.bufferedNotifications, loaded);
    MainWindowLink window;
    s.mainWindow = &window;
    s.addLog("saved", true, "Save", NotificationType::OK);
    EXPECT_EQ(user.logLines().size(), 1u);
    s.flushBufferedNotifications();
    EXPECT_EQ(user.notifications(), loaded);
    EXPECT_TRUE(s.bufferedNotifications.empty());
}

TEST(SharedStuff, ProjectTokens) {
    SharedStuff s;
    s.projectName = "Film";
    s.fps = "25";
    s.userDefinedProperties = {{"director", "Ann"}};
    std::tm day{};
    day.tm_year = 2025 - 1900;
    day.tm_mon = 2;
    day.tm_mday = 7;
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"projname", "Film"},       {"date", "07_03_2025"},    {"day", "07"},    {"month", "03"},
        {"year", "2025"},           {"projfps", "25"},         {"projtape", ""}, {"director", "Ann"},
        {"Director", std::nullopt}, {"binname", std::nullopt},
    };
    for (const auto& [token, expected] : cases) {
        SCOPED_TRACE(token);
        EXPECT_EQ(s.interpretProjectToken(token, day), expected);
    }
}
