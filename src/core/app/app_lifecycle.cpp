#include "app/app_lifecycle.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace lumbra::app {

namespace {

// The three answers of the question before a project goes, in the order shown.
enum CloseButton { Save = 0, DontSave = 1, Cancel = 2 };

} // namespace

AppLifecycle::AppLifecycle(base::UserInteraction& interaction, AppWindows& windows)
    : m_interaction(interaction), m_windows(windows), m_probeState(std::make_shared<ProbeState>()) {
}

AppLifecycle::~AppLifecycle() = default;

void AppLifecycle::willFinishLaunching(base::UserDefaults& defaults) {
    defaults.setBool(kFullScreenMenuItemKey, false);
}

void AppLifecycle::startPythonProbe(Probe probe) {
    if (m_probeDone.valid() || !probe) {
        return;
    }
    std::promise<void> done;
    m_probeDone = done.get_future();
    // Detached: a slow probe must neither delay the first window nor hold up the quit.
    std::thread([state = m_probeState, probe = std::move(probe), done = std::move(done)]() mutable {
        const PythonFlags flags = probe();
        state->usePython.store(flags.usePython);
        state->installedOTIO.store(flags.installedOTIO);
        done.set_value();
    }).detach();
}

PythonFlags AppLifecycle::probePython() {
    return {};
}

void AppLifecycle::waitForProbe() {
    if (m_probeDone.valid()) {
        m_probeDone.wait();
    }
}

bool AppLifecycle::showProjectChooserIfNoWindows(bool senderIsApplication) {
    if (!senderIsApplication || m_windows.windowCount() > 0) {
        return false;
    }
    m_windows.openProjectChooser();
    return true;
}

bool AppLifecycle::shouldHandleReopen() {
    if (m_windows.windowCount() == 0) {
        m_windows.openProjectChooser();
    }
    return true;
}

TerminateReply AppLifecycle::applicationShouldTerminate() {
    // The quit command of a project window has asked already; the user answers once per quit.
    const std::vector<ProjectWindow*> windows = m_windows.projectWindows();
    m_terminating =
        std::exchange(m_quitConfirmed, false) || windows.empty() || confirmProjectClose(*windows.front());
    return m_terminating ? TerminateReply::Now : TerminateReply::Cancel;
}

bool AppLifecycle::confirmProjectClose(ProjectWindow& window) {
    // Nothing to lose, nothing to ask: a save just made must not be offered again.
    const std::vector<ProjectWindow*> projects = m_windows.projectWindows();
    if (!window.hasUnsavedChanges() &&
        std::none_of(projects.begin(), projects.end(),
                     [](const ProjectWindow* p) { return p->hasUnsavedChanges(); }))
        return true;
    const base::AlertAnswer answer = m_interaction.alert({"Save before you go?",
                                                          "Do you want to Save before closing the project?",
                                                          base::AlertStyle::Informational,
                                                          {"Save", "Don't save", "Cancel"},
                                                          false});
    if (answer.button == DontSave) {
        m_windows.openProjectChooser();
        return true;
    }
    if (answer.button != Save) {
        return false;
    }
    for (ProjectWindow* project : m_windows.projectWindows()) {
        if (!project->save()) {
            m_interaction.alert(
                {"Error saving",
                 "An error while saving " + project->projectName() + " prevented Lumbra from quitting.",
                 base::AlertStyle::Informational,
                 {"OK"},
                 false});
            return false;
        }
    }
    return true;
}

bool AppLifecycle::terminateFromProjectWindow(ProjectWindow& window) {
    m_quitConfirmed = confirmProjectClose(window);
    return m_quitConfirmed;
}

} // namespace lumbra::app
