#include "project_window.h"

#include "project_bins_model.h"
#include "project_metadata_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace lumbra::shell {

namespace {

QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}

// Clips of every bin under the node; the summary line under the tree shows them.
std::size_t clipCount(const project::BinsTreeEntry& node) {
    std::size_t count = node.bin && node.bin->table() ? node.bin->table()->data.size() : 0;
    for (const project::TreeNode& child : node.children) {
        count += clipCount(*child);
    }
    return count;
}

} // namespace

ProjectWindow::ProjectWindow(std::unique_ptr<project::SharedStuff> sharedstuff, app::AppLifecycle& lifecycle,
                             app::AppWindows& windows, QWidget* parent)
    : QMainWindow(parent), m_sharedstuff(std::move(sharedstuff)), m_lifecycle(lifecycle), m_windows(windows) {
    setObjectName(QStringLiteral("mainwindow"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_sharedstuff->mainWindow = this;
    m_sharedstuff->delegates.push_back(this);

    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* saveAction = file->addAction(QIcon::fromTheme(QStringLiteral("document-save")), tr("&Save"));
    saveAction->setObjectName(QStringLiteral("saveAction"));
    saveAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    connect(saveAction, &QAction::triggered, this, &ProjectWindow::saveProject);
    QAction* metadata =
        file->addAction(QIcon::fromTheme(QStringLiteral("document-properties")), tr("Project &Metadata…"));
    metadata->setObjectName(QStringLiteral("projectMetadataAction"));
    connect(metadata, &QAction::triggered, this, &ProjectWindow::openProjectMetadataWindow);
    file->addSeparator();
    QAction* close = file->addAction(QIcon::fromTheme(QStringLiteral("window-close")), tr("&Close Project"));
    close->setObjectName(QStringLiteral("closeProjectAction"));
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    connect(close, &QAction::triggered, this, &ProjectWindow::closeProject);
    QAction* quit = file->addAction(QIcon::fromTheme(QStringLiteral("application-exit")), tr("&Quit"));
    quit->setObjectName(QStringLiteral("quitAction"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, this, &ProjectWindow::terminate);

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(6);
    auto* heading = new QLabel(tr("Bins"), central);
    QFont headingFont = heading->font();
    headingFont.setBold(true);
    heading->setFont(headingFont);
    layout->addWidget(heading);

    m_binsModel = new ProjectBinsModel(this);
    m_binsView = new QTreeView(central);
    m_binsView->setObjectName(QStringLiteral("binsView"));
    m_binsView->setModel(m_binsModel);
    m_binsView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_binsView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_binsView->setUniformRowHeights(true);
    m_binsView->setAlternatingRowColors(true);
    m_binsView->header()->setStretchLastSection(false);
    m_binsView->header()->setSectionResizeMode(ProjectBinsModel::NameColumn, QHeaderView::Stretch);
    m_binsView->header()->setSectionResizeMode(ProjectBinsModel::ClipsColumn, QHeaderView::ResizeToContents);
    layout->addWidget(m_binsView, 1);

    m_summary = new QLabel(central);
    m_summary->setObjectName(QStringLiteral("binsSummary"));
    m_summary->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(m_summary);
    setCentralWidget(central);

    m_backupTimer = new QTimer(this);
    m_backupTimer->setObjectName(QStringLiteral("backupTimer"));
    connect(m_backupTimer, &QTimer::timeout, this, [this] { m_sharedstuff->backupTick(); });

    statusBar();
    resize(760, 560);
    refreshTitle();
    reloadBinsLists();
}

ProjectWindow::~ProjectWindow() {
    // The project goes before the child widgets: nothing may show its tree from here on.
    m_binsModel->setRoot(nullptr);
    m_backupTimer->stop();
    m_sharedstuff->mainWindow = nullptr;
    std::erase(m_sharedstuff->delegates, static_cast<project::SharedStuffDelegate*>(this));
}

std::string ProjectWindow::projectName() const {
    return m_sharedstuff->projectName.value_or(std::string());
}

bool ProjectWindow::save() {
    return m_sharedstuff->save();
}

void ProjectWindow::setPythonFlags(app::PythonFlags flags) {
    m_sharedstuff->usePython = flags.usePython;
    m_sharedstuff->installedOTIO = flags.installedOTIO;
}

void ProjectWindow::reloadBinsLists() {
    m_binsModel->setRoot(m_sharedstuff->bins.get());
    m_binsView->expandAll();
    const std::size_t bins = m_sharedstuff->bins ? m_sharedstuff->bins->toarray.size() : 0;
    const std::size_t clips = m_sharedstuff->bins ? clipCount(*m_sharedstuff->bins) : 0;
    const QString binsText = bins == 1 ? tr("1 bin") : tr("%1 bins").arg(bins);
    const QString clipsText = clips == 1 ? tr("1 clip") : tr("%1 clips").arg(clips);
    m_summary->setText(binsText + QStringLiteral(" · ") + clipsText);
}

void ProjectWindow::refreshTitle() {
    const QString name = toQt(projectName());
    setWindowTitle(name.isEmpty() ? tr("Untitled project") : name);
    setWindowFilePath(toQt(m_sharedstuff->projectPath().value_or(std::string())));
}

void ProjectWindow::backupTimerChanged() {
    if (!m_sharedstuff->timer.valid || m_sharedstuff->timer.intervalSeconds <= 0.0) {
        m_backupTimer->stop();
        return;
    }
    m_backupTimer->start(static_cast<int>(m_sharedstuff->timer.intervalSeconds * 1000.0));
}

void ProjectWindow::saveProject() {
    const std::string path = m_sharedstuff->projectPath().value_or(std::string());
    m_sharedstuff->addLog("Saving project to " + path, false, "", tables::NotificationType::OK);
    if (!m_sharedstuff->save()) {
        m_sharedstuff->addLog("ERROR while saving", true, "Not Saved", tables::NotificationType::KO);
        statusBar()->showMessage(tr("The project could not be saved"));
        return;
    }
    m_sharedstuff->addLog("Project saved to " + path, true, "Saved", tables::NotificationType::OK);
    m_sharedstuff->something_to_save = false;
    statusBar()->showMessage(tr("Project saved to %1").arg(toQt(path)), 5000);
}

void ProjectWindow::openProjectMetadataWindow() {
    if (m_sharedstuff->interaction == nullptr) {
        return;
    }
    ProjectMetadataWindow window(*m_sharedstuff, *m_sharedstuff->interaction, this);
    if (window.exec() == QDialog::Accepted) {
        m_sharedstuff->projectChanged();
    }
}

void ProjectWindow::closeProject() {
    close();
}

void ProjectWindow::terminate() {
    if (m_lifecycle.terminateFromProjectWindow(*this)) {
        QCoreApplication::quit();
    }
}

void ProjectWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_shownOnce) {
        m_shownOnce = true;
        m_sharedstuff->restartBackupTimer();
    }
}

void ProjectWindow::closeEvent(QCloseEvent* event) {
    // Windows that an allowed quit closes go without a second question.
    if (m_lifecycle.terminating()) {
        event->accept();
        return;
    }
    if (!m_lifecycle.confirmProjectClose(*this)) {
        event->ignore();
        return;
    }
    m_backupTimer->stop();
    event->accept();
    // A Linux program with no window left is gone, so a closed project hands over to the chooser.
    if (m_windows.windowCount() <= 1) {
        m_windows.openProjectChooser();
    }
}

bool ProjectWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        m_lifecycle.projectWindowBecameKey(*this);
    }
    return QMainWindow::event(event);
}

} // namespace lumbra::shell
