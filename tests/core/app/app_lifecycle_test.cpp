#include "app/app_lifecycle.h"
#include "base/scripted_interaction.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>

namespace lumbra::app {
namespace {

using Names = std::vector<std::string>;

// A project window that records its saves into a log shared by all fakes, to check the order.
class FakeProject final : public ProjectWindow {
public:
    FakeProject(std::string name, bool saveSucceeds, Names& saveLog)
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
    Names& m_saveLog;
};

// The application's windows: `otherWindows` that are no project (the chooser), then the projects.
struct FakeWindows final : AppWindows {
    int windowCount() const override { return otherWindows + static_cast<int>(projects.size()); }
    std::vector<ProjectWindow*> projectWindows() const override {
        std::vector<ProjectWindow*> windows;
        for (const auto& project : projects)
            windows.push_back(project.get());
        return windows;
    }
    void openProjectChooser() override { ++chooserOpened; }
    void add(const std::string& name, bool saveSucceeds = true) {
        projects.push_back(std::make_unique<FakeProject>(name, saveSucceeds, saveLog));
    }

    int otherWindows = 0;
    std::vector<std::unique_ptr<FakeProject>> projects;
    int chooserOpened = 0;
    Names saveLog;
};

TEST(AppLifecycle, QuitAnswers) {
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
        base::ScriptedInteraction interaction;
        FakeWindows windows;
        windows.otherWindows = 1;
        for (const auto& name : c.projects)
            windows.add(name, !c.failing || name != c.failing);
        for (const auto& project : windows.projects)
            project->unsaved = c.unsaved;
        for (const auto& answer : c.answers)
            interaction.queueAlert(answer);
        AppLifecycle lifecycle(interaction, windows);
        EXPECT_EQ(lifecycle.applicationShouldTerminate(), c.reply);
        EXPECT_EQ(lifecycle.terminating(), c.reply == Now);
        EXPECT_EQ(windows.saveLog, c.saved);
        EXPECT_EQ(windows.chooserOpened, c.chooserOpened);
        EXPECT_EQ(interaction.unexpected(), 0);
        const auto& alerts = interaction.alerts();
        ASSERT_EQ(alerts.size(), c.answers.size());
        if (!alerts.empty()) {
            EXPECT_EQ(alerts[0], (base::AlertRequest{"Save before you go?",
                                                     "Do you want to Save before closing the project?",
                                                     base::AlertStyle::Informational,
                                                     {"Save", "Don't save", "Cancel"},
                                                     false}));
        }
        if (c.failing) {
            EXPECT_EQ(alerts[1].title, "Error saving");
            EXPECT_EQ(alerts[1].text,
                      "An error while saving " + std::string(c.failing) + " prevented Lumbra from quitting.");
        }
    }
}

TEST(AppLifecycle, AQuitFromAProjectWindowAnswersThatQuitOnly) {
    base::ScriptedInteraction interaction;
    FakeWindows windows;
    windows.add("First");
    AppLifecycle lifecycle(interaction, windows);
    interaction.queueAlert("Save");
    ASSERT_TRUE(lifecycle.terminateFromProjectWindow(*windows.projects[0]));
    EXPECT_FALSE(lifecycle.terminating());
    EXPECT_EQ(lifecycle.applicationShouldTerminate(), TerminateReply::Now);
    EXPECT_EQ(interaction.alerts().size(), 1u);
    EXPECT_EQ(windows.saveLog, Names{"First"});
    // The next quit asks again, and so does the one after a cancelled quit from the window.
    for (int i = 0; i < 3; ++i)
        interaction.queueAlert("Cancel");
    EXPECT_EQ(lifecycle.applicationShouldTerminate(), TerminateReply::Cancel);
    EXPECT_FALSE(lifecycle.terminateFromProjectWindow(*windows.projects[0]));
    EXPECT_EQ(lifecycle.applicationShouldTerminate(), TerminateReply::Cancel);
    EXPECT_EQ(interaction.alerts().size(), 4u);
}

TEST(AppLifecycle, ChooserOpensOnlyForTheApplicationWithNoWindowAndReopenAlwaysAnswers) {
    struct Case {
        bool senderIsApplication;
        int otherWindows, projects;
        bool opens;
    };
    for (const Case& c : {Case{true, 0, 0, true}, Case{true, 1, 0, false}, Case{true, 0, 1, false},
                          Case{false, 0, 0, false}}) {
        SCOPED_TRACE(testing::Message() << c.senderIsApplication << c.otherWindows << c.projects);
        base::ScriptedInteraction interaction;
        FakeWindows windows;
        windows.otherWindows = c.otherWindows;
        for (int i = 0; i < c.projects; ++i)
            windows.add("P");
        AppLifecycle lifecycle(interaction, windows);
        EXPECT_EQ(lifecycle.showProjectChooserIfNoWindows(c.senderIsApplication), c.opens);
        // Reopen always answers, and opens the chooser too whenever no window stands.
        EXPECT_TRUE(lifecycle.shouldHandleReopen());
        EXPECT_EQ(windows.chooserOpened, (c.opens ? 2 : 0) + (c.senderIsApplication ? 0 : 1));
    }
}

TEST(AppLifecycle, ProbeRunsInTheBackgroundAndWindowsTakeItsResultWhenKey) {
    base::ScriptedInteraction interaction;
    FakeWindows windows;
    AppLifecycle lifecycle(interaction, windows);
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    lifecycle.startPythonProbe([released] {
        released.wait();
        return PythonFlags{true, true};
    });
    // The start went on while the probe is blocked; an early reader sees false.
    windows.add("First");
    lifecycle.projectWindowBecameKey(*windows.projects[0]);
    EXPECT_EQ(windows.projects[0]->received, (PythonFlags{false, false}));
    release.set_value();
    lifecycle.waitForProbe();
    lifecycle.projectWindowBecameKey(*windows.projects[0]);
    EXPECT_EQ(windows.projects[0]->received, (PythonFlags{true, true}));

    // This build's probe finds no Python.
    AppLifecycle plain(interaction, windows);
    plain.startPythonProbe(&AppLifecycle::probePython);
    plain.waitForProbe();
    EXPECT_EQ(plain.pythonFlags(), (PythonFlags{false, false}));
}

TEST(AppLifecycle, AProbeThatOutlivesTheLifecycleIsHarmless) {
    base::ScriptedInteraction interaction;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::promise<void> finished;
    std::future<void> probeEnded = finished.get_future();
    {
        FakeWindows windows;
        AppLifecycle shortLived(interaction, windows);
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
