#include "project/project_loader.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "project/bins_tree_loader.h"
#include "project/db_saver.h"
#include "project/interrupted_writes.h"
#include "project/legacy_readers.h"
#include "project/project_file.h"
#include "project/project_saver.h"
#include "project/shared_stuff.h"
#include "tables/db_table.h"
#include "tables/layouts_loader.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::Notifications;
using base::printLine;

namespace {

bool exists(const std::string& path) {
    std::error_code ec;
    return fs::exists(path, ec);
}

bool listable(const std::string& path) {
    std::error_code ec;
    fs::directory_iterator it(path, ec);
    return !ec;
}

// The top nodes of a loaded tree join the project's tree; one rebuild at the end gives the same
// arrays as a rebuild after each, without walking the tree once per node.
void appendChildren(BinsTreeEntry& tree, const TreeNode& loaded) {
    for (auto& child : loaded->children)
        tree.children.push_back(child);
    tree.rebuildArray();
}

// The folders that an open in the earlier layout leaves behind, and which of them must stay.
class LegacyFolders {
public:
    void migrated(std::string path) { m_remove.push_back(std::move(path)); }
    // A folder whose reading printed a failure stays, so that what could not be taken is not lost.
    void keep(std::string path) { m_keep.push_back(std::move(path)); }

    // Whether the open is updating a project in the earlier layout.
    [[nodiscard]] bool updating(const fs::path& project) const {
        return !m_remove.empty() || exists((project / "bins").string()) ||
               exists((project / "smartbins").string());
    }

    void removeAll(const fs::path& project) {
        m_remove.push_back((project / "bins").string());
        m_remove.push_back((project / "smartbins").string());
        for (const auto& path : m_remove) {
            if (std::find(m_keep.begin(), m_keep.end(), path) != m_keep.end())
                continue;
            std::error_code ec;
            fs::remove_all(path, ec);
        }
    }

private:
    std::vector<std::string> m_remove;
    std::vector<std::string> m_keep;
};

// A flat folder of databases or presets in the earlier layout. No reader for these objects exists
// in this build, so a folder that holds anything stays on disk rather than being migrated to nothing.
void readLegacyObjects(const std::string& path, const std::string& failure, LegacyFolders& legacy) {
    if (!exists(path))
        return;
    auto content = listLegacyFolder(path);
    if (!content) {
        printLine(failure + path);
        return;
    }
    if (content->files == 0 && content->groups == 0)
        legacy.migrated(path);
}

// Steps 3 and 10: the earlier flat folder or the earlier nested folder, then the current one.
// False only when the earlier flat folder could not be read at all.
bool openTree(SharedStuff& sharedstuff, const fs::path& project, bool smart, const ProjectFileNotes& notes,
              LegacyFolders& legacy) {
    Notifications* buffered = &sharedstuff.bufferedNotifications;
    ProjectLoader loader(sharedstuff);
    const std::string failure =
        smart ? "ERROR while opening smartbins in folder " : "ERROR while opening bins in folder ";
    const std::string earlier = (project / (smart ? "smartbins" : "bins")).string();
    BinsTreeEntry& tree = smart ? *sharedstuff.smartbins : *sharedstuff.bins;
    bool append = false;
    if (smart ? notes.smarttreeentry : notes.treeentry) {
        LegacyRead read =
            smart ? readLegacySmartbins(earlier, tree, notes.smartTreeLines, &sharedstuff, buffered)
                  : readLegacyBins(earlier, tree, notes.treeLines, &sharedstuff, buffered);
        if (read != LegacyRead::complete)
            legacy.keep(earlier);
        if (read == LegacyRead::failed) {
            printLine(failure + earlier);
            if (!smart)
                return false;
        }
        append = true;
    } else if (exists(earlier)) {
        bool loaded = smart ? loader.loadSmartbins(earlier, buffered, false)
                            : loader.loadBins(earlier, buffered, false);
        if (!loaded) {
            printLine(failure + earlier);
            legacy.keep(earlier);
        }
        append = true;
    }
    const std::string current = (project / (smart ? smartbinsFolderName : binsFolderName)).string();
    std::error_code ec;
    fs::create_directories(current, ec);
    bool loaded =
        smart ? loader.loadSmartbins(current, buffered, append) : loader.loadBins(current, buffered, append);
    if (!loaded)
        printLine(failure + current);
    return true;
}

// Every node of the tree with a bin, by the uuid that `.selectionlist` names.
std::unordered_map<std::string, Bin*> binsByUuid(BinsTreeEntry& tree) {
    std::unordered_map<std::string, Bin*> out;
    for (auto* node : tree.flatten()) {
        if (node->bin)
            out.emplace(node->nodeUuid(), node->bin.get());
    }
    return out;
}

// Step 14: the bins of `.selectionlist`, else those whose own files said they were open.
void openBins(SharedStuff& sharedstuff, const fs::path& project) {
    const std::string listPath = (project / selectionListFileName).string();
    std::optional<std::string> list;
    // An unreadable list counts as none: the bins' own files still say which were open.
    if (exists(listPath))
        list = base::readTextFile(listPath);
    if (!list) {
        for (Bin* bin : sharedstuff.openthesebinsafterloading)
            bin->setSelected(true);
        return;
    }
    sharedstuff.openthesebinsafterloading.clear();
    auto plain = binsByUuid(*sharedstuff.bins);
    auto smart = binsByUuid(*sharedstuff.smartbins);
    for (const auto& line : base::tokenise(*list, "\n")) {
        auto found = plain.find(line);
        if (found == plain.end()) {
            found = smart.find(line);
            if (found == smart.end())
                continue;
        }
        found->second->setSelected(true);
    }
}

} // namespace

bool ProjectLoader::loadBins(const std::string& path, Notifications* notifications, bool append) {
    if (!listable(path))
        return false;
    TreeNode loaded = BinsTreeLoader(path).load(&m_sharedstuff, std::nullopt, notifications);
    if (append)
        appendChildren(*m_sharedstuff.bins, loaded);
    else
        m_sharedstuff.bins = std::move(loaded);
    return true;
}

bool ProjectLoader::loadSmartbins(const std::string& path, Notifications* notifications, bool append) {
    if (!listable(path))
        return false;
    TreeNode loaded = SmartbinsTreeLoader(path).load(&m_sharedstuff, std::nullopt, notifications);
    if (append)
        appendChildren(*m_sharedstuff.smartbins, loaded);
    else
        m_sharedstuff.smartbins = std::move(loaded);
    return true;
}

// Presets, pivot tables and jobs have no objects in this build yet: their loaders only
// check that the folder can be read, so the open keeps its steps and messages for when they come.
bool ProjectLoader::loadExportPresets(const std::string& path, Notifications*) {
    return listable(path);
}

bool ProjectLoader::loadReportPresets(const std::string& path, Notifications*) {
    return listable(path);
}

bool ProjectLoader::loadMapPresets(const std::string& path, Notifications*) {
    return listable(path);
}

bool ProjectLoader::loadDbs(const std::string& path, Notifications* notifications) {
    auto loaded = project::DBLoader(path).loadAll(notifications);
    if (!loaded) {
        printLine("ERROR while loading databases from folder " + path);
        return false;
    }
    auto& list = m_sharedstuff.db;
    list.insert(list.end(), std::make_move_iterator(loaded->begin()), std::make_move_iterator(loaded->end()));
    return true;
}

bool ProjectLoader::loadLayouts(const std::string& path, Notifications* notifications) {
    if (!listable(path))
        return false;
    auto loaded = tables::LayoutsLoader(path).loadAll(notifications);
    auto& layouts = m_sharedstuff.projectLayouts;
    layouts.layouts.insert(layouts.layouts.end(), loaded.begin(), loaded.end());
    layouts.sortLayouts();
    return true;
}

bool ProjectLoader::loadPivots(const std::string& path, Notifications*) {
    return listable(path);
}

bool ProjectLoader::loadJobs(const std::string& path, Notifications*) {
    return listable(path);
}

OpenResult openProject(SharedStuff& sharedstuff, const OpenHooks& hooks, std::string* reason) {
    auto projectPath = sharedstuff.projectPath();
    if (!projectPath) {
        printLine("ERROR while opening " + sharedstuff.projectName.value_or(std::string()));
        return OpenResult::unreadableProject;
    }
    const fs::path project = *projectPath;
    Notifications* buffered = &sharedstuff.bufferedNotifications;
    ProjectLoader loader(sharedstuff);
    auto path = [&](const char* name) { return (project / name).string(); };

    // 1. The earlier layout on disk is updated only with the user's consent.
    if (exists(path("bins")) || exists(path("smartbins"))) {
        base::AlertRequest request{
            "Legacy saving folders",
            "Legacy saving folders/saving_system detected. By continuing, the project will be updated to the "
            "new "
            "saving system.\n\nIt is recommended to BACKUP your data before proceeding.",
            base::AlertStyle::Warning,
            {"Proceed", "Cancel"},
            false};
        // Without anyone to ask, a project is never rewritten in a new layout.
        if (!sharedstuff.interaction || sharedstuff.interaction->alert(request).button != 0)
            return OpenResult::cancelled;
    }

    // Files that a killed save kept from their place take it; its leftovers go.
    finishInterruptedWrites(project.string(), buffered);

    // 2. The settings.
    auto notes = readProjectFile(path(projectFileName), sharedstuff, buffered);
    if (!notes) {
        printLine("ERROR while opening " + path(projectFileName));
        return OpenResult::unreadableProject;
    }
    if (!notes->damage.empty()) {
        std::string what;
        for (const auto& part : notes->damage)
            what += (what.empty() ? "" : ", ") + part;
        const std::string text = "the project file " + path(projectFileName) + " is damaged (" + what +
                                 "); it was left as it is and the project was not opened";
        printLine("ERROR: " + text);
        if (reason)
            *reason = text;
        return OpenResult::damagedProject;
    }

    // 3. Bins.
    LegacyFolders legacy;
    if (!openTree(sharedstuff, project, false, *notes, legacy))
        return OpenResult::binsFailed;

    // 4. Layouts: the earlier flat folder, then the current one.
    if (exists(path("layouts"))) {
        LegacyRead read = readLegacyLayouts(path("layouts"), sharedstuff.projectLayouts, buffered);
        if (read == LegacyRead::failed)
            printLine("ERROR while loading layouts from folder " + path("layouts"));
        else if (read == LegacyRead::complete)
            legacy.migrated(path("layouts"));
    }
    if (exists(path("layout")) && !loader.loadLayouts(path("layout"), buffered))
        printLine("ERROR while opening layouts in folder " + path("layout"));

    // 5. and 6. Databases and presets in their earlier places.
    if (exists(path("dbs"))) {
        LegacyRead read = project::DBLoader::loadLegacy(path("dbs"), sharedstuff.db, buffered);
        if (read == LegacyRead::failed)
            printLine("ERROR while loading databases from folder " + path("dbs"));
        else if (read == LegacyRead::complete)
            legacy.migrated(path("dbs"));
    }
    readLegacyObjects(path("reportpresets"), "ERROR while loading report presets from folder ", legacy);
    readLegacyObjects(path("exportpresets"), "ERROR while loading export presets from folder ", legacy);
    readLegacyObjects(path("layoutmappingpresets"), "ERROR while loading layout mapping presets from folder ",
                      legacy);

    // 7. Jobs.
    if (exists(path(jobsFolderName)) && !loader.loadJobs(path(jobsFolderName), buffered))
        printLine("ERROR while loading jobs from folder " + path(jobsFolderName));

    // 8.
    sharedstuff.bins->resort();

    // 9. The main window; from here on the chooser is gone.
    if (hooks.makeMainWindow) {
        sharedstuff.mainWindow = hooks.makeMainWindow(sharedstuff);
        if (sharedstuff.mainWindow && std::find(sharedstuff.delegates.begin(), sharedstuff.delegates.end(),
                                                sharedstuff.mainWindow) == sharedstuff.delegates.end())
            sharedstuff.delegates.push_back(sharedstuff.mainWindow);
    }
    if (hooks.closeChooser)
        hooks.closeChooser();

    // 10. Smart bins, once the bins tree that their domains name stands.
    openTree(sharedstuff, project, true, *notes, legacy);

    // 11. to 13.
    using PresetsLoad = bool (ProjectLoader::*)(const std::string&, Notifications*);
    const std::pair<const char*, PresetsLoad> presets[] = {
        {exportPresetsFolderName, &ProjectLoader::loadExportPresets},
        {reportPresetsFolderName, &ProjectLoader::loadReportPresets},
        {mapPresetsFolderName, &ProjectLoader::loadMapPresets}};
    for (const auto& [folder, load] : presets) {
        if (exists(path(folder)) && !(loader.*load)(path(folder), buffered))
            printLine("ERROR while opening presets in folder " + path(folder));
    }
    if (exists(path(dbFolderName)) && !loader.loadDbs(path(dbFolderName), buffered))
        printLine("ERROR while opening dbs in folder " + path(dbFolderName));
    if (exists(path(pivotFolderName)) && !loader.loadPivots(path(pivotFolderName), buffered))
        printLine("ERROR while opening pivot tables in folder " + path(pivotFolderName));

    // 14. to 18.
    openBins(sharedstuff, project);
    sharedstuff.rebuildTagTrees();
    if (sharedstuff.mainWindow)
        sharedstuff.mainWindow->reloadBinsLists();
    sharedstuff.flushBufferedNotifications();
    // The earlier folders go only once every new file is written and read back.
    if (legacy.updating(project)) {
        if (!sharedstuff.saver().saveMigrated(reason))
            return OpenResult::migrationFailed;
        legacy.removeAll(project);
        return OpenResult::opened;
    }
    legacy.removeAll(project);
    return sharedstuff.save() ? OpenResult::opened : OpenResult::notSaved;
}

} // namespace lumbra::project
