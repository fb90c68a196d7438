#include "binbox/bin_table_model.h"

#include "base/console.h"
#include "project/bin.h"
#include "qt_text.h"

#include <QColor>
#include <QFont>

namespace lumbra::shell {

namespace {

QColor tagColour(app::RowTag tag) {
    switch (tag) {
    case app::RowTag::red:
        return QColor(0xff, 0x3b, 0x30);
    case app::RowTag::green:
        return QColor(0x28, 0xcd, 0x41);
    case app::RowTag::blue:
        return QColor(0x00, 0x7a, 0xff);
    case app::RowTag::yellow:
        return QColor(0xff, 0xcc, 0x00);
    case app::RowTag::pink:
        return QColor(0xff, 0x2d, 0x55);
    case app::RowTag::purple:
        return QColor(0xaf, 0x52, 0xde);
    case app::RowTag::none:
        break;
    }
    return {};
}

} // namespace

BinTableModel::BinTableModel(project::Bin& bin, QObject* parent) : QAbstractTableModel(parent), m_bin(bin) {
}

void BinTableModel::setColumns(std::vector<app::ColumnSpec> specs) {
    const tables::ALETable* table = m_bin.table();
    const int rows = table ? static_cast<int>(table->data.size()) : 0;
    bool sameColumns = specs.size() == m_specs.size() && rows == m_rows;
    for (std::size_t i = 0; sameColumns && i < specs.size(); ++i)
        sameColumns = specs[i].identifier == m_specs[i].identifier;
    if (!sameColumns)
        beginResetModel();
    m_specs = std::move(specs);
    m_keys.clear();
    m_keys.reserve(m_specs.size());
    for (const app::ColumnSpec& spec : m_specs)
        m_keys.push_back(tables::ColumnNames::key(spec.identifier));
    m_rows = rows;
    if (!sameColumns) {
        endResetModel();
        return;
    }
    if (!m_specs.empty()) {
        emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
        if (m_rows > 0)
            emit dataChanged(index(0, 0), index(m_rows - 1, columnCount() - 1));
    }
}

void BinTableModel::cellChanged(int row, int column) {
    if (column < 0 || column >= columnCount() || row >= m_rows || m_rows == 0)
        return;
    const QModelIndex first = index(row >= 0 ? row : 0, column);
    emit dataChanged(first, row >= 0 ? first : index(m_rows - 1, column));
}

int BinTableModel::columnOf(const std::string& identifier) const {
    for (std::size_t i = 0; i < m_specs.size(); ++i) {
        if (m_specs[i].identifier == identifier)
            return static_cast<int>(i);
    }
    return -1;
}

int BinTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

int BinTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_specs.size());
}

void BinTableModel::reportRowOutOfRange(int row) const {
    const tables::ALETable* table = m_bin.table();
    base::printLine("ERROR: bin " + m_bin.displayName() + " (" + (table ? table->tablename : std::string()) +
                    ") asked for row " + std::to_string(row) + ", which is out of bounds");
}

QVariant BinTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.column() >= columnCount())
        return {};
    const app::ColumnSpec& spec = m_specs[static_cast<std::size_t>(index.column())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
    case Qt::ForegroundRole:
    case Qt::TextAlignmentRole:
    case Qt::FontRole:
        break;
    default:
        return {};
    }
    const tables::ALETable* table = m_bin.table();
    if (!table || static_cast<std::size_t>(index.row()) >= table->data.size()) {
        if (role == Qt::DisplayRole)
            reportRowOutOfRange(index.row());
        return {};
    }
    const auto& key = m_keys[static_cast<std::size_t>(index.column())];
    const std::optional<std::string_view> value =
        key ? table->data[static_cast<std::size_t>(index.row())]->data().find(*key) : std::nullopt;
    if (spec.isTag) {
        const app::RowTag tag = app::rowTag(value.value_or(std::string_view()));
        if (role == Qt::DisplayRole)
            return tag == app::RowTag::none ? QString() : QStringLiteral("●");
        if (role == Qt::ForegroundRole && tag != app::RowTag::none)
            return tagColour(tag);
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignCenter);
        if (role == Qt::FontRole) {
            QFont font;
            font.setPointSizeF(15.0);
            return font;
        }
        return {};
    }
    const bool empty = !value || value->empty();
    if (role == Qt::DisplayRole)
        return empty ? toQt(std::string(app::emptyCellText)) : toQt(*value);
    if (role == Qt::EditRole)
        return empty ? QString() : toQt(*value);
    if (role == Qt::TextAlignmentRole && empty)
        return int(Qt::AlignCenter);
    return {};
}

QVariant BinTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    const app::ColumnSpec& spec = m_specs[static_cast<std::size_t>(section)];
    if (role == Qt::DisplayRole)
        return toQt(spec.title);
    if (role == Qt::ToolTipRole)
        return toQt(spec.identifier);
    return {};
}

Qt::ItemFlags BinTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || index.column() >= columnCount())
        return Qt::NoItemFlags;
    const app::ColumnSpec& spec = m_specs[static_cast<std::size_t>(index.column())];
    if (spec.isTag)
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (spec.editable)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool BinTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid() || index.column() >= columnCount() || !onEdit)
        return false;
    const std::string& column = m_specs[static_cast<std::size_t>(index.column())].identifier;
    return onEdit(index.row(), column, fromQt(value.toString()));
}

} // namespace lumbra::shell
