#pragma once

#include "base/saveable.h"
#include "project/bins_tree_entry.h"
#include "project/save_result.h"

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumbra::project {

class SharedStuff;

// The folders of a project, by their names on disk.
inline constexpr const char* binsFolderName = "_bins_";
inline constexpr const char* smartbinsFolderName = "_smartbins_";
inline constexpr const char* exportPresetsFolderName = "export_presets";
inline constexpr const char* reportPresetsFolderName = "report_presets";
inline constexpr const char* mapPresetsFolderName = "layoutmapping_presets";
inline constexpr const char* dbFolderName = "db";
inline constexpr const char* pivotFolderName = "pivot";
inline constexpr const char* jobsFolderName = "jobs";
inline constexpr const char* cacheFolderName = "cache";
inline constexpr const char* backupFolderName = "backup";
inline constexpr const char* selectionListFileName = ".selectionlist";

// Writes a project into its folder: the project file whole, of the objects only those that
// changed, and folders moved or removed to match the trees. One per project.
class ProjectSaver {
public:
    explicit ProjectSaver(SharedStuff& sharedstuff);

    // Every saver in order into `path` (else the project's folder). A step that fails does not stop
    // the others; the result lists what was not written, and one logged "Save Failed" notification
    // names it. The removal lists are emptied only on success.
    SaveResult saveAll(const std::optional<std::string>& path, bool isCopy);
    // A copy writes every bin and ignores the removals; a save writes what changed, then removes.
    bool saveBins(const std::string& path, bool isCopy);
    bool saveSmartbins(const std::string& path, bool isCopy);
    bool saveExportPresets(const std::string& url);
    bool saveReportPresets(const std::string& url);
    bool saveMapPresets(const std::string& url);
    // A copy writes every database and removes nothing.
    bool saveDbs(const std::string& url, bool isCopy = false);
    bool saveLayouts(const std::string& url);
    bool savePivots(const std::string& url);

    // The project's own operations; see SharedStuff.
    SaveResult save();
    SaveResult saveCopy(const std::string& url, std::string* resultPath);
    // The closing save of an open that updates a project in the earlier layout: every object, each
    // bin read back, and only then the project file. On failure what the update wrote goes, the
    // project file stays as it was, `reason` says why, and later saves into the folder are refused.
    bool saveMigrated(std::string* reason);
    bool saveCompressed(const std::string& url, std::string* resultPath);
    bool backup(std::string* resultPath);
    void pruneBackups();

    SharedStuff& sharedstuff; // does not own
    // Nodes the user deleted since the last save: their folders go at the next save.
    std::vector<TreeNode> entriesToRemove;
    std::vector<std::shared_ptr<base::Saveable>> presetsToRemove;
    std::vector<std::shared_ptr<base::Saveable>> dbsToRemove;

private:
    bool writeProjectFiles(const std::string& folder);
    bool saveTree(BinsTreeEntry& root, const std::string& path, bool isCopy);
    // The bins of the trees whose files do not read back as they are held; empty when all do.
    std::vector<std::string> binsNotReadBack(const std::string& path);
    // The names of the bins and groups the running save could not write.
    std::vector<std::string> m_unwritten;
    std::optional<std::string> temporaryCopy(std::string* resultPath);
};

// The uuids of the open bins, one per line: the open plain bins, then every smart bin.
[[nodiscard]] std::string selectionListText(const SharedStuff& sharedstuff);
// `<name><suffix>` in the folder when free, else `<name>_02<suffix>`, `_03`... the first that is free.
[[nodiscard]] std::string freePath(const std::string& folder, const std::string& name,
                                   const std::string& suffix);
// "<yyyy><mm><dd>_<hh><mm><ss>-<projectName>.zip", zero-padded so that names sort by time: 7 March
// 2025 09:05:03 gives "20250307_090503-name.zip"; backup() adds "_02"... when the name is taken.
[[nodiscard]] std::string backupArchiveName(const std::tm& time, const std::string& projectName);

} // namespace lumbra::project
