#include "project/project_saver.h"

#include "base/console.h"
#include "base/text_file.h"
#include "import/ale_reader.h"
#include "project/bins_tree_saver.h"
#include "project/db_saver.h"
#include "project/project_archive.h"
#include "project/project_file.h"
#include "project/shared_stuff.h"
#include "tables/ale_table.h"
#include "tables/layouts_saver.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/stat.h>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::NotificationType;
using base::printLine;

namespace {

std::string join(const std::string& folder, const std::string& name) {
    return (fs::path(folder) / name).string();
}

// Seconds since 1970 at which the file was made; its last change where the file system keeps no birth time.
double creationTime(const fs::path& path) {
    struct statx info {};
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME, &info) != 0)
        return base::nowSeconds();
    const statx_timestamp& stamp = (info.stx_mask & STATX_BTIME) ? info.stx_btime : info.stx_mtime;
    return static_cast<double>(stamp.tv_sec) + stamp.tv_nsec / 1e9;
}

// A folder of its own in the temporary directory for each archive, so two archives in one run never meet.
std::string newTemporaryFolder() {
    return (fs::temp_directory_path() / ("lumbra-archive-" + base::makeUuid())).string();
}

} // namespace

ProjectSaver::ProjectSaver(SharedStuff& sharedstuff) : sharedstuff(sharedstuff) {
}

SaveResult SharedStuff::save() {
    return m_saver->save();
}

SaveResult SharedStuff::saveCopy(const std::string& url, std::string* resultPath) {
    return m_saver->saveCopy(url, resultPath);
}

bool SharedStuff::saveCompressed(const std::string& url, std::string* resultPath) {
    return m_saver->saveCompressed(url, resultPath);
}

bool SharedStuff::backup(std::string* resultPath) {
    return m_saver->backup(resultPath);
}

void SharedStuff::pruneBackups() {
    m_saver->pruneBackups();
}

void SharedStuff::restartBackupTimer() {
    timer.valid = true;
    timer.intervalSeconds = timeInMinBackup * 60.0;
    if (mainWindow)
        mainWindow->backupTimerChanged();
}

void SharedStuff::backupTick() {
    pruneBackups();
    backup();
}

SaveResult ProjectSaver::saveAll(const std::optional<std::string>& path, bool isCopy) {
    const std::optional<std::string> base = path ? path : sharedstuff.projectPath();
    if (!base) {
        sharedstuff.addLog("Cannot save: the project has no folder", true, "Save Failed",
                           NotificationType::KO);
        return {false, {"the project"}};
    }
    // A copy keeps every layout's changed mark: the project's own folder has still to get it.
    auto layouts = [&](const std::string& url) {
        std::vector<bool> marks;
        for (const auto& layout : sharedstuff.projectLayouts.layouts)
            marks.push_back(layout->hasChanged);
        bool ok = saveLayouts(url);
        if (isCopy) {
            for (std::size_t i = 0; i < marks.size() && i < sharedstuff.projectLayouts.layouts.size(); ++i)
                sharedstuff.projectLayouts.layouts[i]->hasChanged = marks[i];
        }
        return ok;
    };
    struct Step {
        const char* line;
        // What the result names when the step fails as a whole.
        const char* what;
        const char* folder;
        const char* failure;
        std::function<bool(const std::string&)> run;
    };
    const Step steps[] = {
        {"-- saving bins", "bins", binsFolderName, "Error while saving bins",
         [&](const std::string& url) { return saveBins(url, isCopy); }},
        {"-- saving smartbins", "smart bins", smartbinsFolderName, "Error while saving smartbins",
         [&](const std::string& url) { return saveSmartbins(url, isCopy); }},
        {"-- saving export presets", "export presets", exportPresetsFolderName,
         "Error while saving export presets", [&](const std::string& url) { return saveExportPresets(url); }},
        {"-- saving report presets", "report presets", reportPresetsFolderName,
         "Error while saving report presets", [&](const std::string& url) { return saveReportPresets(url); }},
        {"-- saving layout mapping presets", "layout mapping presets", mapPresetsFolderName,
         "Error while saving layout mapping presets",
         [&](const std::string& url) { return saveMapPresets(url); }},
        {"-- saving dbs", "databases", dbFolderName, "Error while saving dbs",
         [&](const std::string& url) { return saveDbs(url, isCopy); }},
        {"-- saving layouts", "layouts", tables::layoutsFolderName.data(), "Error while saving layouts",
         layouts},
        {"-- saving pivots", "pivot tables", pivotFolderName, "Error while saving pivot tables",
         [&](const std::string& url) { return savePivots(url); }},
    };
    // Each step runs whatever the others did: one object that cannot be written keeps no other back.
    SaveResult result;
    std::string failures;
    for (const Step& step : steps) {
        printLine(step.line);
        m_unwritten.clear();
        if (step.run(join(*base, step.folder)))
            continue;
        result.saved = false;
        if (m_unwritten.empty())
            m_unwritten.push_back(step.what);
        std::string names;
        for (const auto& name : m_unwritten) {
            names += (names.empty() ? "" : ", ") + name;
            result.unwritten.push_back(name);
        }
        failures += (failures.empty() ? "" : "; ") + std::string(step.failure) + ", not written: " + names;
    }
    if (!result.saved) {
        sharedstuff.addLog(failures, true, "Save Failed", NotificationType::KO);
        return result;
    }
    // A copy leaves the removals to the project's own next save, whose folders they concern.
    if (!isCopy) {
        entriesToRemove.clear();
        presetsToRemove.clear();
        dbsToRemove.clear();
    }
    return result;
}

bool ProjectSaver::saveTree(BinsTreeEntry& root, const std::string& path, bool isCopy) {
    BinsTreeSaver saver(path, root);
    const bool ok = isCopy ? saver.saveAll(path, root, &sharedstuff.bufferedNotifications)
                           : saver.removeEntries(entriesToRemove, &sharedstuff.bufferedNotifications);
    m_unwritten = saver.unwritten();
    return ok;
}

bool ProjectSaver::saveBins(const std::string& path, bool isCopy) {
    return saveTree(*sharedstuff.bins, path, isCopy);
}

bool ProjectSaver::saveSmartbins(const std::string& path, bool isCopy) {
    return saveTree(*sharedstuff.smartbins, path, isCopy);
}

// Presets and pivot tables have no saver of their own yet: nothing of theirs is written.
bool ProjectSaver::saveExportPresets(const std::string&) {
    return true;
}

bool ProjectSaver::saveReportPresets(const std::string&) {
    return true;
}

bool ProjectSaver::saveMapPresets(const std::string&) {
    return true;
}

bool ProjectSaver::saveDbs(const std::string& url, bool isCopy) {
    project::DBSaver saver(url, sharedstuff);
    saver.isCopy = isCopy;
    return saver.saveAll(dbsToRemove, &sharedstuff.bufferedNotifications);
}

bool ProjectSaver::saveLayouts(const std::string& url) {
    tables::LayoutsSaver saver(sharedstuff.projectLayouts, url);
    return saver.saveAll(&sharedstuff.bufferedNotifications);
}

bool ProjectSaver::savePivots(const std::string&) {
    return true;
}

namespace {

// A failure that the main window logs and that is printed as well.
void logFailure(SharedStuff& s, const std::string& text) {
    printLine(text);
    if (s.mainWindow && s.interaction)
        s.interaction->addLog(text, false, "", NotificationType::KO);
}

} // namespace

bool ProjectSaver::writeProjectFiles(const std::string& folder) {
    const std::string file = join(folder, projectFileName);
    if (!writeProjectFile(sharedstuff, file)) {
        logFailure(sharedstuff, "ERROR while saving file " + folder + "/" + projectFileName);
        return false;
    }
    // The open bins are only a convenience of the next open: a failure to note them is no failed save.
    static_cast<void>(
        base::writeFileAtomically(join(folder, selectionListFileName), selectionListText(sharedstuff)));
    return true;
}

SaveResult ProjectSaver::save() {
    SharedStuff& s = sharedstuff;
    printLine("saving project " + s.projectName.value_or(""));
    if (s.saveRefusal) {
        logFailure(s, "ERROR: the project is not saved: " + *s.saveRefusal);
        return {false, {"the project"}};
    }
    std::optional<std::string> path = s.projectPath();
    if (!path) {
        logFailure(s, "No project path specified, cannot save");
        return {false, {"the project"}};
    }
    std::error_code ec;
    if (!fs::exists(fs::path(*path).parent_path(), ec)) {
        const base::AlertRequest request{
            "Project path unreachable",
            "The project's path is not reachable. Do you want to choose the new project's path?",
            base::AlertStyle::Warning,
            {"Proceed", "Cancel"},
            false};
        if (!s.interaction || s.interaction->alert(request).button != 0)
            return {false, {"the project"}};
        if (s.mainWindow)
            s.mainWindow->setFog(true);
        const base::FolderRequest folderRequest{
            "Select parent folder where to save the project",
            {},
            "Project's path not reachable: please select new parent folder"};
        std::optional<fs::path> chosen = s.interaction->chooseFolder(folderRequest);
        if (!chosen) {
            if (s.mainWindow)
                s.mainWindow->setFog(false);
            s.addLog("No new path specified, cannot save", false, "", NotificationType::KO);
            return {false, {"the project"}};
        }
        std::string copyPath;
        const bool copied = saveCopy(chosen->string(), &copyPath).saved;
        if (!copied) {
            s.addLog("Error while saving to " + copyPath, true, "Save Failed", NotificationType::KO);
        } else {
            s.addLog("Successfully saved to " + copyPath, true, "Project Saved", NotificationType::OK);
            s.currentFolder = fs::path(copyPath).parent_path().string();
            s.projectName = fs::path(copyPath).filename().string();
            if (s.mainWindow) {
                s.mainWindow->refreshTitle();
                s.mainWindow->reloadBinsLists();
            }
        }
        if (s.mainWindow)
            s.mainWindow->setFog(false);
        // Without a copy there is no reachable place to go on saving to.
        if (!copied)
            return {false, {"the project"}};
        path = s.projectPath();
    }
    fs::remove_all(join(*path, cacheFolderName), ec);
    if (!fs::is_directory(*path, ec) && !fs::create_directories(*path, ec)) {
        logFailure(s, "ERROR: couldn't create directory " + *path);
        return {false, {"the project"}};
    }
    if (!writeProjectFiles(*path))
        return {false, {"the project file"}};
    return saveAll(std::nullopt, false);
}

namespace {

// The entries of the project's folder and of each folder in it, as an update of the earlier layout
// found them: whatever is not on this list afterwards was written by the update.
std::vector<fs::path> shallowListing(const fs::path& project) {
    std::vector<fs::path> out;
    std::error_code ec;
    for (auto it = fs::directory_iterator(project, ec); !ec && it != fs::directory_iterator();
         it.increment(ec)) {
        out.push_back(it->path());
        std::error_code inner;
        if (!it->is_directory(inner) || it->is_symlink(inner))
            continue;
        for (auto sub = fs::directory_iterator(it->path(), inner); !inner && sub != fs::directory_iterator();
             sub.increment(inner))
            out.push_back(sub->path());
    }
    std::sort(out.begin(), out.end());
    return out;
}

void removeAllBut(const fs::path& project, const std::vector<fs::path>& kept) {
    for (const fs::path& path : shallowListing(project)) {
        if (std::binary_search(kept.begin(), kept.end(), path))
            continue;
        std::error_code ec;
        fs::remove_all(path, ec);
    }
}

} // namespace

std::vector<std::string> ProjectSaver::binsNotReadBack(const std::string& path) {
    std::vector<std::string> out;
    const std::pair<BinsTreeEntry*, const char*> trees[] = {
        {sharedstuff.bins.get(), binsFolderName}, {sharedstuff.smartbins.get(), smartbinsFolderName}};
    for (const auto& [root, folder] : trees) {
        BinsTreeSaver saver(join(path, folder), *root);
        for (BinsTreeEntry* node : root->flatten()) {
            const Bin* bin = node->bin.get();
            const std::optional<std::string> place = saver.folderOf(*node);
            std::error_code ec;
            if (!place || !fs::is_directory(*place, ec)) {
                out.push_back(node->name());
                continue;
            }
            if (!bin || !bin->table() || !bin->table()->ownsRows())
                continue;
            import::ReadResult back = import::readALE(join(*place, bin->fileStem() + ".ale"));
            if (back.failure || back.table->data.size() != bin->table()->data.size())
                out.push_back(node->name());
        }
    }
    return out;
}

bool ProjectSaver::saveMigrated(std::string* reason) {
    const std::optional<std::string> path = sharedstuff.projectPath();
    if (!path)
        return false;
    const std::vector<fs::path> before = shallowListing(*path);
    SaveResult result = saveAll(std::nullopt, false);
    if (result.saved)
        result.unwritten = binsNotReadBack(*path);
    std::string names;
    for (const auto& name : result.unwritten)
        names += (names.empty() ? "" : ", ") + name;
    // The project file comes last: until it is written, the next open reads the earlier layout again.
    if (names.empty() && writeProjectFiles(*path))
        return true;
    removeAllBut(*path, before);
    std::string text = "updating the project to the current folder layout failed";
    text += names.empty() ? " (the project file could not be written)" : " (not written: " + names + ")";
    text += "; the project was left in its earlier layout";
    sharedstuff.saveRefusal = text;
    sharedstuff.addLog("ERROR: " + text, true, "Save Failed", NotificationType::KO);
    if (reason)
        *reason = text;
    return false;
}

SaveResult ProjectSaver::saveCopy(const std::string& url, std::string* resultPath) {
    const std::string target = freePath(url, sharedstuff.projectName.value_or("lumbra_project"), "");
    if (resultPath)
        *resultPath = target;
    std::error_code ec;
    if (!fs::create_directories(target, ec)) {
        logFailure(sharedstuff, "ERROR: couldn't create directory " + target);
        return {false, {"the project"}};
    }
    // Half a project in the destination would pass for a whole one: a failed copy is removed.
    if (!writeProjectFiles(target)) {
        fs::remove_all(target, ec);
        return {false, {"the project file"}};
    }
    SaveResult result = saveAll(target, true);
    if (!result.saved)
        fs::remove_all(target, ec);
    return result;
}

std::optional<std::string> ProjectSaver::temporaryCopy(std::string* copyPath) {
    const std::string folder = newTemporaryFolder();
    std::string copy;
    if (!saveCopy(folder, &copy)) {
        std::error_code ec;
        fs::remove_all(folder, ec);
        return std::nullopt;
    }
    if (copyPath)
        *copyPath = copy;
    return folder;
}

bool ProjectSaver::saveCompressed(const std::string& url, std::string* resultPath) {
    std::string copy;
    const std::optional<std::string> folder = temporaryCopy(&copy);
    if (!folder)
        return false;
    const std::string zip = freePath(url, sharedstuff.projectName.value_or("lumbra_project"), ".zip");
    std::string error;
    const bool zipped = zipFolder(copy, zip, &error);
    std::error_code ec;
    fs::remove_all(*folder, ec);
    if (!zipped) {
        sharedstuff.addLog("Error while compressing to " + zip + ": " + error, true, "Save Failed",
                           NotificationType::KO);
        return false;
    }
    if (resultPath)
        *resultPath = zip;
    return true;
}

bool ProjectSaver::backup(std::string* resultPath) {
    const std::optional<std::string> path = sharedstuff.projectPath();
    if (!path)
        return false;
    std::string copy;
    const std::optional<std::string> folder = temporaryCopy(&copy);
    if (!folder)
        return false;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const std::string backups = join(*path, backupFolderName);
    std::error_code ec;
    bool ok = fs::is_directory(backups, ec) || fs::create_directory(backups, ec);
    if (!ok) {
        printLine("ERROR while creating the folder " + backups + ": " + ec.message());
    } else {
        // Two backups within one second get a counter rather than one replacing the other.
        const std::string name = backupArchiveName(local, *sharedstuff.projectName);
        const std::string zip = freePath(backups, fs::path(name).stem().string(), ".zip");
        std::string error;
        ok = zipFolder(copy, zip, &error);
        if (!ok)
            printLine("ERROR while zipping " + zip + ": " + error);
        else if (resultPath)
            *resultPath = zip;
    }
    fs::remove_all(*folder, ec);
    return ok;
}

void ProjectSaver::pruneBackups() {
    const std::optional<std::string> path = sharedstuff.projectPath();
    if (!path)
        return;
    const std::string folder = join(*path, backupFolderName);
    std::error_code ec;
    if (!fs::exists(folder, ec))
        return;
    std::vector<std::pair<double, fs::path>> archives;
    for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
         it.increment(ec)) {
        if (it->path().filename().string().find(*sharedstuff.projectName) != std::string::npos)
            archives.emplace_back(creationTime(it->path()), it->path());
    }
    if (ec) {
        printLine("Error while enumerating files " + folder + ": " + ec.message());
        return;
    }
    if (archives.size() <= static_cast<std::size_t>(std::max(sharedstuff.maxNBackup, 0)))
        return;
    const auto oldest = std::min_element(archives.begin(), archives.end(),
                                         [](const auto& a, const auto& b) { return a.first < b.first; });
    fs::remove_all(oldest->second, ec);
    if (ec)
        printLine("Error while enumerating files " + folder + ": " + ec.message());
}

std::string selectionListText(const SharedStuff& sharedstuff) {
    std::string out;
    for (Bin* bin : sharedstuff.bins->toarray) {
        if (bin->selected())
            out += bin->uuid() + "\n";
    }
    for (Bin* bin : sharedstuff.smartbins->toarray)
        out += bin->uuid() + "\n";
    return out;
}

std::string freePath(const std::string& folder, const std::string& name, const std::string& suffix) {
    std::error_code ec;
    std::string path = join(folder, name + suffix);
    for (int n = 2; fs::exists(path, ec) || fs::is_symlink(path, ec); ++n) {
        char number[16];
        std::snprintf(number, sizeof number, "_%02d", n);
        path = join(folder, name + number + suffix);
    }
    return path;
}

std::string backupArchiveName(const std::tm& time, const std::string& projectName) {
    // Zero-padded fields make the names sort by time and keep two moments apart.
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%04d%02d%02d_%02d%02d%02d", time.tm_year + 1900, time.tm_mon + 1,
                  time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    return std::string(stamp) + "-" + projectName + ".zip";
}

} // namespace lumbra::project
