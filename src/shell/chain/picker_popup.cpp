#include "chain/picker_popup.h"

#include "app/fields_selection.h"
#include "base/console.h"
#include "project/shared_stuff.h"
#include "tables/db_table.h"

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>

namespace lumbra::shell {

namespace {

constexpr int loadFromFileIndex = -1;

DBSetter::DatabaseReader& databaseReader() {
    static DBSetter::DatabaseReader reader;
    return reader;
}

} // namespace

PickerPopup::PickerPopup(QWidget* parent) : QFrame(parent, Qt::Popup) {
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameShape(QFrame::StyledPanel);
    m_body = new QVBoxLayout(this);
    m_body->setContentsMargins(6, 6, 6, 6);
    m_body->setSpacing(4);
    m_searchField = new QLineEdit(this);
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setPlaceholderText(tr("Search"));
    m_searchField->setClearButtonEnabled(true);
    m_body->addWidget(m_searchField);
    connect(m_searchField, &QLineEdit::textChanged, this, [this] { searchChanged(); });
    connect(m_searchField, &QLineEdit::returnPressed, this, [this] { chooseFirst(); });
    resize(260, 320);
}

void PickerPopup::popUp(QWidget* anchor) {
    QPoint at = anchor ? anchor->mapToGlobal(QPoint(0, anchor->height())) : QCursor::pos();
    if (const QScreen* screen = anchor ? anchor->screen() : QGuiApplication::primaryScreen()) {
        const QRect room = screen->availableGeometry();
        at.setX(std::clamp(at.x(), room.left(), std::max(room.left(), room.right() - width())));
        if (at.y() + height() > room.bottom() && anchor) {
            at.setY(anchor->mapToGlobal(QPoint(0, 0)).y() - height());
        }
    }
    move(at);
    show();
    m_searchField->setFocus();
}

ListPicker::ListPicker(QWidget* parent) : PickerPopup(parent) {
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("pickerList"));
    m_list->setUniformItemSizes(true);
    body()->addWidget(m_list, 1);
    connect(m_list, &QListWidget::itemClicked, this, &ListPicker::chooseItem);
    connect(m_list, &QListWidget::itemActivated, this, &ListPicker::chooseItem);
}

void ListPicker::setRows(const std::vector<std::string>& titles) {
    m_list->clear();
    for (std::size_t i = 0; i < titles.size(); ++i) {
        auto* item = new QListWidgetItem(QString::fromStdString(titles[i]), m_list);
        item->setData(Qt::UserRole, static_cast<int>(i));
    }
    searchChanged();
}

void ListPicker::addFixedRow(const QString& title, const QIcon& icon, int index) {
    auto* item = new QListWidgetItem(icon, title, m_list);
    item->setData(Qt::UserRole, index);
    // A fixed row is no name of the list: the search leaves it standing.
    item->setData(Qt::UserRole + 1, true);
}

void ListPicker::searchChanged() {
    const std::string search = searchField()->text().toStdString();
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem* item = m_list->item(row);
        const bool fixed = item->data(Qt::UserRole + 1).toBool();
        item->setHidden(!fixed && !app::matchesFilter(item->text().toStdString(), search));
    }
}

void ListPicker::chooseFirst() {
    for (int row = 0; row < m_list->count(); ++row) {
        if (!m_list->item(row)->isHidden()) {
            chooseItem(m_list->item(row));
            return;
        }
    }
}

void ListPicker::chooseItem(QListWidgetItem* item) {
    if (item == nullptr) {
        return;
    }
    const int index = item->data(Qt::UserRole).toInt();
    choose(index);
    close();
}

LayoutSetter::LayoutSetter(QWidget* parent) : ListPicker(parent) {
    setObjectName(QStringLiteral("LayoutSetter"));
}

void LayoutSetter::setup(project::SharedStuff& sharedstuff, LayoutSettable* caller, int tag,
                         const tables::LayoutList* layouts) {
    m_sharedstuff = &sharedstuff;
    m_layoutsettableViewController = caller;
    m_rettag = tag;
    m_layouts = layouts ? *layouts : sharedstuff.projectLayouts.layouts;
    std::vector<std::string> names;
    names.reserve(m_layouts.size());
    for (const auto& layout : m_layouts) {
        names.push_back(layout->name);
    }
    setRows(names);
}

void LayoutSetter::choose(int index) {
    if (m_layoutsettableViewController && index >= 0 && index < static_cast<int>(m_layouts.size())) {
        m_layoutsettableViewController->setLayout(m_layouts[static_cast<std::size_t>(index)], m_rettag);
    }
}

ColumnSetter::ColumnSetter(QWidget* parent) : ListPicker(parent) {
    setObjectName(QStringLiteral("ColumnSetter"));
}

void ColumnSetter::setup(std::vector<std::string> cols, ColumnSettable* caller, int tag) {
    m_cols = std::move(cols);
    m_columnsettableViewController = caller;
    m_rettag = tag;
    setRows(m_cols);
}

void ColumnSetter::choose(int index) {
    if (m_columnsettableViewController && index >= 0 && index < static_cast<int>(m_cols.size())) {
        m_columnsettableViewController->setColumn(m_cols[static_cast<std::size_t>(index)], m_rettag);
    }
}

DBSetter::DBSetter(QWidget* parent) : ListPicker(parent) {
    setObjectName(QStringLiteral("DBSetter"));
}

void DBSetter::setup(project::SharedStuff& sharedstuff, DBSettable* caller, int tag) {
    m_sharedstuff = &sharedstuff;
    m_dbsettableViewController = caller;
    m_rettag = tag;
    m_databases.clear();
    std::vector<std::string> names;
    for (const auto& saveable : sharedstuff.db) {
        if (auto database = std::dynamic_pointer_cast<tables::DBTable>(saveable)) {
            names.push_back(database->name);
            m_databases.push_back(std::move(database));
        }
    }
    setRows(names);
    for (int row = 0; row < list()->count(); ++row) {
        list()->item(row)->setIcon(QIcon(QStringLiteral(":/images/database.svg")));
    }
    addFixedRow(QStringLiteral("< Load from File >"), style()->standardIcon(QStyle::SP_DialogOpenButton),
                loadFromFileIndex);
}

void DBSetter::setDatabaseReader(DatabaseReader reader) {
    databaseReader() = std::move(reader);
}

void DBSetter::loadFromFile() {
    const QString path = QFileDialog::getOpenFileName(parentWidget(), tr("Load database"));
    if (path.isEmpty()) {
        return;
    }
    std::shared_ptr<tables::DBTable> database;
    if (databaseReader()) {
        database = databaseReader()(path.toStdString());
    }
    if (!database) {
        base::printLine("Cannot read a database from " + path.toStdString());
        return;
    }
    if (m_dbsettableViewController) {
        m_dbsettableViewController->setDB(database, m_rettag);
    }
}

void DBSetter::choose(int index) {
    if (index == loadFromFileIndex) {
        // The file panel comes after the pop-over has gone, like the panels of the menus.
        hide();
        loadFromFile();
        return;
    }
    if (m_dbsettableViewController && index >= 0 && index < static_cast<int>(m_databases.size())) {
        m_dbsettableViewController->setDB(m_databases[static_cast<std::size_t>(index)], m_rettag);
    }
}

} // namespace lumbra::shell
