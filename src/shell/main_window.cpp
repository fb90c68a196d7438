#include "main_window.h"

#include "app/bin_saving.h"
#include "app/bins_list_commands.h"
#include "app/layout_menu.h"
#include "base/console.h"
#include "bin_save_dialogs.h"
#include "binbox/bin_box.h"
#include "bins_list.h"
#include "bins_tree_model.h"
#include "boxes_area.h"
#include "chain/layout_generator_view_controller.h"
#include "notifications_box.h"
#include "project/bin.h"
#include "project_metadata_window.h"
#include "qt_text.h"
#include "tables/background_writer.h"
#include "window_geometry.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>
#include <cmath>
#include <filesystem>
#include <functional>

namespace lumbra::shell {

namespace {

const QString importFilter = QStringLiteral("Clip lists (*.ale *.ALE *.edl *.EDL *.csv *.CSV *.tsv *.TSV "
                                            "*.ccc *.CCC *.mhl *.MHL *.aaf *.avb *.fcpxml *.otio);;"
                                            "All files (*)");

// A pane of the window with a small caption over what is added to its layout.
QWidget* captioned(QWidget* parent, const QString& caption) {
    auto* pane = new QWidget(parent);
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(6, 6, 0, 6);
    layout->setSpacing(4);
    auto* label = new QLabel(caption, pane);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    label->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(label);
    return pane;
}

} // namespace

// The project's questions go to the user as before; its log lines and notices come to this window.
class MainWindowViewController::WindowInteraction final : public base::UserInteraction {
public:
    WindowInteraction(base::UserInteraction* inner, MainWindowViewController& window)
        : m_inner(inner), m_window(window) {}

    base::AlertAnswer alert(const base::AlertRequest& request) override {
        if (m_inner == nullptr) {
            return {static_cast<int>(request.buttons.empty() ? 0 : request.buttons.size() - 1), false};
        }
        return m_inner->alert(request);
    }
    std::optional<std::string> askText(const base::TextRequest& request) override {
        return m_inner ? m_inner->askText(request) : std::nullopt;
    }
    std::optional<std::filesystem::path> chooseFolder(const base::FolderRequest& request) override {
        return m_inner ? m_inner->chooseFolder(request) : std::nullopt;
    }
    base::CsvOptions askCsvOptions(const std::string& text, const base::CsvOptions& initial) override {
        return m_inner ? m_inner->askCsvOptions(text, initial) : initial;
    }
    void addLog(const std::string& text, bool notify, const std::string& title,
                base::NotificationType kind) override {
        m_window.addLog(text, notify, title, kind);
    }
    void notify(const base::Notifications& notifications) override {
        m_window.m_notificationsBox->add(notifications);
    }

private:
    base::UserInteraction* m_inner;
    MainWindowViewController& m_window;
}; // namespace lumbra::shell

MainWindowViewController::MainWindowViewController(std::unique_ptr<project::SharedStuff> sharedstuff,
                                                   app::AppLifecycle& lifecycle, app::AppWindows& windows,
                                                   QWidget* parent)
    : QMainWindow(parent), m_sharedstuff(std::move(sharedstuff)), m_lifecycle(lifecycle), m_windows(windows) {
    setObjectName(QStringLiteral("mainwindow"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_projectInteraction = m_sharedstuff->interaction;
    m_interaction = std::make_unique<WindowInteraction>(m_projectInteraction, *this);

    buildCentre();
    buildToolbar();
    buildMenus();

    m_backupTimer = new QTimer(this);
    m_backupTimer->setObjectName(QStringLiteral("backupTimer"));
    connect(m_backupTimer, &QTimer::timeout, this, [this] { m_sharedstuff->backupTick(); });

    m_writer = std::make_unique<tables::BackgroundWriter>([this](const std::string& path) {
        QMetaObject::invokeMethod(
            this, [this, path] { tableWriteFailed(path); }, Qt::QueuedConnection);
    });
    m_sharedstuff->deferredWriter = m_writer.get();
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_writer->waitIdle(); });

    m_sharedstuff->interaction = m_interaction.get();
    m_sharedstuff->mainWindow = this;
    if (std::find(m_sharedstuff->delegates.begin(), m_sharedstuff->delegates.end(), this) ==
        m_sharedstuff->delegates.end()) {
        m_sharedstuff->delegates.push_back(this);
    }

    statusBar();
    resize(1280, 800);
    rememberGeometry(*this, QStringLiteral("mainWindow"));
    refreshTitle();
    reloadBinsLists();
    m_sharedstuff->flushBufferedNotifications();
}

MainWindowViewController::~MainWindowViewController() {
    m_sharedstuff->deferredWriter = nullptr;
    m_writer.reset();
    // The boxes go before the project: nothing may show a bin from here on.
    for (project::Bin* bin : m_sharedstuff->allBins()) {
        bin->setSelected(false);
    }
    m_binsList->binsModel().setRoot(nullptr);
    m_smartBinsList->binsModel().setRoot(nullptr);
    m_backupTimer->stop();
    m_sharedstuff->mainWindow = nullptr;
    m_sharedstuff->interaction = m_projectInteraction;
    std::erase(m_sharedstuff->delegates, static_cast<project::SharedStuffDelegate*>(this));
}

void MainWindowViewController::buildCentre() {
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(QStringLiteral("mainSplitter"));
    splitter->setChildrenCollapsible(false);

    auto* lists = new QSplitter(Qt::Vertical, splitter);
    lists->setChildrenCollapsible(false);
    m_binsList = new BinsList(
        *m_sharedstuff, [this] { return m_sharedstuff->bins; }, captioned(lists, tr("Bins")));
    m_binsList->setObjectName(QStringLiteral("binsList"));
    m_binsList->setInstructions(tr("Right-click or \n drop files here \nto add bins"));
    m_smartBinsList = new SmartBinsList(
        *m_sharedstuff, [this] { return m_sharedstuff->smartbins; }, captioned(lists, tr("Smart Bins")));
    m_smartBinsList->setObjectName(QStringLiteral("smartBinsList"));
    m_smartBinsList->setAcceptsFiles(false);
    m_binsList->parentWidget()->layout()->addWidget(m_binsList);
    m_smartBinsList->parentWidget()->layout()->addWidget(m_smartBinsList);
    lists->setStretchFactor(0, 3);
    lists->setStretchFactor(1, 1);
    connect(m_binsList, &BinsList::filesDropped, this,
            [this](const QStringList& paths, project::ImportTarget target) {
                std::vector<std::string> files;
                for (const QString& path : paths) {
                    files.push_back(path.toStdString());
                }
                addBinsFromFiles(files, target);
            });
    connect(m_binsList, &BinsList::importRequested, this, &MainWindowViewController::addBinFromFile);

    m_boxesArea = new BoxesArea(splitter);
    m_boxesArea->onResize = [this] {
        tileBoxes();
        if (m_subContainer != nullptr) {
            m_subContainer->setGeometry(m_boxesArea->rect());
        }
    };
    // In front of the boxes while a tool is open; it takes every click meant for what lies under it.
    m_subContainer = new QWidget(m_boxesArea);
    m_subContainer->setObjectName(QStringLiteral("subContainer"));
    m_subContainer->setAutoFillBackground(true);
    auto* subLayout = new QVBoxLayout(m_subContainer);
    subLayout->setContentsMargins(0, 0, 0, 0);
    m_subContainer->hide();

    m_logTabView = new QTabWidget(splitter);
    m_logTabView->setObjectName(QStringLiteral("logTabView"));
    m_logTabView->setDocumentMode(true);
    m_notificationsBox = new NotificationsBox(m_logTabView);
    m_logTextView = new QPlainTextEdit(m_logTabView);
    m_logTextView->setObjectName(QStringLiteral("logTextView"));
    m_logTextView->setReadOnly(true);
    m_logTextView->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_logTextView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_logTabView->addTab(m_notificationsBox, tr("Notifications"));
    m_logTabView->addTab(m_logTextView, tr("Log"));

    splitter->addWidget(lists);
    splitter->addWidget(m_boxesArea);
    splitter->addWidget(m_logTabView);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setStretchFactor(2, 0);
    splitter->setSizes({400, 600, 280});
    setCentralWidget(splitter);

    m_fogView = new QWidget(this);
    m_fogView->setObjectName(QStringLiteral("fogView"));
    m_fogView->setStyleSheet(QStringLiteral("background: rgba(0, 0, 0, 60);"));
    m_fogView->hide();
}

QWidget* MainWindowViewController::boxesView() const noexcept {
    return m_boxesArea->canvas();
}

void MainWindowViewController::addLog(const std::string& text, bool notify, const std::string& title,
                                      base::NotificationType kind) {
    base::printLine(text);
    m_log.add(text);
    m_logTextView->setPlainText(toQt(m_log.text()));
    if (notify) {
        m_notificationsBox->add({app::logNotification(text, title, kind)});
    }
}

project::BinImportResult MainWindowViewController::addBinsFromFiles(const std::vector<std::string>& paths,
                                                                    project::ImportTarget target) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    project::BinImportResult result = project::addBinsFromFiles(*m_sharedstuff, paths, target);
    QApplication::restoreOverrideCursor();
    // The cards say how many; the log keeps which, one line per file that became a bin.
    for (const project::Bin* bin : result.bins) {
        addLog("Successfully loaded " + bin->table()->tablename, false, "", base::NotificationType::OK);
    }
    reloadBinsLists();
    return result;
}

void MainWindowViewController::addBinFromFile(project::ImportTarget target) {
    setFog(true);
    const QStringList files =
        QFileDialog::getOpenFileNames(this, tr("Select files"), QString(), importFilter);
    setFog(false);
    if (files.isEmpty()) {
        return;
    }
    std::vector<std::string> paths;
    for (const QString& file : files) {
        paths.push_back(file.toStdString());
    }
    addBinsFromFiles(paths, target);
}

void MainWindowViewController::switchSubcontainer(const std::string& name) {
    const std::string wanted = name == m_currentSubcontainer ? std::string() : name;
    if (m_panel) {
        m_panel->deleteLater();
        m_panel = nullptr;
    }
    m_subContainer->hide();
    m_currentSubcontainer.clear();
    const auto factory = panels().find(wanted);
    if (wanted.empty() || factory == panels().end()) {
        m_binsList->setAcceptsFiles(true);
        updateToolButtons();
        reloadBinsLists();
        refreshOpenBoxes();
        return;
    }
    m_panel = factory->second(*m_sharedstuff, m_subContainer);
    m_subContainer->layout()->addWidget(m_panel);
    m_subContainer->setGeometry(m_boxesArea->rect());
    m_subContainer->show();
    m_subContainer->raise();
    m_currentSubcontainer = wanted;
    m_binsList->setAcceptsFiles(false);
    updateToolButtons();
    refreshOpenBoxes();
}

void MainWindowViewController::tileBoxes() {
    m_tilePending = false;
    std::vector<QWidget*> shown;
    std::vector<project::Bin*> open;
    for (project::Bin* bin : m_sharedstuff->openBins()) {
        if (bin->selected()) {
            open.push_back(bin);
        }
    }
    // A margin keeps the boxes off the lists and the notifications beside them.
    constexpr int margin = 8;
    QSize room = m_boxesArea->maximumViewportSize() - QSize(2 * margin, 2 * margin);
    std::vector<app::BoxFrame> frames;
    if (m_viewMode != app::ViewMode::onlyone && !open.empty()) {
        frames = app::tileFrames(open.size(), room.width(), room.height(), m_multiViewMode);
        // Boxes that would come out smaller than a box may be make the canvas larger, and the area scrolls.
        double narrowest = room.width();
        double lowest = room.height();
        for (const app::BoxFrame& frame : frames) {
            narrowest = std::min(narrowest, frame.width);
            lowest = std::min(lowest, frame.height);
        }
        const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
        const QSize visible = room;
        if (narrowest < BinBox::smallestWidth) {
            room.rwidth() = static_cast<int>(
                std::ceil(visible.width() * BinBox::smallestWidth / std::max(narrowest, 1.0)));
            room.rheight() -= scrollBar;
        }
        if (lowest < BinBox::smallestHeight) {
            room.rheight() = static_cast<int>(
                std::ceil(visible.height() * BinBox::smallestHeight / std::max(lowest, 1.0)));
            if (room.width() == visible.width()) {
                room.rwidth() -= scrollBar;
            }
        }
        if (room != visible) {
            frames = app::tileFrames(open.size(), room.width(), room.height(), m_multiViewMode);
        }
    }
    m_boxesArea->canvas()->resize(room + QSize(2 * margin, 2 * margin));
    const QRect area(QPoint(margin, margin), room);
    auto boxOf = [](project::Bin* bin) { return dynamic_cast<QWidget*>(bin->box()); };
    if (m_viewMode == app::ViewMode::onlyone) {
        project::Bin* active = m_sharedstuff->activeBin;
        if (active != nullptr && active->selected()) {
            if (QWidget* box = boxOf(active)) {
                box->setGeometry(area);
                shown.push_back(box);
                box->setFocus();
            }
        }
    } else {
        for (std::size_t i = 0; i < open.size(); ++i) {
            if (QWidget* box = boxOf(open[i])) {
                const app::BoxFrame& f = frames[i];
                box->setGeometry(QRectF(area.x() + f.x, area.y() + f.y, f.width, f.height).toRect());
                shown.push_back(box);
            }
        }
    }
    for (QWidget* child :
         m_boxesArea->canvas()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        child->setVisible(std::find(shown.begin(), shown.end(), child) != shown.end());
    }
    if (m_subContainer->isVisible()) {
        m_subContainer->raise();
    }
}

void MainWindowViewController::setViewMode(app::ViewMode mode) {
    m_viewMode = mode;
    m_viewModeAction->setChecked(mode == app::ViewMode::onlyone);
    reloadBinsLists();
}

void MainWindowViewController::setMultiViewMode(app::MultiViewMode mode) {
    m_multiViewMode = mode;
    const int tag = mode == app::MultiViewMode::portrait ? 1 : mode == app::MultiViewMode::landscape ? 2 : 0;
    for (QAction* action : m_multiViewGroup->actions()) {
        action->setChecked(action->data().toInt() == tag);
    }
    reloadBinsLists();
}

std::string MainWindowViewController::projectName() const {
    return m_sharedstuff->projectName.value_or(std::string());
}

bool MainWindowViewController::save() {
    const bool saved = m_sharedstuff->save();
    if (saved) {
        m_sharedstuff->something_to_save = false;
    }
    return saved;
}

bool MainWindowViewController::hasUnsavedChanges() const {
    return m_sharedstuff->something_to_save;
}

void MainWindowViewController::setPythonFlags(app::PythonFlags flags) {
    m_sharedstuff->usePython = flags.usePython;
    m_sharedstuff->installedOTIO = flags.installedOTIO;
}

void MainWindowViewController::reloadBinsLists() {
    refreshTitle();
    m_binsList->reload();
    m_smartBinsList->reload();
    tileBoxes();
}

void MainWindowViewController::refreshOpenBoxes() {
    for (project::Bin* bin : m_sharedstuff->openBins()) {
        if (bin->selected() && bin->box() != nullptr) {
            bin->box()->refresh();
        }
    }
}

void MainWindowViewController::refreshTitle() {
    // The project alone: the application's display name follows it on screen.
    setWindowTitle(toQt(projectName()));
    setWindowFilePath(toQt(m_sharedstuff->projectPath().value_or(std::string())));
}

void MainWindowViewController::backupTimerChanged() {
    if (!m_sharedstuff->timer.valid || m_sharedstuff->timer.intervalSeconds <= 0.0) {
        m_backupTimer->stop();
        return;
    }
    m_backupTimer->start(static_cast<int>(m_sharedstuff->timer.intervalSeconds * 1000.0));
}

void MainWindowViewController::setFog(bool shown) {
    m_fogView->setGeometry(rect());
    m_fogView->setVisible(shown);
    if (shown) {
        m_fogView->raise();
    }
}

std::unique_ptr<project::BinBoxLink> MainWindowViewController::makeBox(project::Bin& bin) {
    return std::make_unique<BinBox>(bin, *m_sharedstuff, *this);
}

void MainWindowViewController::toggleViewMode() {
    setViewMode(m_viewMode == app::ViewMode::onlyone ? app::ViewMode::multiple : app::ViewMode::onlyone);
}

QWidget* MainWindowViewController::boxesArea() {
    return m_boxesArea->canvas();
}

void MainWindowViewController::boxActivated(BinBox&) {
    // Showing one bin at a time follows the active one.
    if (m_viewMode == app::ViewMode::onlyone) {
        tileBoxes();
    }
}

void MainWindowViewController::showNotification(const base::NotificationData& notification) {
    m_notificationsBox->add({notification});
}

void MainWindowViewController::editLayout() {
    project::Bin* bin = m_sharedstuff->activeBin;
    if (bin == nullptr) {
        statusBar()->showMessage(tr("No active bin"), 5000);
        addLog("No active bin", true, "", base::NotificationType::WARNING);
        return;
    }
    if (openLayoutEditor(*m_sharedstuff, bin, this) && bin->box() != nullptr) {
        bin->box()->refresh();
    }
}

void MainWindowViewController::showBox(project::Bin&, bool) {
    // Several bins open or close in one command; they are laid out once it is over.
    if (!m_tilePending) {
        m_tilePending = true;
        QTimer::singleShot(0, this, [this] {
            if (m_tilePending) {
                tileBoxes();
            }
        });
    }
}

void MainWindowViewController::saveProject() {
    const std::string path = m_sharedstuff->projectPath().value_or(std::string());
    m_sharedstuff->addLog("Saving project to " + path, false, "", base::NotificationType::OK);
    if (!m_sharedstuff->save()) {
        m_sharedstuff->addLog("ERROR while saving", true, "Not Saved", base::NotificationType::KO);
        return;
    }
    m_sharedstuff->addLog("Project saved to " + path, true, "Saved", base::NotificationType::OK);
    m_sharedstuff->something_to_save = false;
}

namespace {

// The copy and the archive ask for the parent folder the same way and log the same way.
void saveUnderChosenFolder(project::SharedStuff& sharedstuff,
                           const std::function<bool(const std::string&, std::string*)>& write) {
    base::FolderRequest request;
    request.title = "Select parent folder where to save the project";
    request.message = "Select parent folder where to save the project";
    request.startFolder = sharedstuff.currentFolder.value_or(std::string());
    if (sharedstuff.mainWindow != nullptr) {
        sharedstuff.mainWindow->setFog(true);
    }
    const auto folder =
        sharedstuff.interaction ? sharedstuff.interaction->chooseFolder(request) : std::nullopt;
    if (sharedstuff.mainWindow != nullptr) {
        sharedstuff.mainWindow->setFog(false);
    }
    if (!folder) {
        return;
    }
    std::string path;
    if (write(folder->string(), &path)) {
        sharedstuff.addLog("Successfully saved to " + path, true, "", base::NotificationType::OK);
    } else {
        sharedstuff.addLog("Error while saving to " + (path.empty() ? folder->string() : path), true, "",
                           base::NotificationType::KO);
    }
}

} // namespace

void MainWindowViewController::saveAProjectCopy() {
    saveUnderChosenFolder(*m_sharedstuff, [this](const std::string& url, std::string* path) {
        return m_sharedstuff->saveCopy(url, path).saved;
    });
}

void MainWindowViewController::saveProjectAsZip() {
    saveUnderChosenFolder(*m_sharedstuff, [this](const std::string& url, std::string* path) {
        return m_sharedstuff->saveCompressed(url, path);
    });
}

project::Bin* MainWindowViewController::commandBin() const {
    for (project::BinsTreeEntry* node : m_binsList->selectedNodes()) {
        if (node->bin != nullptr) {
            return node->bin.get();
        }
    }
    return m_sharedstuff->activeBin;
}

void MainWindowViewController::saveBinAsALE() {
    project::Bin* bin = commandBin();
    if (bin == nullptr || bin->table() == nullptr) {
        return;
    }
    m_sharedstuff->addLog("Saving bin " + bin->table()->tablename, false, "", base::NotificationType::OK);
    setFog(true);
    const BinSaveChoice choice =
        askAleSavePath(this, toQt(bin->table()->tablename), app::offersFilmFormat(*m_sharedstuff),
                       m_sharedstuff->saving_film_format);
    setFog(false);
    if (choice.filmFormat) {
        m_sharedstuff->saving_film_format = *choice.filmFormat;
    }
    if (!choice.path) {
        app::logChooserFailure(*m_sharedstuff, choice.cancelled);
        return;
    }
    app::saveBinAsALE(*m_sharedstuff, *bin, choice.path->toStdString());
}

void MainWindowViewController::saveBinAsCSV() {
    project::Bin* bin = commandBin();
    if (bin == nullptr || bin->table() == nullptr) {
        return;
    }
    m_sharedstuff->addLog("Saving bin " + bin->table()->tablename, false, "", base::NotificationType::OK);
    setFog(true);
    const BinSaveChoice choice = askCsvSavePath(this, toQt(bin->table()->tablename),
                                                toQt(app::rememberedCsvSeparator(*m_sharedstuff)));
    setFog(false);
    if (choice.separatorTitle) {
        m_sharedstuff->options["csvSeparator"] = choice.separatorTitle->toStdString();
    }
    if (!choice.path) {
        app::logChooserFailure(*m_sharedstuff, choice.cancelled);
        return;
    }
    app::saveBinAsCSV(*m_sharedstuff, *bin, choice.path->toStdString(),
                      app::rememberedCsvSeparator(*m_sharedstuff), choice.exportHeaders);
}

void MainWindowViewController::openProjectMetadataWindow() {
    if (m_projectInteraction == nullptr) {
        return;
    }
    ProjectMetadataWindow window(*m_sharedstuff, *m_projectInteraction, this);
    if (window.exec() == QDialog::Accepted) {
        m_sharedstuff->projectChanged();
    }
}

void MainWindowViewController::showProjectInFileManager() {
    const auto path = m_sharedstuff->projectPath();
    if (path && !QDesktopServices::openUrl(QUrl::fromLocalFile(toQt(*path)))) {
        addLog("No file manager opened the project folder " + *path, true, "", base::NotificationType::KO);
    }
}

void MainWindowViewController::closeProject() {
    close();
}

void MainWindowViewController::terminate() {
    if (m_lifecycle.terminateFromProjectWindow(*this)) {
        QCoreApplication::quit();
    }
}

void MainWindowViewController::tableWriteFailed(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().filename().string();
    for (project::Bin* bin : m_sharedstuff->allBins()) {
        if (folder.ends_with(" - " + bin->uuid())) {
            bin->hasChanged = true;
        }
    }
    m_sharedstuff->something_to_save = true;
    addLog("ERROR while saving file " + path, true, "Save Failed", base::NotificationType::KO);
}

void MainWindowViewController::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_shownOnce) {
        m_shownOnce = true;
        m_sharedstuff->restartBackupTimer();
        tileBoxes();
    }
}

void MainWindowViewController::closeEvent(QCloseEvent* event) {
    // Windows that an allowed quit closes go without a second question.
    if (m_lifecycle.terminating()) {
        m_writer->waitIdle();
        event->accept();
        return;
    }
    if (!m_lifecycle.confirmProjectClose(*this)) {
        event->ignore();
        return;
    }
    m_backupTimer->stop();
    m_writer->waitIdle();
    event->accept();
    // A Linux program with no window left is gone, so a closed project hands over to the chooser.
    if (m_windows.windowCount() <= 1) {
        m_windows.openProjectChooser();
    }
}

bool MainWindowViewController::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        m_lifecycle.projectWindowBecameKey(*this);
    }
    return QMainWindow::event(event);
}

} // namespace lumbra::shell
