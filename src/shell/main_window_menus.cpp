#include "app/bins_list_commands.h"
#include "app/layout_menu.h"
#include "bins_list.h"
#include "main_window.h"
#include "qt_text.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTabWidget>
#include <QToolBar>

// The main window's menu bar and toolbar.
namespace lumbra::shell {

namespace {

// The toolbar's tools: the name switchSubcontainer knows, the label, the icon, and what to call the
// tool while this build lacks it.
struct ToolSpec {
    const char* name;
    const char* label;
    const char* icon;
    const char* missing;
};

constexpr ToolSpec toolSpecs[] = {
    {"merge", "Merge", ":/images/merge.svg", "the merge tool"},
    {"append", "Append", ":/images/append.svg", "the append tool"},
    {"findreplace", "Find and Replace", ":/images/find-replace.svg", "the find and replace tool"},
    {"checkcompare", "Check and Compare", ":/images/check-compare.svg", "the check and compare tools"},
    {"report", "Report", ":/images/report.svg", "the report presets"},
    {"export", "Export", ":/images/export.svg", "the export presets"},
    {"database", "Databases", ":/images/database.svg", "the database panel"},
    {"pivot", "Pivot", ":/images/pivot.svg", "the pivot tables"},
    {"map", "Layout Mapping", ":/images/layout-mapping.svg", "the layout mapping presets"},
};

} // namespace

std::map<std::string, MainWindowViewController::PanelFactory>& MainWindowViewController::panels() {
    static std::map<std::string, MainWindowViewController::PanelFactory> factories;
    return factories;
}

void MainWindowViewController::registerPanel(const std::string& name, PanelFactory factory) {
    panels()[name] = std::move(factory);
}

void MainWindowViewController::buildToolbar() {
    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("toolbar"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    bar->setIconSize(QSize(24, 24));

    m_homeAction = bar->addAction(QIcon(QStringLiteral(":/images/home.svg")), tr("Bins"));
    m_homeAction->setObjectName(QStringLiteral("homeButton"));
    m_homeAction->setToolTip(tr("Show the open bins"));
    m_homeAction->setCheckable(true);
    connect(m_homeAction, &QAction::triggered, this, [this] { switchSubcontainer(""); });
    bar->addSeparator();

    for (const ToolSpec& spec : toolSpecs) {
        QAction* action = bar->addAction(QIcon(QString::fromLatin1(spec.icon)), tr(spec.label));
        action->setObjectName(QString::fromLatin1(spec.name) + QStringLiteral("Button"));
        action->setCheckable(true);
        const std::string name = spec.name;
        connect(action, &QAction::triggered, this, [this, name] { switchSubcontainer(name); });
        m_toolButtons.push_back({name, action});
        if (std::string_view(spec.name) == "checkcompare" || std::string_view(spec.name) == "database") {
            bar->addSeparator();
        }
    }
    bar->addSeparator();

    QAction* newGroup = bar->addAction(QIcon(QStringLiteral(":/images/new-group.svg")), tr("New Group"));
    newGroup->setObjectName(QStringLiteral("newBinGroupButton"));
    connect(newGroup, &QAction::triggered, this, [this] {
        app::addGroup(*m_sharedstuff, *m_sharedstuff->bins, m_binsList->targetAt(m_binsList->currentIndex()));
    });
    QAction* newBin = bar->addAction(QIcon(QStringLiteral(":/images/new-bin.svg")), tr("New Bin"));
    newBin->setObjectName(QStringLiteral("newBinButton"));
    connect(newBin, &QAction::triggered, this, [this] {
        app::createEmptyBin(*m_sharedstuff, m_binsList->targetAt(m_binsList->currentIndex()));
    });
    QAction* newSmartBin =
        bar->addAction(QIcon(QStringLiteral(":/images/new-smartbin.svg")), tr("New SmartBin"));
    newSmartBin->setObjectName(QStringLiteral("newSmartBinButton"));
    newSmartBin->setEnabled(false);
    newSmartBin->setToolTip(tr("New SmartBin: the smart bin creator is not in this version yet"));
    updateToolButtons();
}

void MainWindowViewController::updateToolButtons() {
    const auto& factories = panels();
    for (const ToolButton& button : m_toolButtons) {
        const bool available = factories.contains(button.name);
        button.action->setEnabled(available);
        button.action->setChecked(button.name == m_currentSubcontainer);
        for (const ToolSpec& spec : toolSpecs) {
            if (button.name == spec.name) {
                button.action->setToolTip(
                    available
                        ? tr(spec.label)
                        : tr("%1: %2 is not in this version yet").arg(tr(spec.label), tr(spec.missing)));
            }
        }
    }
    m_homeAction->setChecked(m_currentSubcontainer.empty());
}

void MainWindowViewController::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* import =
        file->addAction(QIcon::fromTheme(QStringLiteral("document-open")), tr("&Import Files…"));
    import->setObjectName(QStringLiteral("importAction"));
    import->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    connect(import, &QAction::triggered, this, [this] { addBinFromFile(); });
    file->addSeparator();
    QAction* saveAction = file->addAction(QIcon::fromTheme(QStringLiteral("document-save")), tr("&Save"));
    saveAction->setObjectName(QStringLiteral("saveAction"));
    saveAction->setShortcut(QKeySequence::Save);
    connect(saveAction, &QAction::triggered, this, &MainWindowViewController::saveProject);
    QAction* copy =
        file->addAction(QIcon::fromTheme(QStringLiteral("document-save-as")), tr("Save a &Copy…"));
    copy->setObjectName(QStringLiteral("saveCopyAction"));
    copy->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(copy, &QAction::triggered, this, &MainWindowViewController::saveAProjectCopy);
    QAction* zip = file->addAction(tr("Save as &ZIP Archive…"));
    zip->setObjectName(QStringLiteral("saveZipAction"));
    connect(zip, &QAction::triggered, this, &MainWindowViewController::saveProjectAsZip);
    file->addSeparator();
    QAction* metadata =
        file->addAction(QIcon::fromTheme(QStringLiteral("document-properties")), tr("Project &Metadata…"));
    metadata->setObjectName(QStringLiteral("projectMetadataAction"));
    connect(metadata, &QAction::triggered, this, &MainWindowViewController::openProjectMetadataWindow);
    QAction* folder =
        file->addAction(QIcon::fromTheme(QStringLiteral("folder-open")), tr("Show Project &Folder"));
    folder->setObjectName(QStringLiteral("showProjectFolderAction"));
    connect(folder, &QAction::triggered, this, &MainWindowViewController::showProjectInFileManager);
    file->addSeparator();
    QAction* chooser =
        file->addAction(QIcon::fromTheme(QStringLiteral("folder")), tr("Open Project Chooser…"));
    chooser->setObjectName(QStringLiteral("projectChooserAction"));
    chooser->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    connect(chooser, &QAction::triggered, this, [this] { m_windows.openProjectChooser(); });
    QAction* close = file->addAction(QIcon::fromTheme(QStringLiteral("window-close")), tr("&Close Project"));
    close->setObjectName(QStringLiteral("closeProjectAction"));
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    connect(close, &QAction::triggered, this, &MainWindowViewController::closeProject);
    QAction* quit = file->addAction(QIcon::fromTheme(QStringLiteral("application-exit")), tr("&Quit"));
    quit->setObjectName(QStringLiteral("quitAction"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, this, &MainWindowViewController::terminate);

    QMenu* bins = menuBar()->addMenu(tr("&Bin"));
    QAction* newBin = bins->addAction(QIcon(QStringLiteral(":/images/new-bin.svg")), tr("&New Bin"));
    newBin->setShortcut(QKeySequence::New);
    connect(newBin, &QAction::triggered, this, [this] {
        app::createEmptyBin(*m_sharedstuff, m_binsList->targetAt(m_binsList->currentIndex()));
    });
    QAction* newGroup = bins->addAction(QIcon(QStringLiteral(":/images/new-group.svg")), tr("New &Group"));
    newGroup->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    connect(newGroup, &QAction::triggered, this, [this] {
        app::addGroup(*m_sharedstuff, *m_sharedstuff->bins, m_binsList->targetAt(m_binsList->currentIndex()));
    });
    bins->addSeparator();
    QAction* open = bins->addAction(tr("&Open Selected Bins"));
    open->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    connect(open, &QAction::triggered, this,
            [this] { app::setBinsOpen(*m_sharedstuff, m_binsList->selectedNodes(), true); });
    QAction* closeBins = bins->addAction(tr("C&lose Selected Bins"));
    closeBins->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_W));
    connect(closeBins, &QAction::triggered, this,
            [this] { app::setBinsOpen(*m_sharedstuff, m_binsList->selectedNodes(), false); });
    bins->addAction(tr("Open &All Bins"), this,
                    [this] { app::setBinsOpen(*m_sharedstuff, {m_sharedstuff->bins.get()}, true); });
    bins->addAction(tr("Close All Bins"), this, [this] {
        app::setBinsOpen(*m_sharedstuff, {m_sharedstuff->bins.get(), m_sharedstuff->smartbins.get()}, false);
    });
    bins->addSeparator();
    QAction* saveAle = bins->addAction(tr("Save Bin as &ALE…"));
    saveAle->setObjectName(QStringLiteral("saveBinAction"));
    saveAle->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    connect(saveAle, &QAction::triggered, this, &MainWindowViewController::saveBinAsALE);
    QAction* saveCsv = bins->addAction(tr("Save Bin as &CSV…"));
    saveCsv->setObjectName(QStringLiteral("saveCSVAction"));
    connect(saveCsv, &QAction::triggered, this, &MainWindowViewController::saveBinAsCSV);

    QMenu* layouts = menuBar()->addMenu(tr("&Layout"));
    QAction* editor = layouts->addAction(tr("Layout &Editor…"));
    editor->setObjectName(QStringLiteral("layoutEditorAction"));
    editor->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    connect(editor, &QAction::triggered, this, &MainWindowViewController::editLayout);
    layouts->addSeparator();
    QMenu* setDefault = layouts->addMenu(tr("Set as &Default"));
    setDefault->setObjectName(QStringLiteral("menuSetAsDefault"));
    connect(setDefault, &QMenu::aboutToShow, this, [this, setDefault] { fillLayoutMenu(setDefault, true); });
    QMenu* applyToAll = layouts->addMenu(tr("&Apply to Open Bins"));
    applyToAll->setObjectName(QStringLiteral("menuApplyToAll"));
    connect(applyToAll, &QMenu::aboutToShow, this, [this, applyToAll] { fillLayoutMenu(applyToAll, false); });

    QMenu* view = menuBar()->addMenu(tr("&View"));
    view->addAction(m_homeAction);
    m_viewModeAction =
        view->addAction(QIcon(QStringLiteral(":/images/view-one.svg")), tr("Show &Only the Active Bin"));
    m_viewModeAction->setObjectName(QStringLiteral("viewModeAction"));
    m_viewModeAction->setCheckable(true);
    m_viewModeAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Backslash));
    connect(m_viewModeAction, &QAction::triggered, this,
            [this](bool one) { setViewMode(one ? app::ViewMode::onlyone : app::ViewMode::multiple); });
    QMenu* tiling = view->addMenu(QIcon(QStringLiteral(":/images/view-all.svg")), tr("&Tiling"));
    m_multiViewGroup = new QActionGroup(this);
    const std::pair<const char*, int> tilings[] = {
        {"&Standard", 0}, {"&Portrait (Side by Side)", 1}, {"&Landscape (Stacked)", 2}};
    for (const auto& [label, tag] : tilings) {
        QAction* action = tiling->addAction(tr(label));
        action->setCheckable(true);
        action->setData(tag);
        action->setChecked(tag == 0);
        action->setObjectName(QStringLiteral("multiViewMode%1").arg(tag));
        m_multiViewGroup->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, tag] { setMultiViewMode(app::multiViewModeForTag(tag)); });
    }
    m_gangAction = view->addAction(QIcon(QStringLiteral(":/images/gang.svg")), tr("&Gang Scrolling"));
    m_gangAction->setObjectName(QStringLiteral("gangAction"));
    m_gangAction->setCheckable(true);
    m_gangAction->setChecked(m_sharedstuff->gang);
    connect(m_gangAction, &QAction::toggled, this, [this](bool on) { m_sharedstuff->gang = on; });
    view->addSeparator();
    view->addAction(tr("&Notifications"), this, [this] { m_logTabView->setCurrentIndex(0); });
    view->addAction(tr("&Log"), this, [this] { m_logTabView->setCurrentIndex(1); });
    view->addSeparator();
    // The window manager maximizes and restores, so the window never spills past its panels and docks.
    QAction* maximize = view->addAction(tr("&Maximize"));
    maximize->setObjectName(QStringLiteral("maximizeAction"));
    connect(maximize, &QAction::triggered, this, [this] { isMaximized() ? showNormal() : showMaximized(); });

    QMenu* tools = menuBar()->addMenu(tr("&Tools"));
    for (const ToolButton& button : m_toolButtons) {
        tools->addAction(button.action);
    }
}

void MainWindowViewController::fillLayoutMenu(QMenu* menu, bool setDefault) {
    menu->clear();
    for (const app::LayoutMenuItem& item : app::layoutMenuItems(*m_sharedstuff)) {
        const std::shared_ptr<tables::ColumnsLayout> layout = item.layout;
        menu->addAction(toQt(item.title), this, [this, layout, setDefault] {
            if (setDefault) {
                app::setDefaultLayout(*m_sharedstuff, *layout);
            } else {
                app::applyLayoutToOpenBins(*m_sharedstuff, layout);
            }
        });
    }
}

} // namespace lumbra::shell
