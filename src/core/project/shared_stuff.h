#pragma once

#include "base/notification.h"
#include "base/saveable.h"
#include "base/user_interaction.h"
#include "project/bins_host.h"
#include "project/bins_tree_entry.h"
#include "project/save_result.h"
#include "tables/ale_entry.h"
#include "tables/columns_layout.h"
#include "tables/list_sorter.h"
#include "tables/table_links.h"

#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::tables {
class DBTable;
}

namespace lumbra::project {

class ProjectSaver;

// A window that hears of the project's changes; the main window is one.
class SharedStuffDelegate {
public:
    virtual ~SharedStuffDelegate() = default;
    // A bin was added or the trees changed: the window shows its bin lists again.
    virtual void reloadBinsLists() {}
    // The boxes of the open bins show their rows again.
    virtual void refreshOpenBoxes() {}
    // The layout button of each open box, after the list of layouts changed.
    virtual void refreshLayoutButtons() {}
};

// What the project asks of its main window beyond the delegate's part; the shell implements it.
class MainWindowLink : public SharedStuffDelegate {
public:
    // The fog over the window while a panel or alert is up.
    virtual void setFog(bool shown) {}
    // The title shows the project's name and place again.
    virtual void refreshTitle() {}
    // A new on-screen box for the bin; nullptr where the window makes none.
    [[nodiscard]] virtual std::unique_ptr<BinBoxLink> makeBox(Bin& bin) { return nullptr; }
    // The bin's box enters (true) or leaves (false) the window.
    virtual void showBox(Bin& bin, bool shown) {}
    // The project's backup timer must run from now on with this rule (see BackupTimer).
    virtual void backupTimerChanged() {}
};

// The backup timer as data: the shell runs a repeating timer from it and calls backupTick().
struct BackupTimer {
    // False until the first restartBackupTimer(): the plain timer the project starts with never fires.
    bool valid = false;
    double intervalSeconds = 0.0;
};

// A saved job; only its name matters to the project itself.
struct TarelJob {
    std::string name;
};

// What the project file holds of an open project besides its trees and layouts: its name, the values bins
// take for their heading, the rules and the user's choices.
class ProjectSettings {
public:
    // The value of a project token of a clever string ("projname", "date", a user property...);
    // unset fields answer "", an unknown token nothing. Dates are those of `now`, in local time.
    [[nodiscard]] std::optional<std::string> interpretProjectToken(std::string_view token) const;
    [[nodiscard]] std::optional<std::string> interpretProjectToken(std::string_view token,
                                                                   const std::tm& now) const;

    std::optional<std::string> projectName;
    std::optional<std::string> fps;
    std::optional<std::string> tlResolution;
    std::optional<std::string> sound;
    std::optional<std::string> film_format;
    std::optional<std::string> tapeId;
    double timeInMinBackup = 15.0;
    int maxNBackup = 5;
    std::vector<std::string> columns;
    bool archiveOriginalData = true;
    std::vector<std::string> projectTags;
    bool saving_film_format = false;
    bool gang = false;
    bool autosave = true;
    std::map<std::string, std::string> userDefinedProperties;
    std::string statusBarRule = "Total values #{COUNT ENTRIES}";
    std::string binNamingRule = "@{All Bin Name}";
    int maxShowBinToImport = 5;
    std::vector<std::string> mergeAppendOriginalColumns;
    bool usePython = false;
    bool installedOTIO = false;
};

// The trees and lists of an open project: bins, smart bins and the tag trees built from them, layouts,
// presets, databases, pivot tables and jobs, and the names they make.
class ProjectContents {
public:
    // Empty trees whose entries tell `host` of their changes.
    explicit ProjectContents(BinsHost* host);

    // The open bins of `bins`, then every bin of `smartbins`.
    [[nodiscard]] std::vector<Bin*> openBins() const;
    // Every bin of `bins`, then every bin of `smartbins`.
    [[nodiscard]] std::vector<Bin*> allBins() const;
    // The columns of every bin, every saved layout and the default layout, sorted, each once.
    [[nodiscard]] tables::OrderedStringList allColumns() const;

    // Removes the first job of that name; false when there is none.
    bool removeJob(const std::string& name);

    [[nodiscard]] std::string nextBinName() const;
    [[nodiscard]] std::string nextGroupName() const;
    [[nodiscard]] std::string nextSmartbinName() const;
    [[nodiscard]] std::string uniqueId(const std::string& name) const;
    [[nodiscard]] std::string uniqueName(const std::string& name) const;

    // The saved layouts, the standing layouts "Default", "Project Default", the last chosen
    // default and "System", the pinned columns and the width rules.
    tables::ProjectLayouts projectLayouts;
    std::vector<std::shared_ptr<base::Saveable>> exportPresets;
    std::vector<std::shared_ptr<base::Saveable>> reportPresets;
    std::vector<std::shared_ptr<base::Saveable>> mapPresets;
    TreeNode bins;
    TreeNode smartbins;
    TreeNode tagThreeWithSmartbins;
    TreeNode tagThreeWithoutSmartbins;
    std::vector<std::shared_ptr<tables::DBTable>> db;
    std::vector<std::shared_ptr<base::Saveable>> pivottables;
    std::vector<TarelJob> tareljobs;
};

// What an open project holds only while it is open: where it is, who looks at it and answers for the user,
// what waits to be saved or told, and the rows copied.
class SessionState {
public:
    // `interaction` does not own and may be null (no user: questions take their cancelling answer).
    explicit SessionState(base::UserInteraction* interaction) : interaction(interaction) {}

    void refreshOpenBoxes();
    void refreshLayoutButtons();
    // Hands the buffered notifications to the user, in order, and empties the list.
    void flushBufferedNotifications();
    // One line for the user: to the main window's log when it stands, else printed and (with
    // notify) buffered until flushBufferedNotifications().
    void addLog(const std::string& text, bool notify, const std::string& title, base::NotificationType kind);

    Bin* activeBin = nullptr;                    // does not own
    std::vector<SharedStuffDelegate*> delegates; // do not own; the main window is one of them
    std::optional<std::string> currentFolder;
    MainWindowLink* mainWindow = nullptr;         // does not own; absent until the window stands
    base::UserInteraction* interaction = nullptr; // does not own
    // Set by a window that keeps typing free of disk time; the window waits for it before the project goes.
    tables::BackgroundWriter* deferredWriter = nullptr; // does not own
    BackupTimer timer;
    bool something_to_save = false;
    // Why saves into the project's own folder are refused: set when updating its earlier layout
    // failed, so that nothing is written over the layout that still holds the bins. Copies go on.
    std::optional<std::string> saveRefusal;
    // Choices remembered while the project is open ("csvSeparator"); never stored, values as text.
    std::map<std::string, std::string> options;
    std::vector<Bin*> openthesebinsafterloading; // do not own
    base::Notifications bufferedNotifications;
    std::vector<tables::EntryPtr> copiedEntries;
};

// The open project: its settings, its trees and lists, and the state of its session, with the operations
// that span them. One per open project; it exists with its defaults before anything is loaded.
class SharedStuff : public BinsHost,
                    public tables::ProjectLink,
                    public ProjectSettings,
                    public ProjectContents,
                    public SessionState {
public:
    // `interaction` does not own and may be null (no user: questions take their cancelling answer).
    explicit SharedStuff(base::UserInteraction* interaction = nullptr);
    ~SharedStuff() override;
    SharedStuff(const SharedStuff&) = delete;
    SharedStuff& operator=(const SharedStuff&) = delete;

    // currentFolder + "/" + projectName; absent unless both are present.
    [[nodiscard]] std::optional<std::string> projectPath() const;

    // A new leaf for the bin, in `group` when given, else at the top of `bins`; the delegates
    // reload their lists and the dirty rule runs.
    void addBin(std::shared_ptr<Bin> bin, BinsTreeEntry* group = nullptr);
    // The same in `smartbins`; the bin's table must be a smart table, which then tests every
    // row of every plain bin.
    void addSmartbin(std::shared_ptr<Bin> bin, BinsTreeEntry* group = nullptr);
    // Each smart bin tests the rows of `bin` again; boxes are refreshed, `bin`'s own if asked.
    void refreshSmartbins(Bin& bin, bool refreshBin);

    // Appends the job; a job of the same name is overwritten only if the user says so (false otherwise).
    bool addJob(TarelJob job);

    // The end of every change of project data: saves at once with autosave, else marks the project.
    void projectChanged();

    // Saving (project_saver.cpp); each fails with false and says why to the user. A save writes
    // every object it can and lists in its result those it could not.
    SaveResult save();
    // A full copy under `url`, named after the project ("_02"... when taken); the copy's path goes to
    // resultPath.
    SaveResult saveCopy(const std::string& url, std::string* resultPath = nullptr);
    // A copy zipped to `url`/<projectName>.zip ("_02"... when taken); the archive's path goes to resultPath.
    bool saveCompressed(const std::string& url, std::string* resultPath = nullptr);
    // A copy zipped into the project's `backup` folder under a name from the date and time.
    bool backup(std::string* resultPath = nullptr);
    // Removes the oldest archive of the project's `backup` folder when there are more than maxNBackup.
    void pruneBackups();
    // The timer starts again with the interval timeInMinBackup minutes.
    void restartBackupTimer();
    // What the timer does at each tick: prune, then back up.
    void backupTick();

    [[nodiscard]] ProjectSaver& saver() noexcept { return *m_saver; }

    // BinsHost
    [[nodiscard]] std::shared_ptr<tables::ColumnsLayout> baseLayout() const override;
    [[nodiscard]] tables::ProjectLink* projectLink() override { return this; }
    [[nodiscard]] std::unique_ptr<BinBoxLink> makeBox(Bin& bin) override;
    void showBox(Bin& bin, bool shown) override;
    void openAfterLoading(Bin& bin) override;
    [[nodiscard]] BinsTreeEntry* binsTree() override { return bins.get(); }
    [[nodiscard]] BinsTreeEntry* smartbinsTree() override { return smartbins.get(); }
    void rebuildTagTrees() override;
    [[nodiscard]] tables::BackgroundWriter* backgroundWriter() override { return deferredWriter; }

    // tables::ProjectLink: every smart table tests the row again.
    void rowChanged(tables::ALEEntry& row) override;

private:
    std::unique_ptr<ProjectSaver> m_saver;
};

} // namespace lumbra::project
