#include "app_delegate.h"

#include "main_window.h"
#include "new_project_window.h"
#include "project/shared_stuff.h"
#include "project_chooser_window.h"
#include "qt_user_defaults.h"
#include "qt_user_interaction.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>

// The resources live in the shell library; a static library registers them only when asked.
static void initialiseResources() {
    Q_INIT_RESOURCE(lumbra);
}

namespace lumbra::shell {

AppDelegate::AppDelegate(std::unique_ptr<base::UserInteraction> interaction,
                         std::unique_ptr<base::UserDefaults> defaults, QObject* parent)
    : QObject(parent), m_interaction(std::move(interaction)), m_defaults(std::move(defaults)) {
    initialiseResources();
    if (!m_interaction) {
        m_interaction = std::make_unique<QtUserInteraction>();
    }
    if (!m_defaults) {
        m_defaults = std::make_unique<QtUserDefaults>();
    }
    m_lifecycle = std::make_unique<app::AppLifecycle>(*m_interaction, *this);

    m_quitAction = new QAction(QIcon::fromTheme(QStringLiteral("application-exit")), tr("&Quit"), this);
    // The platform key for Quit is empty on some desktops; Ctrl+Q is what Linux users expect.
    m_quitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    m_quitAction->setMenuRole(QAction::QuitRole);
    connect(m_quitAction, &QAction::triggered, this, &AppDelegate::requestQuit);

    m_aboutAction = new QAction(QIcon::fromTheme(QStringLiteral("help-about")), tr("&About Lumbra"), this);
    m_aboutAction->setMenuRole(QAction::AboutRole);
    connect(m_aboutAction, &QAction::triggered, this, &AppDelegate::showAbout);

    qApp->installEventFilter(this);
}

AppDelegate::~AppDelegate() {
    qApp->removeEventFilter(this);
    delete m_chooser.data();
}

ProjectChooserWindow* AppDelegate::projectChooser() const {
    return m_chooser;
}

void AppDelegate::start() {
    m_lifecycle->willFinishLaunching(*m_defaults);
    m_lifecycle->startPythonProbe(&app::AppLifecycle::probePython);
    // The desktop may not report an activation at start, so the first check runs here.
    m_lifecycle->showProjectChooserIfNoWindows(true);
}

void AppDelegate::installMenus(QMainWindow& window) {
    QMenuBar* bar = window.menuBar();
    QMenu* file = bar->addMenu(tr("&File"));
    file->addAction(m_quitAction);
    QMenu* help = bar->addMenu(tr("&Help"));
    help->addAction(m_aboutAction);
}

MainWindowViewController* AppDelegate::makeProjectWindow(std::unique_ptr<project::SharedStuff> sharedstuff) {
    auto* window = new MainWindowViewController(std::move(sharedstuff), *m_lifecycle, *this);
    QMenu* help = window->menuBar()->addMenu(tr("&Help"));
    help->addAction(m_aboutAction);
    return window;
}

void AppDelegate::openNewProjectWindow(const std::filesystem::path& folder) {
    auto* window = new NewProjectWindow(*this, folder);
    window->show();
    window->raise();
    window->activateWindow();
}

int AppDelegate::windowCount() const {
    int count = 0;
    // Minimised windows stay visible to Qt, so they count as the rule wants; menus and tooltips do not.
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        const Qt::WindowType type = widget->windowType();
        if (widget->isVisible() && (type == Qt::Window || type == Qt::Dialog)) {
            ++count;
        }
    }
    return count;
}

std::vector<app::ProjectWindow*> AppDelegate::projectWindows() const {
    std::vector<app::ProjectWindow*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* project = dynamic_cast<app::ProjectWindow*>(widget);
            project != nullptr && widget->isVisible()) {
            windows.push_back(project);
        }
    }
    return windows;
}

void AppDelegate::openProjectChooser() {
    if (!m_chooser) {
        m_chooser = new ProjectChooserWindow(*this, *m_defaults, *m_interaction);
        installMenus(*m_chooser);
    }
    m_chooser->show();
    m_chooser->raise();
    m_chooser->activateWindow();
}

void AppDelegate::requestQuit() {
    QCoreApplication::quit();
}

void AppDelegate::showAbout() {
    QMessageBox::about(QApplication::activeWindow(), tr("About Lumbra"),
                       tr("<h3>Lumbra %1</h3><p>A workbench for the clip metadata of film and television "
                          "post-production.</p>")
                           .arg(QCoreApplication::applicationVersion()));
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event) {
    if (watched != qApp) {
        return QObject::eventFilter(watched, event);
    }
    if (event->type() == QEvent::Quit) {
        // Every way out, the menu, the last window closing or the session ending, passes the quit rules.
        if (m_lifecycle->applicationShouldTerminate() == app::TerminateReply::Cancel) {
            event->ignore();
            return true;
        }
        return false;
    }
    if (event->type() == QEvent::ApplicationStateChange &&
        QGuiApplication::applicationState() == Qt::ApplicationActive) {
        // Coming back to the application: activation and reopen bring the same chooser back.
        m_lifecycle->shouldHandleReopen();
    }
    return QObject::eventFilter(watched, event);
}

} // namespace lumbra::shell
