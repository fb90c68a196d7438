#pragma once

#include "app/app_lifecycle.h"
#include "app/box_tiling.h"
#include "app/main_window_log.h"
#include "base/user_interaction.h"
#include "binbox/box_host.h"
#include "project/bin_import.h"
#include "project/shared_stuff.h"

#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <map>
#include <memory>

class QAction;
class QActionGroup;
class QMenu;
class QPlainTextEdit;
class QSplitter;
class QTabWidget;
class QTimer;

namespace lumbra::tables {
class BackgroundWriter;
}

namespace lumbra::shell {

class BinsList;
class BoxesArea;
class NotificationsBox;
class SmartBinsList;

// The one window of an open project: the two bins lists, the boxes of the open bins, the panel of a
// tool in front of them, the log and the notifications. It owns the project; every user command
// passes through it.
class MainWindowViewController final : public QMainWindow,
                                       public app::ProjectWindow,
                                       public project::MainWindowLink,
                                       public BoxHost {
    Q_OBJECT

public:
    // What a toolbar button puts in front of the boxes; the tools register theirs.
    using PanelFactory = std::function<QWidget*(project::SharedStuff&, QWidget* parent)>;

    // Quit and close ask through `lifecycle`; `windows` brings the chooser back once the project is gone.
    MainWindowViewController(std::unique_ptr<project::SharedStuff> sharedstuff, app::AppLifecycle& lifecycle,
                             app::AppWindows& windows, QWidget* parent = nullptr);
    ~MainWindowViewController() override;

    // The panel a toolbar name ("merge", "database", ...) opens from now on in every new window.
    static void registerPanel(const std::string& name, PanelFactory factory);

    [[nodiscard]] project::SharedStuff& sharedstuff() noexcept { return *m_sharedstuff; }
    [[nodiscard]] BinsList* binsList() const noexcept { return m_binsList; }
    [[nodiscard]] SmartBinsList* smartBinsList() const noexcept { return m_smartBinsList; }
    [[nodiscard]] NotificationsBox* notificationsBox() const noexcept { return m_notificationsBox; }
    [[nodiscard]] QWidget* boxesView() const noexcept;
    [[nodiscard]] QTimer* backupTimer() const noexcept { return m_backupTimer; }
    [[nodiscard]] const app::MainWindowLog& log() const noexcept { return m_log; }
    [[nodiscard]] const std::string& currentSubcontainer() const noexcept { return m_currentSubcontainer; }
    [[nodiscard]] app::ViewMode viewMode() const noexcept { return m_viewMode; }
    [[nodiscard]] app::MultiViewMode multiViewMode() const noexcept { return m_multiViewMode; }

    // One line on top of the log; with notify also a notification.
    void addLog(const std::string& text, bool notify, const std::string& title, base::NotificationType kind);
    // Bins from files, as dropped at `target`; the one import the command line uses too.
    project::BinImportResult addBinsFromFiles(const std::vector<std::string>& paths,
                                              project::ImportTarget target = {});
    // Puts the named tool's panel in front of the boxes; the empty name, or the name of the panel in
    // front, shows the boxes again.
    void switchSubcontainer(const std::string& name);
    // Lays the open boxes out by the view modes.
    void tileBoxes();
    void setViewMode(app::ViewMode mode);
    void setMultiViewMode(app::MultiViewMode mode);

    // app::ProjectWindow
    [[nodiscard]] std::string projectName() const override;
    bool save() override;
    [[nodiscard]] bool hasUnsavedChanges() const override;
    void setPythonFlags(app::PythonFlags flags) override;

    // project::MainWindowLink
    void reloadBinsLists() override;
    void refreshOpenBoxes() override;
    void refreshTitle() override;
    void backupTimerChanged() override;
    void setFog(bool shown) override;
    [[nodiscard]] std::unique_ptr<project::BinBoxLink> makeBox(project::Bin& bin) override;
    void showBox(project::Bin& bin, bool shown) override;

    // BoxHost
    [[nodiscard]] bool panelInFront() const override { return !m_currentSubcontainer.empty(); }
    void toggleViewMode() override;
    QWidget* boxesArea() override;
    void boxActivated(BinBox& box) override;
    void showNotification(const base::NotificationData& notification) override;

public slots:
    void saveProject();
    void saveAProjectCopy();
    void saveProjectAsZip();
    // The file chooser of "New Bin From File"; the files go where `target` says.
    void addBinFromFile(project::ImportTarget target = {});
    void saveBinAsALE();
    void saveBinAsCSV();
    // The layout editor on the active bin.
    void editLayout();
    void openProjectMetadataWindow();
    void showProjectInFileManager();
    void closeProject();
    void terminate();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;

private:
    class WindowInteraction;
    struct ToolButton {
        std::string name;
        QAction* action = nullptr;
    };

    // Every registered panel by toolbar name.
    static std::map<std::string, PanelFactory>& panels();
    void buildMenus();
    void buildToolbar();
    void buildCentre();
    void fillLayoutMenu(QMenu* menu, bool setDefault);
    void updateToolButtons();
    // The bin the bin commands act on: the list's selected bin, else the active one.
    [[nodiscard]] project::Bin* commandBin() const;
    // A table file the background writer could not write: told to the user, its bin written again later.
    void tableWriteFailed(const std::string& path);

    std::unique_ptr<project::SharedStuff> m_sharedstuff;
    std::unique_ptr<WindowInteraction> m_interaction;
    // Autosaves rewrite bin tables here, so an edit never waits for the disk.
    std::unique_ptr<tables::BackgroundWriter> m_writer;
    base::UserInteraction* m_projectInteraction = nullptr;
    app::AppLifecycle& m_lifecycle;
    app::AppWindows& m_windows;
    app::MainWindowLog m_log;
    std::string m_currentSubcontainer;
    app::ViewMode m_viewMode = app::ViewMode::multiple;
    app::MultiViewMode m_multiViewMode = app::MultiViewMode::standard;

    BinsList* m_binsList = nullptr;
    SmartBinsList* m_smartBinsList = nullptr;
    BoxesArea* m_boxesArea = nullptr;
    QWidget* m_subContainer = nullptr;
    QPointer<QWidget> m_panel;
    NotificationsBox* m_notificationsBox = nullptr;
    QPlainTextEdit* m_logTextView = nullptr;
    QTabWidget* m_logTabView = nullptr;
    QWidget* m_fogView = nullptr;
    QTimer* m_backupTimer = nullptr;
    std::vector<ToolButton> m_toolButtons;
    QAction* m_homeAction = nullptr;
    QAction* m_viewModeAction = nullptr;
    QAction* m_gangAction = nullptr;
    QActionGroup* m_multiViewGroup = nullptr;
    bool m_shownOnce = false;
    bool m_tilePending = false;
};

} // namespace lumbra::shell
