#pragma once

#include "base/notification.h"

#include <functional>
#include <string>

namespace lumbra::project {

class MainWindowLink;
class SharedStuff;

// Loads the objects of a project's folders into the project. Made for each use. Every operation
// returns false when its folder cannot be read; what it did load stays.
class ProjectLoader {
public:
    explicit ProjectLoader(SharedStuff& sharedstuff) : m_sharedstuff(sharedstuff) {}

    // The tree under `path` becomes `bins`, or with `append` its top nodes are appended to `bins`.
    bool loadBins(const std::string& path, base::Notifications* notifications, bool append);
    // The same for `smartbins`; the bins tree must stand, since smart bins take their domains from it.
    bool loadSmartbins(const std::string& path, base::Notifications* notifications, bool append);
    bool loadExportPresets(const std::string& path, base::Notifications* notifications);
    bool loadReportPresets(const std::string& path, base::Notifications* notifications);
    bool loadMapPresets(const std::string& path, base::Notifications* notifications);
    bool loadDbs(const std::string& path, base::Notifications* notifications);
    // The saved layouts under `path` are added to the project's list, which is then sorted.
    bool loadLayouts(const std::string& path, base::Notifications* notifications);
    bool loadPivots(const std::string& path, base::Notifications* notifications);
    bool loadJobs(const std::string& path, base::Notifications* notifications);

private:
    SharedStuff& m_sharedstuff;
};

// How an open ended.
enum class OpenResult {
    // The project is loaded and saved in the current layout.
    opened,
    // The user refused to update a project in the earlier layout: nothing changed.
    cancelled,
    // The project file could not be read: nothing loaded.
    unreadableProject,
    // The earlier bins could not be read: the open stopped before the main window.
    binsFailed,
    // The project is loaded, but the save that ends the opening failed (a read-only folder, a full disk).
    notSaved,
    // The project file lacks lines every project file has: it was left as it is, nothing loaded.
    damagedProject,
    // Updating the earlier layout failed to write or read back a file: the earlier folders and the
    // project file stay as they were, what the update wrote is gone, the open stopped.
    migrationFailed,
};

// What the opening asks of the application's windows; the shell fills it, tests may leave it empty.
struct OpenHooks {
    // Makes the main window for the project and shows it; null where there is no screen.
    std::function<MainWindowLink*(SharedStuff&)> makeMainWindow;
    // Closes the project chooser, once the main window stands.
    std::function<void()> closeChooser;
};

// Opens the project at `projectPath()`: its settings, trees, layouts and the other folders in
// their fixed order, the main window through the hooks, the bins that were open, and a closing save
// that leaves a project in the earlier layout in the current one. The project's `interaction` asks
// before an earlier layout is updated.
// A refused open says why in `reason`, one line, when given.
OpenResult openProject(SharedStuff& sharedstuff, const OpenHooks& hooks = {}, std::string* reason = nullptr);

} // namespace lumbra::project
