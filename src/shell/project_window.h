#pragma once

#include "app/app_lifecycle.h"
#include "project/shared_stuff.h"

#include <QMainWindow>
#include <memory>

class QAction;
class QLabel;
class QTimer;
class QTreeView;

namespace lumbra::shell {

class ProjectBinsModel;

// The main window of one open project: it owns the project, shows its bins tree and runs its backups.
class ProjectWindow final : public QMainWindow, public app::ProjectWindow, public project::MainWindowLink {
    Q_OBJECT

public:
    // Quit and close ask through `lifecycle`; `windows` brings the chooser back once the project is gone.
    ProjectWindow(std::unique_ptr<project::SharedStuff> sharedstuff, app::AppLifecycle& lifecycle,
                  app::AppWindows& windows, QWidget* parent = nullptr);
    ~ProjectWindow() override;

    [[nodiscard]] project::SharedStuff& sharedstuff() noexcept { return *m_sharedstuff; }
    [[nodiscard]] QTreeView* binsView() const noexcept { return m_binsView; }
    [[nodiscard]] QTimer* backupTimer() const noexcept { return m_backupTimer; }

    // app::ProjectWindow
    [[nodiscard]] std::string projectName() const override;
    bool save() override;
    void setPythonFlags(app::PythonFlags flags) override;

    // project::MainWindowLink
    void reloadBinsLists() override;
    void refreshTitle() override;
    void backupTimerChanged() override;

public slots:
    // File > Save: saves and tells the log how it went.
    void saveProject();
    void openProjectMetadataWindow();
    void closeProject();
    void terminate();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;

private:
    std::unique_ptr<project::SharedStuff> m_sharedstuff;
    app::AppLifecycle& m_lifecycle;
    app::AppWindows& m_windows;
    ProjectBinsModel* m_binsModel = nullptr;
    QTreeView* m_binsView = nullptr;
    QLabel* m_summary = nullptr;
    QTimer* m_backupTimer = nullptr;
    bool m_shownOnce = false;
};

} // namespace lumbra::shell
