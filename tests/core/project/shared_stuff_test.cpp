#include "base/console.h"
#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "project/shared_stuff.h"

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

// A smart table that records what it was asked to test.
class RecordingSmartTable : public lumbra::tables::ALETable, public SmartTableLink {
public:
    [[nodiscard]] bool hasDomain() const override { return false; }
    [[nodiscard]] bool domainHolds(const BinsTreeEntry&) const override { return false; }
    void reEvaluate(const EntryPtr& entry) override { rows.push_back(entry.get()); }
    void reEvaluateAll(Bin& bin) override { bins.push_back(bin.displayName()); }
    void resolveDomain(BinsTreeEntry&) override {}

    std::vector<const ALEEntry*> rows;
    std::vector<std::string> bins;
};

std::shared_ptr<Bin> makeSmartbin(const std::string& name, SharedStuff& s, RecordingSmartTable** table) {
    auto smart = std::make_unique<RecordingSmartTable>();
    smart->tablename = name;
    *table = smart.get();
    return std::make_shared<Bin>(std::move(smart), &s, nullptr, true);
}

struct CountingDelegate : SharedStuffDelegate {
    void reloadBinsLists() override { ++reloads; }
    int reloads = 0;
};

std::vector<std::string> names(const std::vector<Bin*>& bins) {
    std::vector<std::string> out;
    for (const Bin* bin : bins)
        out.push_back(bin->displayName());
    return out;
}

} // namespace

TEST(SharedStuff, ProjectPathNeedsFolderAndName) {
    SharedStuff s;
    EXPECT_FALSE(s.projectPath());
    s.currentFolder = "/work";
    EXPECT_FALSE(s.projectPath());
    s.projectName = "Film";
    EXPECT_EQ(s.projectPath(), "/work/Film");
}

TEST(SharedStuff, AddingABinEndsWithTheDirtyRule) {
    TempFolder dir;
    for (bool autosave : {false, true}) {
        SCOPED_TRACE(autosave ? "autosave" : "no autosave");
        SharedStuff s;
        s.currentFolder = dir.str();
        s.projectName = autosave ? "Saved" : "Marked";
        s.autosave = autosave;
        CountingDelegate delegate;
        s.delegates.push_back(&delegate);
        TreeNode group = makeGroup("Group_01");
        s.bins->addChild(group);
        PrintCapture quiet;
        s.addBin(makeBin("bin_01", &s), group.get());

        EXPECT_EQ(names(s.bins->toarray), std::vector<std::string>{"bin_01"});
        EXPECT_EQ(group->children.size(), 1u);
        EXPECT_EQ(delegate.reloads, 1);
        EXPECT_EQ(s.something_to_save, !autosave);
        EXPECT_EQ(fs::exists(dir.path / *s.projectName / "tarelproject"), autosave);
    }
}

TEST(SharedStuff, OpenBinsAndAllBinsListPlainBinsFirst) {
    SharedStuff s;
    s.autosave = false;
    auto a = makeBin("A", &s);
    auto b = makeBin("B", &s);
    auto c = makeBin("C", &s);
    a->setSelected(true);
    c->setSelected(true);
    s.addBin(a);
    TreeNode group = makeGroup("Group_01");
    s.bins->addChild(group);
    s.addBin(b, group.get());
    s.addBin(c, group.get());
    RecordingSmartTable* table = nullptr;
    s.addSmartbin(makeSmartbin("S", s, &table));

    EXPECT_EQ(names(s.openBins()), (std::vector<std::string>{"A", "C", "S"}));
    EXPECT_EQ(names(s.allBins()), (std::vector<std::string>{"A", "B", "C", "S"}));
}

// The reader gives every table the colour tag column.
TEST(SharedStuff, AllColumnsJoinsBinsLayoutsAndTheDefaultSorted) {
    SharedStuff s;
    s.autosave = false;
    s.addBin(makeBin("A", &s));
    s.projectLayouts.layouts.push_back(
        std::make_shared<lumbra::tables::ColumnsLayout>("L", std::vector<std::string>{"Scene", "Name"}));
    s.projectLayouts.baseLayout->columns = {"Clip", "Tape"};
    EXPECT_EQ(s.allColumns()._data,
              (std::vector<std::string>{"Clip", "Lumbra_Color_Tag", "Name", "Scene", "Tape"}));
}

TEST(SharedStuff, SmartBinsTestThePlainBinsAndChangedRows) {
    SharedStuff s;
    s.autosave = false;
    s.addBin(makeBin("A", &s));
    s.addBin(makeBin("B", &s));
    RecordingSmartTable* table = nullptr;
    auto smartbin = makeSmartbin("S", s, &table);
    s.addSmartbin(smartbin);
    EXPECT_EQ(table->bins, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(names(s.smartbins->toarray), std::vector<std::string>{"S"});
    EXPECT_TRUE(s.something_to_save);

    Bin& a = *s.bins->toarray[0];
    table->bins.clear();
    s.refreshSmartbins(a, true);
    EXPECT_EQ(table->bins, std::vector<std::string>{"A"});

    const EntryPtr row = a.table()->data.at(0);
    s.rowChanged(*row);
    EXPECT_EQ(table->rows, std::vector<const ALEEntry*>{row.get()});
    ALEEntry loose;
    s.rowChanged(loose);
    EXPECT_EQ(table->rows.size(), 1u);
}

TEST(SharedStuff, APlainBinNeverEntersTheSmartTree) {
    SharedStuff s;
    s.autosave = false;
    PrintCapture capture;
    s.addSmartbin(makeBin("A", &s));
    EXPECT_TRUE(s.smartbins->children.empty());
    EXPECT_FALSE(s.something_to_save);
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
    EXPECT_EQ(user.alerts()[0].buttons, (std::vector<std::string>{"Overwrite", "Cancel"}));
    user.queueAlert("Overwrite");
    EXPECT_TRUE(s.addJob({"Export"}));
    ASSERT_EQ(s.tareljobs.size(), 2u);
    EXPECT_EQ(s.tareljobs[0].name, "Report");
    EXPECT_EQ(s.tareljobs[1].name, "Export");

    SharedStuff alone;
    EXPECT_TRUE(alone.addJob({"Export"}));
    EXPECT_FALSE(alone.addJob({"Export"}));
    EXPECT_EQ(alone.tareljobs.size(), 1u);
}

TEST(SharedStuff, RemoveJobTakesTheFirstOfThatName) {
    SharedStuff s;
    s.tareljobs = {{"A"}, {"B"}, {"A"}};
    EXPECT_TRUE(s.removeJob("A"));
    EXPECT_FALSE(s.removeJob("C"));
    ASSERT_EQ(s.tareljobs.size(), 2u);
    EXPECT_EQ(s.tareljobs[0].name, "B");
    EXPECT_EQ(s.tareljobs[1].name, "A");
}

TEST(SharedStuff, LogLinesWaitForTheMainWindow) {
    ScriptedInteraction user;
    SharedStuff s(&user);
    PrintCapture capture;
    s.addLog("loaded", true, "Open", NotificationType::WARNING);
    s.addLog("quiet", false, "", NotificationType::OK);
    EXPECT_TRUE(capture.contains("loaded"));
    EXPECT_TRUE(user.logLines().empty());
    EXPECT_EQ(s.bufferedNotifications,
              std::vector<NotificationData>{NotificationData("Open", "loaded", NotificationType::WARNING)});

    MainWindowLink window;
    s.mainWindow = &window;
    s.addLog("saved", true, "Save", NotificationType::OK);
    EXPECT_EQ(user.logLines().size(), 1u);
    s.flushBufferedNotifications();
    EXPECT_EQ(user.notifications(),
              (std::vector<NotificationData>{{"Open", "loaded", NotificationType::WARNING}}));
    EXPECT_TRUE(s.bufferedNotifications.empty());
}

TEST(SharedStuff, AClosedBoxIsNoLongerActive) {
    SharedStuff s;
    auto bin = makeBin("A", &s);
    s.activeBin = bin.get();
    s.showBox(*bin, false);
    EXPECT_EQ(s.activeBin, nullptr);
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
