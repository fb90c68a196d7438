#include "project_chooser_window.h"

#include "app_delegate.h"
#include "main_window.h"
#include "project/project_loader.h"
#include "project/shared_stuff.h"
#include "window_geometry.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDir>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace lumbra::shell {

namespace {

constexpr int kProjectIconSize = 70;
constexpr int kProjectButtonWidth = 150;
constexpr int kPathTextWidth = 300;
const char* const kTagProperty = "tag";

QString toQt(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

// A theme icon where the desktop has one, Qt's own otherwise.
QIcon themeIcon(const char* name, QStyle::StandardPixmap fallback) {
    return QIcon::fromTheme(QString::fromLatin1(name), QApplication::style()->standardIcon(fallback));
}

} // namespace

ProjectChooserWindow::ProjectChooserWindow(AppDelegate& delegate, base::UserDefaults& defaults,
                                           base::UserInteraction& interaction, QWidget* parent)
    : QMainWindow(parent), m_delegate(delegate), m_interaction(interaction),
      m_catalogue(defaults, QDir::homePath().toStdString()) {
    setObjectName(QStringLiteral("projectselector"));
    // The application's display name follows the title on screen.
    setWindowTitle(tr("Projects"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(12);

    // Three exclusive buttons side by side stand for the folder segments.
    auto* segments = new QHBoxLayout;
    segments->setSpacing(0);
    m_folderTypes = new QButtonGroup(this);
    const std::pair<const char*, const char*> segmentNames[] = {
        {"localFolderButton", QT_TR_NOOP("Local")},
        {"sharedFolderButton", QT_TR_NOOP("Shared")},
        {"externalFolderButton", QT_TR_NOOP("External")},
    };
    for (int type = 0; type < 3; ++type) {
        auto* segment = new QPushButton(tr(segmentNames[type].second), central);
        segment->setObjectName(QString::fromLatin1(segmentNames[type].first));
        segment->setCheckable(true);
        segment->setMinimumWidth(90);
        m_folderTypes->addButton(segment, type);
        segments->addWidget(segment);
    }
    m_folderTypes->button(0)->setChecked(true);
    connect(m_folderTypes, &QButtonGroup::idClicked, this, &ProjectChooserWindow::selectFolderType);

    m_pathButton = new QPushButton(themeIcon("folder-open", QStyle::SP_DirOpenIcon), QString(), central);
    m_pathButton->setObjectName(QStringLiteral("pathButton"));
    m_pathButton->setStyleSheet(QStringLiteral("text-align: left; padding: 4px 10px;"));
    m_pathButton->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_pathButton, &QPushButton::clicked, this, &ProjectChooserWindow::pathButtonPressed);

    auto* top = new QHBoxLayout;
    top->setSpacing(12);
    top->addLayout(segments);
    top->addWidget(m_pathButton, 1);
    layout->addLayout(top);

    m_projectsTableView = new QWidget;
    m_projectsTableView->setObjectName(QStringLiteral("projectsTableView"));
    m_grid = new QGridLayout(m_projectsTableView);
    m_grid->setContentsMargins(12, 12, 12, 12);
    m_grid->setHorizontalSpacing(12);
    m_grid->setVerticalSpacing(12);
    m_grid->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    auto* scroll = new QScrollArea(central);
    scroll->setWidget(m_projectsTableView);
    scroll->setWidgetResizable(true);
    scroll->setBackgroundRole(QPalette::Base);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    layout->addWidget(scroll, 1);

    m_emptyLabel = new QLabel(tr("No projects in this folder"), m_projectsTableView);
    m_emptyLabel->setObjectName(QStringLiteral("emptyLabel"));
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setForegroundRole(QPalette::PlaceholderText);

    m_newProjectButton =
        new QPushButton(themeIcon("folder-new", QStyle::SP_FileDialogNewFolder), tr("New project"), central);
    m_newProjectButton->setObjectName(QStringLiteral("newProjectButton"));
    connect(m_newProjectButton, &QPushButton::clicked, this, &ProjectChooserWindow::newProjectButtonPressed);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch(1);
    bottom->addWidget(m_newProjectButton);
    layout->addLayout(bottom);

    setCentralWidget(central);
    resize(3 * kProjectButtonWidth + 2 * 12 + 2 * 12 + 2 * 16 + 40, 480);
    rememberGeometry(*this, QStringLiteral("projectChooser"));
    refresh();
}

ProjectChooserWindow::~ProjectChooserWindow() = default;

QList<QToolButton*> ProjectChooserWindow::projectButtons() const {
    QList<QToolButton*> buttons;
    for (int i = 0; i < m_grid->count(); ++i) {
        if (auto* button = qobject_cast<QToolButton*>(m_grid->itemAt(i)->widget())) {
            buttons.append(button);
        }
    }
    std::sort(buttons.begin(), buttons.end(), [](const QToolButton* a, const QToolButton* b) {
        return a->property(kTagProperty).toInt() < b->property(kTagProperty).toInt();
    });
    return buttons;
}

void ProjectChooserWindow::refresh() {
    m_catalogue.refresh();
    const QString folder = toQt(m_catalogue.folder());
    // A deep path must not widen the window: the button shows its middle elided, the tooltip all of it.
    m_pathButton->setText(m_pathButton->fontMetrics().elidedText(QDir::toNativeSeparators(folder),
                                                                 Qt::ElideMiddle, kPathTextWidth));
    m_pathButton->setToolTip(tr("%1\nChoose the folder that holds these projects").arg(folder));
    m_newProjectButton->setEnabled(m_catalogue.canCreateProject());
    m_newProjectButton->setToolTip(m_catalogue.canCreateProject()
                                       ? tr("Create a project in %1").arg(folder)
                                       : tr("The folder %1 does not exist").arg(folder));
    buildProjectGrid();
}

void ProjectChooserWindow::buildProjectGrid() {
    while (QLayoutItem* item = m_grid->takeAt(0)) {
        // Later, not now: the button whose menu asked for this refresh is still on the stack.
        if (QWidget* widget = item->widget(); widget != m_emptyLabel) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
    const std::vector<std::string>& projects = m_catalogue.availableProjects();
    m_emptyLabel->setVisible(projects.empty());
    if (projects.empty()) {
        m_grid->addWidget(m_emptyLabel, 0, 0, 1, kColumns);
        return;
    }
    const QIcon folderIcon(QStringLiteral(":/images/Folder.svg"));
    for (std::size_t index = 0; index < projects.size(); ++index) {
        const QString name = QString::fromStdString(projects[index]);
        auto* button = new QToolButton(m_projectsTableView);
        button->setObjectName(QStringLiteral("projectButton"));
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setAutoRaise(true);
        button->setIcon(folderIcon);
        button->setIconSize(QSize(kProjectIconSize, kProjectIconSize));
        button->setFixedWidth(kProjectButtonWidth);
        button->setText(button->fontMetrics().elidedText(name, Qt::ElideMiddle, kProjectButtonWidth - 12));
        button->setToolTip(tr("Open project ") + name);
        button->setAccessibleName(name);
        button->setProperty(kTagProperty, static_cast<int>(index));
        button->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(button, &QToolButton::clicked, this, &ProjectChooserWindow::selectProjectWithButton);
        connect(button, &QToolButton::customContextMenuRequested, this,
                [this, button](const QPoint& position) { showProjectMenu(button, position); });
        const int row = static_cast<int>(index) / kColumns;
        const int column = static_cast<int>(index) % kColumns;
        m_grid->addWidget(button, row, column);
    }
}

void ProjectChooserWindow::selectFolderType(int folderType) {
    m_catalogue.setFolderType(folderType);
    refresh();
}

void ProjectChooserWindow::pathButtonPressed() {
    const std::optional<std::filesystem::path> folder = m_interaction.chooseFolder(
        {tr("Choose the projects folder").toStdString(), m_catalogue.folder(), {}});
    if (!folder) {
        return;
    }
    m_catalogue.setFolder(*folder);
    refresh();
}

void ProjectChooserWindow::newProjectButtonPressed() {
    m_delegate.openNewProjectWindow(m_catalogue.folder());
    close();
}

void ProjectChooserWindow::selectProjectWithButton() {
    const auto* button = qobject_cast<QToolButton*>(sender());
    if (button == nullptr) {
        return;
    }
    m_catalogue.select(button->property(kTagProperty).toInt());
    const std::optional<std::filesystem::path> folder = m_catalogue.selectedProjectFolder();
    if (!folder) {
        return;
    }
    auto sharedstuff = std::make_unique<project::SharedStuff>(&m_interaction);
    project::SharedStuff& project = *sharedstuff;
    project.currentFolder = folder->parent_path().string();
    project.projectName = folder->filename().string();
    MainWindowViewController* window = nullptr;
    project::OpenHooks hooks;
    // The window takes the project at step 9; an open that stops before it leaves the project here.
    hooks.makeMainWindow = [&](project::SharedStuff&) -> project::MainWindowLink* {
        window = m_delegate.makeProjectWindow(std::move(sharedstuff));
        window->show();
        return window;
    };
    hooks.closeChooser = [this] { close(); };
    std::string reason;
    const project::OpenResult result = project::openProject(project, hooks, &reason);
    // A refusal that the core explained is shown where the user chose the project.
    if (result != project::OpenResult::opened && !reason.empty() && window == nullptr) {
        m_interaction.showInfo("Cannot open the project", reason, base::AlertStyle::Critical);
    }
    if (result != project::OpenResult::opened && window == nullptr) {
        refresh();
    }
}

void ProjectChooserWindow::showProjectMenu(QToolButton* button, const QPoint& position) {
    const int tag = button->property(kTagProperty).toInt();
    QMenu menu(this);
    QAction* rename =
        menu.addAction(themeIcon("edit-rename", QStyle::SP_FileDialogDetailedView), tr("Rename"));
    QAction* remove = menu.addAction(themeIcon("edit-delete", QStyle::SP_TrashIcon), tr("Delete"));
    QAction* chosen = menu.exec(button->mapToGlobal(position));
    if (chosen == rename) {
        m_catalogue.renameProject(tag, m_interaction);
    } else if (chosen == remove) {
        m_catalogue.deleteProject(tag, m_interaction);
    } else {
        return;
    }
    refresh();
}

} // namespace lumbra::shell
