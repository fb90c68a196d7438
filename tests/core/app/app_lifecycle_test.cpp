#include "app/app_lifecycle.h"
#include "base/scripted_interaction.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>

namespace lumbra::app {
namespace {

// A project window that records its saves into a log shared by all fakes, to check the order.
class FakeProject final : public ProjectWindow {
public:
    FakeProject(std::string name, bool saveSucceeds, std::vector<std::string>& saveLog)
        : m_name(std::move(name)), m_saveSucceeds(saveSucceeds), m_saveLog(saveLog) {}
    std::string projectName() const override { return m_name; }
    bool save() override {
        m_saveLog.push_back(m_name);
        return m_saveSucceeds;
    }
    void setPythonFlags(PythonFlags flags) override { received = flags; }
    bool hasUnsavedChanges() const override { return unsaved; }

    std::optional<PythonFlags> received;
    bool unsaved = true;

private:
    std::string m_name;
    bool m_saveSucceeds;
    std::vector<std::string>& m_saveLog;
};

class FakeWindows final : public AppWindows {
public:
    int windowCount() const override { return otherWindows + static_cast<int>(projects.size()); }
    std::vector<ProjectWindow*> projectWindows() const override {
        std::vector<ProjectWindow*> windows;
        for (const auto& project : projects) {
            windows.push_back(project.get());
        }
        return windows;
    }
    void openProjectChooser() override { ++chooserOpened; }

    int otherWindows = 0;
    std::vector<std::unique_ptr<FakeProject>> projects;
    int chooserOpened = 0;
};

const base::AlertRequest kSaveQuestion{"Save before you go?",
                                       "Do you want to Save before closing the project?",
                                       base::AlertStyle::Informational,
                                       {"Save", "Don't save", "Cancel"},
                                       false};

class AppLifecycleTest : public ::testing::Test {
protected:
    void addProject(const std::string& name, bool saveSucceeds = true) {
        windows.projects.push_back(std::make_unique<FakeProject>(name, saveSucceeds, saveLog));
    }

    base::ScriptedInteraction interaction;
    FakeWindows windows;
    std::vector<std::string> saveLog;
    AppLifecycle lifecycle{interaction, windows};
};

TEST_F(AppLifecycleTest, QuitAnswers) {
    using Names = std::vector<std::string>;
    using enum TerminateReply;
    struct Case {
        const char* name;
        Names projects;
        const char* failing; // the project whose save fails, or none
        Names answers;
        TerminateReply reply;
        Names saved;
        int chooserOpened;
        bool unsaved = true;
    };
    // After a save the chooser is left to the next activation; after "Don't save" it opens at once.
    const Case cases[] = {
        {"no project asks nothing", {}, nullptr, {}, Now, {}, 0},
        {"save saves in window order", {"First", "Second"}, nullptr, {"Save"}, Now, {"First", "Second"}, 0},
        {"failed save stops there", {"First", "Second"}, "First", {"Save", "OK"}, Cancel, {"First"}, 0},
        {"a later failure names it", {"First", ""}, "", {"Save", "OK"}, Cancel, {"First", ""}, 0},
        {"don't save writes nothing", {"First", "Second"}, nullptr, {"Don't save"}, Now, {}, 1},
        {"cancel changes nothing", {"First"}, nullptr, {"Cancel"}, Cancel, {}, 0},
        {"nothing unsaved asks nothing", {"First", "Second"}, nullptr, {}, Now, {}, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        base::ScriptedInteraction caseInteraction;
        FakeWindows caseWindows;
        caseWindows.otherWindows = 1; // the chooser is no project window
        Names log;
        for (const auto& name : c.projects)
            caseWindows.projects.push_back(
                std::make_unique<FakeProject>(name, !c.failing || name != c.failing, log));
        for (const auto& project : caseWindows.projects)
            project->unsaved = c.unsaved;
        for (const auto& answer : c.answers)
            caseInteraction.queueAlert(answer);
        AppLifecycle caseLifecycle(caseInteraction, caseWindows);
        EXPECT_EQ(caseLifecycle.applicationShouldTerminate(), c.reply);
        EXPECT_EQ(caseLifecycle.terminating(), c.reply == Now);
        EXPECT_EQ(log, c.saved);
        EXPECT_EQ(caseWindows.chooserOpened, c.chooserOpened);
        EXPECT_EQ(caseInteraction.unexpected(), 0);
        const auto& alerts = caseInteraction.alerts();
        ASSERT_EQ(alerts.size(), c.answers.size());
        if (!alerts.empty()) {
            EXPECT_EQ(alerts[0], kSaveQuestion);
        }
        if (c.failing) {
            EXPECT_EQ(alerts[1].title, "Error saving");
            EXPECT_EQ(alerts[1].text,
                      "An error while saving " + std::string(c.failing) + " prevented Lumbra from quitting.");
            EXPECT_EQ(alerts[1].buttons, Names{"OK"});
        }
    }
}

TEST_F(AppLifecycleTest, QuitFromAProjectWindowAsksOnce) {
    addProject("First");
    interaction.queueAlert("Save");
    ASSERT_TRUE(lifecycle.terminateFromProjectWindow(*windows.projects[0]));
    EXPECT_FALSE(lifecycle.terminating());
    EXPECT_EQ(lifecycle.applicationShouldTerminate(), TerminateReply::Now);
    EXPECT_TRUE(lifecycle.terminating());
    EXPECT_EQ(interaction.alerts().size(), 1u);
    EXPECT_EQ(saveLog, (std::vector<std::string>{"First"}));
    // The answer covers that one quit only: the next quit asks again.
    interaction.queueAlert("Cancel");
    EXPECT_EQ(lifecycle.applicationShouldTerminate(), TerminateReply::Cancel);
    EXPECT_EQ(interaction.alerts().size(), 2u);

    // A cancelled quit from the window leaves the next quit asking too.
    interaction.queueAlert("Cancel");
    EXPECT_FALSE(lifecycle.terminateFromProjectWindow(*windows.projects[0]));
    interaction.queueAlert("Cancel");
    EXPECT_EQ(lifecycle.applicationShouldTerminate(), TerminateReply::Cancel);
    EXPECT_EQ(interaction.alerts().size(), 4u);
}

TEST_F(AppLifecycleTest, ChooserOpensOnlyForTheApplicationWithNoWindow) {
    struct Case {
        const char* name;
        bool senderIsApplication;
        int otherWindows;
        int projects;
        bool opens;
    };
    const Case cases[] = {
        {"application, no window", true, 0, 0, true},
        {"application, chooser open", true, 1, 0, false},
        {"application, project open", true, 0, 1, false},
        {"other sender, no window", false, 0, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FakeWindows caseWindows;
        caseWindows.otherWindows = c.otherWindows;
        std::vector<std::string> log;
        for (int i = 0; i < c.projects; ++i) {
            caseWindows.projects.push_back(std::make_unique<FakeProject>("P", true, log));
        }
        AppLifecycle caseLifecycle(interaction, caseWindows);
        EXPECT_EQ(caseLifecycle.showProjectChooserIfNoWindows(c.senderIsApplication), c.opens);
        EXPECT_EQ(caseWindows.chooserOpened, c.opens ? 1 : 0);
    }
}

TEST_F(AppLifecycleTest, ReopenAlwaysAnswersTrueAndOpensTheChooserOnlyWithNoWindow) {
    EXPECT_TRUE(lifecycle.shouldHandleReopen());
    EXPECT_EQ(windows.chooserOpened, 1);
    windows.otherWindows = 1;
    EXPECT_TRUE(lifecycle.shouldHandleReopen());
    EXPECT_EQ(windows.chooserOpened, 1);
}

TEST_F(AppLifecycleTest, LaunchTurnsTheFullScreenMenuEntryOff) {
    base::MemoryUserDefaults defaults;
    defaults.setBool(kFullScreenMenuItemKey, true);
    lifecycle.willFinishLaunching(defaults);
    EXPECT_EQ(defaults.stringValue(kFullScreenMenuItemKey), "0");
}

TEST_F(AppLifecycleTest, ProbeRunsInTheBackgroundAndWindowsTakeItsResultWhenKey) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    lifecycle.startPythonProbe([released] {
        released.wait();
        return PythonFlags{true, true};
    });
    // The start went on while the probe is blocked; an early reader sees false.
    addProject("First");
    lifecycle.projectWindowBecameKey(*windows.projects[0]);
    EXPECT_EQ(windows.projects[0]->received, (PythonFlags{false, false}));

    release.set_value();
    lifecycle.waitForProbe();
    EXPECT_TRUE(lifecycle.usePython());
    lifecycle.projectWindowBecameKey(*windows.projects[0]);
    EXPECT_EQ(windows.projects[0]->received, (PythonFlags{true, true}));
}

TEST_F(AppLifecycleTest, TheProbeOfThisBuildFindsNoPython) {
    lifecycle.startPythonProbe(&AppLifecycle::probePython);
    lifecycle.waitForProbe();
    EXPECT_FALSE(lifecycle.usePython());
    EXPECT_FALSE(lifecycle.installedOTIO());
}

TEST_F(AppLifecycleTest, AProbeThatOutlivesTheLifecycleIsHarmless) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::promise<void> finished;
    std::future<void> probeEnded = finished.get_future();
    {
        FakeWindows shortWindows;
        AppLifecycle shortLived(interaction, shortWindows);
        shortLived.startPythonProbe([released, &finished] {
            released.wait();
            finished.set_value();
            return PythonFlags{true, false};
        });
    }
    release.set_value();
    EXPECT_EQ(probeEnded.wait_for(std::chrono::seconds(5)), std::future_status::ready);
}

} // namespace
} // namespace lumbra::app
