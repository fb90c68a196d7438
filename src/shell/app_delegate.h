#pragma once

#include "app/app_lifecycle.h"
#include "base/user_defaults.h"
#include "base/user_interaction.h"

#include <QObject>
#include <QPointer>
#include <filesystem>
#include <memory>

class QAction;
class QMainWindow;

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::shell {

class ProjectChooserWindow;
class MainWindowViewController;

// The process-wide object: it owns the start, reopen and quit rules and the actions every window's menu
// shares.
class AppDelegate final : public QObject, public app::AppWindows {
    Q_OBJECT

public:
    // Without an interaction or defaults the desktop's own are used; tests hand in scripted ones.
    explicit AppDelegate(std::unique_ptr<base::UserInteraction> interaction = nullptr,
                         std::unique_ptr<base::UserDefaults> defaults = nullptr, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Turns the full-screen menu entry off, starts the Python probe and, with no window, opens the chooser.
    void start();

    [[nodiscard]] app::AppLifecycle& lifecycle() noexcept { return *m_lifecycle; }
    [[nodiscard]] base::UserInteraction& interaction() noexcept { return *m_interaction; }
    [[nodiscard]] ProjectChooserWindow* projectChooser() const;
    // The menu entry that opens the project chooser.
    // Gives the chooser the application's menus; opening the chooser is offered from project windows.
    void installMenus(QMainWindow& window);
    // The main window of a project, which owns it from now on; shown by the caller.
    MainWindowViewController* makeProjectWindow(std::unique_ptr<project::SharedStuff> sharedstuff);
    // The new project window for a project in `folder`.
    void openNewProjectWindow(const std::filesystem::path& folder);

    [[nodiscard]] int windowCount() const override;
    [[nodiscard]] std::vector<app::ProjectWindow*> projectWindows() const override;
    void openProjectChooser() override;

public slots:
    // Asks the application to quit; the quit rules may cancel it.
    void requestQuit();
    void showAbout();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::unique_ptr<base::UserInteraction> m_interaction;
    std::unique_ptr<base::UserDefaults> m_defaults;
    std::unique_ptr<app::AppLifecycle> m_lifecycle;
    QPointer<ProjectChooserWindow> m_chooser;
    QAction* m_quitAction = nullptr;
    QAction* m_aboutAction = nullptr;
};

} // namespace lumbra::shell
