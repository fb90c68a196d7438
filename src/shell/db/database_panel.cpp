#include "db/database_panel.h"

#include "chain/chainable_master.h"
#include "db/db_column_tools.h"
#include "db/db_editing.h"
#include "db/db_import.h"
#include "db/db_panel_models.h"
#include "db/db_panel_views.h"
#include "main_window.h"
#include "project/shared_stuff.h"
#include "tables/db_table.h"

#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

namespace lumbra::shell {

namespace {

QAction* addCommand(QMenu& menu, const QString& text, DBCommand command) {
    QAction* action = menu.addAction(text);
    action->setData(static_cast<int>(command));
    return action;
}

std::unique_ptr<QMenu> titledMenu() {
    auto menu = std::make_unique<QMenu>();
    menu->setTitle(QStringLiteral("select action"));
    return menu;
}

QLabel* heading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

DatabasePanel::DatabasePanel(QWidget* parent) : ChainableViewController(parent) {
    setObjectName(QStringLiteral("databasePanel"));
    // Two tables side by side under their headings: the databases, then the rows of the chosen one.
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    layout->addWidget(splitter);

    m_listContainer = new QWidget(splitter);
    m_listContainer->setObjectName(QStringLiteral("listContainer"));
    auto* listLayout = new QVBoxLayout(m_listContainer);
    listLayout->setContentsMargins(0, 0, 0, 0);
    listLayout->addWidget(heading(tr("Databases"), m_listContainer));
    m_dbList = new DBPanelList(*this, m_listContainer);
    listLayout->addWidget(m_dbList, 1);

    auto* displayContainer = new QWidget(splitter);
    auto* displayLayout = new QVBoxLayout(displayContainer);
    displayLayout->setContentsMargins(0, 0, 0, 0);
    m_titleStack = heading(QString(), displayContainer);
    m_titleStack->setObjectName(QStringLiteral("titleStack"));
    displayLayout->addWidget(m_titleStack);
    m_displayTable = new DBPanelDisplay(*this, displayContainer);
    m_header = new DBHeaderView(*this, m_displayTable);
    m_displayTable->setHorizontalHeader(m_header);
    auto* delegate = new DBDisplayDelegate(m_displayTable);
    m_displayTable->setItemDelegate(delegate);
    displayLayout->addWidget(m_displayTable, 1);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 3);

    m_instructionsView = new QWidget(m_dbList->viewport());
    m_instructionsView->setObjectName(QStringLiteral("instructionsView"));
    // Clicks and drops go through the instructions to the list under them.
    m_instructionsView->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* instructionsLayout = new QVBoxLayout(m_instructionsView);
    auto* icon = new QLabel(m_instructionsView);
    icon->setObjectName(QStringLiteral("dropIcon"));
    icon->setPixmap(QIcon(QStringLiteral(":/images/drop.svg")).pixmap(48, 48));
    icon->setAlignment(Qt::AlignCenter);
    auto* text = new QLabel(QStringLiteral(" Right-click or \n drop files here \nto add databases"),
                            m_instructionsView);
    text->setObjectName(QStringLiteral("instructionsText"));
    text->setAlignment(Qt::AlignCenter);
    instructionsLayout->addStretch(1);
    instructionsLayout->addWidget(icon);
    instructionsLayout->addWidget(text);
    instructionsLayout->addStretch(1);
    // The instructions cover the list's viewport whatever its size.
    auto* overlay = new QVBoxLayout(m_dbList->viewport());
    overlay->setContentsMargins(0, 0, 0, 0);
    overlay->addWidget(m_instructionsView);

    connect(delegate, &DBDisplayDelegate::editFinished, this, &DatabasePanel::cellEditFinished);
    connect(m_header, &QHeaderView::sectionResized, this,
            [this](int section, int, int newSize) { columnResized(section, newSize); });
}

DatabasePanel::~DatabasePanel() {
    // The views outlive the models by a moment: they let go of them first.
    m_dbList->setModel(nullptr);
    m_displayTable->setModel(nullptr);
}

void DatabasePanel::receive(const ChainableInput& input) {
    ChainableViewController::receive(input);
    if (!sharedstuff()) {
        return;
    }
    if (!m_listModel) {
        m_listModel = std::make_unique<DatabasesListModel>(*sharedstuff());
        m_tableModel = std::make_unique<DatabaseTableModel>(*sharedstuff());
        m_dbList->setModel(m_listModel.get());
        m_displayTable->setModel(m_tableModel.get());
        connect(m_dbList->selectionModel(), &QItemSelectionModel::currentChanged, this,
                [this](const QModelIndex& current) { select(current.isValid() ? current.row() : -1); });
    }
    if (master()) {
        master()->setTitle(QStringLiteral("Manage Databases"));
    }
    reload();
}

void DatabasePanel::afterLayout() {
    showInstructions();
}

void DatabasePanel::reload() {
    if (!m_listModel) {
        return;
    }
    const std::shared_ptr<tables::DBTable> keep = m_selectedTable;
    m_listModel->reload();
    int index = -1;
    if (keep) {
        if (auto found = db::databaseIndex(*sharedstuff(), *keep)) {
            index = static_cast<int>(*found);
        }
    }
    select(index);
    showInstructions();
}

void DatabasePanel::select(int index) {
    if (!m_listModel) {
        return;
    }
    m_selectedTable = m_listModel->table(index);
    m_selectedIndex = m_selectedTable ? index : -1;
    const QModelIndex row = m_listModel->index(m_selectedIndex, 0);
    if (m_dbList->currentIndex() != row) {
        const QSignalBlocker blocker(m_dbList->selectionModel());
        m_dbList->setCurrentIndex(row);
        m_dbList->viewport()->update();
    }
    rebuildDisplay();
}

void DatabasePanel::rebuildDisplay() {
    m_applyingWidths = true;
    m_tableModel->setTable(m_selectedTable);
    m_titleStack->setText(m_selectedTable ? QString::fromStdString(m_selectedTable->name) : QString());
    if (!m_selectedTable) {
        m_applyingWidths = false;
        return;
    }
    // Fitted to the header and the longest value, measured as the view draws them; a dragged width wins.
    for (int section = 0; section < m_tableModel->columnCount(); ++section) {
        const std::string column = m_tableModel->columnName(section);
        if (const auto kept = m_selectedTable->colwidths.find(column);
            kept != m_selectedTable->colwidths.end()) {
            m_header->resizeSection(section, static_cast<int>(kept->second));
            continue;
        }
        int width = m_header->sectionSizeHint(section);
        if (const auto row = db::longestCellRow(*m_selectedTable, column)) {
            const QModelIndex cell = m_tableModel->index(static_cast<int>(*row), section);
            width = std::max(width, m_displayTable->sizeHintForIndex(cell).width());
        }
        m_header->resizeSection(section, width);
    }
    m_applyingWidths = false;
}

void DatabasePanel::showInstructions() {
    m_instructionsView->setVisible(m_listModel && m_listModel->rowCount() == 0);
}

void DatabasePanel::columnResized(int section, int newSize) {
    if (m_applyingWidths || !m_selectedTable) {
        return;
    }
    const std::string column = m_tableModel->columnName(section);
    if (!column.empty()) {
        m_selectedTable->colwidths[column] = newSize;
    }
}

void DatabasePanel::cellEditFinished() {
    if (m_selectedTable && m_selectedTable->hasChanged) {
        changed();
    }
}

void DatabasePanel::addDatabases(const std::vector<std::string>& paths) {
    if (!sharedstuff() || paths.empty()) {
        return;
    }
    const std::vector<tables::DBTable*> added = db::addDatabases(*sharedstuff(), paths);
    reload();
    if (!added.empty()) {
        changed();
    }
}

void DatabasePanel::chooseDatabaseFiles() {
    QStringList patterns;
    for (std::string_view type : db::databaseFileTypes()) {
        patterns.append(QStringLiteral("*.") +
                        QString::fromLatin1(type.data(), static_cast<int>(type.size())));
    }
    const QStringList files = QFileDialog::getOpenFileNames(
        this, tr("Add Database"), QString(), tr("Databases (%1)").arg(patterns.join(QLatin1Char(' '))));
    std::vector<std::string> paths;
    for (const QString& file : files) {
        paths.push_back(file.toStdString());
    }
    addDatabases(paths);
}

std::unique_ptr<QMenu> DatabasePanel::listMenu(int row) const {
    auto menu = titledMenu();
    if (m_listModel && m_listModel->table(row)) {
        addCommand(*menu, QStringLiteral("Rename"), DBCommand::renameDatabase);
        addCommand(*menu, QStringLiteral("Create Bin from DB"), DBCommand::createBin);
        addCommand(*menu, QStringLiteral("Delete"), DBCommand::deleteDatabase);
    }
    addCommand(*menu, QStringLiteral("Add Database"), DBCommand::addDatabase);
    return menu;
}

std::unique_ptr<QMenu> DatabasePanel::displayMenu(int row) const {
    auto menu = titledMenu();
    if (!m_selectedTable) {
        // Rows need a database to go into.
        return menu;
    }
    addCommand(*menu, QStringLiteral("Add Entry"), DBCommand::addEntry);
    if (row >= 0 && static_cast<std::size_t>(row) < m_selectedTable->data.size()) {
        addCommand(*menu, QStringLiteral("Delete"), DBCommand::deleteEntry);
    }
    return menu;
}

std::unique_ptr<QMenu> DatabasePanel::headerMenu(int section) const {
    auto menu = titledMenu();
    const QString column =
        QString::fromStdString(m_tableModel ? m_tableModel->columnName(section) : std::string());
    addCommand(*menu, QStringLiteral("Infer path/filename"), DBCommand::inferPath);
    addCommand(*menu, QStringLiteral("Trim extension"), DBCommand::trimExtension);
    addCommand(*menu, QStringLiteral("Suppress sequence number"), DBCommand::suppressSequence);
    addCommand(*menu, QStringLiteral("Group by ") + column, DBCommand::groupBy);
    menu->addSeparator();
    addCommand(*menu, QStringLiteral("Delete column"), DBCommand::deleteColumn);
    return menu;
}

void DatabasePanel::showMenu(std::unique_ptr<QMenu> menu, QPoint globalPos, int index) {
    if (menu->actions().isEmpty()) {
        return;
    }
    // The chosen item runs once the menu is gone, so that a command may close the panel.
    QAction* chosen = menu->exec(globalPos);
    if (chosen) {
        perform(static_cast<DBCommand>(chosen->data().toInt()), index);
    }
}

void DatabasePanel::perform(DBCommand command, int index) {
    project::SharedStuff* project = sharedstuff();
    if (!project) {
        return;
    }
    const std::shared_ptr<tables::DBTable> listed = m_listModel->table(index);
    switch (command) {
    case DBCommand::addDatabase:
        chooseDatabaseFiles();
        return;
    case DBCommand::renameDatabase:
        if (listed && db::renameDatabase(*project, *listed)) {
            reload();
            changed();
        }
        return;
    case DBCommand::deleteDatabase:
        if (listed && db::deleteDatabase(*project, *listed)) {
            if (listed == m_selectedTable) {
                m_selectedTable.reset();
            }
            reload();
            changed();
        }
        return;
    case DBCommand::createBin:
        createBin(index);
        return;
    case DBCommand::addEntry:
        if (m_selectedTable) {
            const int at =
                m_tableModel->insertEntry(index >= 0 ? std::optional<std::size_t>(index) : std::nullopt);
            m_displayTable->scrollTo(m_tableModel->index(at, 0));
            changed();
        }
        return;
    case DBCommand::deleteEntry:
        if (m_tableModel->removeEntry(index)) {
            changed();
        }
        return;
    case DBCommand::inferPath:
    case DBCommand::trimExtension:
    case DBCommand::suppressSequence:
    case DBCommand::groupBy:
    case DBCommand::deleteColumn:
        runColumnTool(command, index);
        return;
    }
}

void DatabasePanel::runColumnTool(DBCommand command, int section) {
    const std::string column = m_tableModel->columnName(section);
    if (!m_selectedTable || column.empty()) {
        return;
    }
    tables::DBTable& table = *m_selectedTable;
    switch (command) {
    case DBCommand::inferPath:
        db::inferPath(table, column);
        break;
    case DBCommand::trimExtension:
        db::trimExtension(table, column);
        break;
    case DBCommand::suppressSequence:
        db::suppressSequence(table, column);
        break;
    case DBCommand::groupBy:
        db::groupBy(table, column);
        break;
    case DBCommand::deleteColumn:
        table.deleteColumn(column);
        break;
    default:
        return;
    }
    db::tableEdited(*sharedstuff(), table);
    rebuildDisplay();
    changed();
}

void DatabasePanel::createBin(int index) {
    const std::shared_ptr<tables::DBTable> table = m_listModel->table(index);
    if (!table) {
        return;
    }
    db::binFromDatabase(*sharedstuff(), *table);
    changed();
    // The new bin is shown in the boxes, which the panel leaves for.
    if (auto* window = qobject_cast<MainWindowViewController*>(this->window())) {
        window->switchSubcontainer("");
    }
}

void DatabasePanel::changed() {
    sharedstuff()->projectChanged();
}

} // namespace lumbra::shell
