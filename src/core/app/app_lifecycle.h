#pragma once

#include "base/user_defaults.h"
#include "base/user_interaction.h"

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

namespace lumbra::app {

// The user default that keeps the full-screen entry out of every menu.
inline constexpr const char* kFullScreenMenuItemKey = "NSFullScreenMenuItemEverywhere";

// What the Python probe found; a reader that comes before the probe ends sees both false.
struct PythonFlags {
    bool usePython = false;
    bool installedOTIO = false;

    bool operator==(const PythonFlags&) const = default;
};

// An open project as its main window shows it.
class ProjectWindow {
public:
    virtual ~ProjectWindow() = default;
    // Empty when the project has no name yet.
    [[nodiscard]] virtual std::string projectName() const = 0;
    // True when the project's folder was written.
    virtual bool save() = 0;
    // True when something changed since the last save; a window that cannot tell says so.
    [[nodiscard]] virtual bool hasUnsavedChanges() const { return true; }
    // Takes the probe's result into the project, each time the window becomes key.
    virtual void setPythonFlags(PythonFlags flags) = 0;
};

// The application's windows, as the lifecycle rules need them.
class AppWindows {
public:
    virtual ~AppWindows() = default;
    // Every window of the application, of any kind, on screen or minimised.
    [[nodiscard]] virtual int windowCount() const = 0;
    // The project windows, in the application's window order.
    [[nodiscard]] virtual std::vector<ProjectWindow*> projectWindows() const = 0;
    // Shows the project chooser, as the chooser menu entry does.
    virtual void openProjectChooser() = 0;
};

enum class TerminateReply { Now, Cancel };

// The rules of start, reopen and quit, shared by every window of the process.
class AppLifecycle {
public:
    using Probe = std::function<PythonFlags()>;

    AppLifecycle(base::UserInteraction& interaction, AppWindows& windows);
    ~AppLifecycle();
    AppLifecycle(const AppLifecycle&) = delete;
    AppLifecycle& operator=(const AppLifecycle&) = delete;

    // Before the first window: the full-screen menu entry is turned off.
    void willFinishLaunching(base::UserDefaults& defaults);
    // Starts the probe on its own thread and returns at once; a second call does nothing.
    void startPythonProbe(Probe probe);
    // The probe of this build: it finds no Python, so the exchange formats stay off.
    [[nodiscard]] static PythonFlags probePython();
    // Blocks until a started probe has ended; returns at once when none was started.
    void waitForProbe();

    [[nodiscard]] bool usePython() const noexcept { return m_probeState->usePython.load(); }
    [[nodiscard]] bool installedOTIO() const noexcept { return m_probeState->installedOTIO.load(); }
    [[nodiscard]] PythonFlags pythonFlags() const noexcept { return {usePython(), installedOTIO()}; }
    // A project window became key: it copies the probe's current result.
    void projectWindowBecameKey(ProjectWindow& window) const { window.setPythonFlags(pythonFlags()); }

    // Opens the chooser when the sender is the application and no window exists; true when it did.
    bool showProjectChooserIfNoWindows(bool senderIsApplication);
    // The application was reopened: with no window the chooser opens. The answer is always true.
    bool shouldHandleReopen();
    // Asks the first project window, if any, whether the application may end.
    [[nodiscard]] TerminateReply applicationShouldTerminate();
    // Save, don't save or cancel before a project window goes; true when it may go.
    bool confirmProjectClose(ProjectWindow& window);
    // True once a quit was allowed: the windows it closes go without asking again.
    [[nodiscard]] bool terminating() const noexcept { return m_terminating; }
    // The quit command of a project window; true when the application should now be asked to end.
    bool terminateFromProjectWindow(ProjectWindow& window);

private:
    base::UserInteraction& m_interaction;
    AppWindows& m_windows;
    // Shared with the detached probe thread, so a probe that outlives the application writes safely.
    struct ProbeState {
        std::atomic<bool> usePython{false};
        std::atomic<bool> installedOTIO{false};
    };
    std::shared_ptr<ProbeState> m_probeState;
    std::future<void> m_probeDone;
    bool m_quitConfirmed = false;
    bool m_terminating = false;
};

} // namespace lumbra::app
