#include "db/db_panel_models.h"

#include "db/db_editing.h"
#include "project/shared_stuff.h"
#include "qt_text.h"
#include "tables/db_table.h"

#include <QIcon>

namespace lumbra::shell {

DatabasesListModel::DatabasesListModel(project::SharedStuff& sharedstuff, QObject* parent)
    : QAbstractListModel(parent), m_sharedstuff(sharedstuff) {
}

int DatabasesListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_sharedstuff.db.size());
}

QVariant DatabasesListModel::data(const QModelIndex& index, int role) const {
    const std::shared_ptr<tables::DBTable> database = table(index.row());
    if (!index.isValid() || !database) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return QString::fromStdString(database->name);
    case Qt::DecorationRole:
        return QIcon(QStringLiteral(":/images/database.svg"));
    default:
        return {};
    }
}

std::shared_ptr<tables::DBTable> DatabasesListModel::table(int row) const {
    if (row < 0 || static_cast<std::size_t>(row) >= m_sharedstuff.db.size()) {
        return nullptr;
    }
    return m_sharedstuff.db[static_cast<std::size_t>(row)];
}

void DatabasesListModel::reload() {
    beginResetModel();
    endResetModel();
}

DatabaseTableModel::DatabaseTableModel(project::SharedStuff& sharedstuff, QObject* parent)
    : QAbstractTableModel(parent), m_sharedstuff(sharedstuff) {
}

int DatabaseTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_table ? 0 : static_cast<int>(m_table->data.size());
}

int DatabaseTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_keys.size());
}

QVariant DatabaseTableModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) ||
        (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::ToolTipRole)) {
        return {};
    }
    const tables::DBEntry& entry = m_table->data[static_cast<std::size_t>(index.row())];
    return toQt(entry.data.valueOr(m_keys[static_cast<std::size_t>(index.column())]));
}

QVariant DatabaseTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) {
        return {};
    }
    if (orientation == Qt::Vertical) {
        return section + 1;
    }
    if (section < 0 || section >= columnCount()) {
        return {};
    }
    return QString::fromStdString(columnName(section));
}

Qt::ItemFlags DatabaseTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable;
}

bool DatabaseTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return false;
    }
    const std::string column = columnName(index.column());
    const std::string text = value.toString().toStdString();
    const tables::DBEntry& entry = m_table->data[static_cast<std::size_t>(index.row())];
    // An editor that hands back the text already written is no new change.
    if (const auto old = entry.data.find(m_keys[static_cast<std::size_t>(index.column())]);
        (old && *old == text) || (!old && text.empty())) {
        return true;
    }
    if (!db::setCell(m_sharedstuff, *m_table, static_cast<std::size_t>(index.row()), column, text)) {
        return false;
    }
    emit dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole});
    return true;
}

int DatabaseTableModel::insertEntry(std::optional<std::size_t> before) {
    if (!m_table) {
        return -1;
    }
    const std::size_t at = before && *before < m_table->data.size() ? *before : m_table->data.size();
    beginInsertRows({}, static_cast<int>(at), static_cast<int>(at));
    db::addEntry(m_sharedstuff, *m_table, at);
    endInsertRows();
    return static_cast<int>(at);
}

bool DatabaseTableModel::removeEntry(int row) {
    if (!m_table || row < 0 || static_cast<std::size_t>(row) >= m_table->data.size()) {
        return false;
    }
    beginRemoveRows({}, row, row);
    db::deleteEntry(m_sharedstuff, *m_table, static_cast<std::size_t>(row));
    endRemoveRows();
    return true;
}

void DatabaseTableModel::setTable(std::shared_ptr<tables::DBTable> table) {
    beginResetModel();
    m_table = std::move(table);
    m_keys.clear();
    if (m_table) {
        m_keys.reserve(m_table->cols.size());
        for (const std::string& column : m_table->cols) {
            m_keys.push_back(tables::ColumnNames::key(column));
        }
    }
    endResetModel();
}

std::string DatabaseTableModel::columnName(int section) const {
    if (!m_table || section < 0 || static_cast<std::size_t>(section) >= m_table->cols.size()) {
        return {};
    }
    return m_table->cols[static_cast<std::size_t>(section)];
}

} // namespace lumbra::shell
