#include "bins_tree_model.h"

#include <QApplication>
#include <QDateTime>
#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

namespace lumbra::shell {

BinsTreeModel::BinsTreeModel(QObject* parent) : QAbstractItemModel(parent) {
}

void BinsTreeModel::setRoot(project::TreeNode root) {
    beginResetModel();
    m_root = std::move(root);
    m_places.clear();
    if (m_root != nullptr) {
        indexPlaces(*m_root);
    }
    endResetModel();
}

void BinsTreeModel::indexPlaces(const project::BinsTreeEntry& node) {
    for (std::size_t row = 0; row < node.children.size(); ++row) {
        const project::BinsTreeEntry* child = node.children[row].get();
        m_places[child] = {&node, static_cast<int>(row)};
        indexPlaces(*child);
    }
}

const project::BinsTreeEntry* BinsTreeModel::nodeAt(const QModelIndex& index) const {
    return index.isValid() ? static_cast<const project::BinsTreeEntry*>(index.internalPointer())
                           : m_root.get();
}

QModelIndex BinsTreeModel::index(int row, int column, const QModelIndex& parent) const {
    const project::BinsTreeEntry* node = nodeAt(parent);
    if (node == nullptr || row < 0 || column < 0 || column >= ColumnCount ||
        row >= static_cast<int>(node->children.size())) {
        return {};
    }
    return createIndex(row, column, node->children[static_cast<std::size_t>(row)].get());
}

QModelIndex BinsTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid()) {
        return {};
    }
    const auto place = m_places.find(nodeAt(child));
    if (place == m_places.end() || place->second.parent == m_root.get()) {
        return {};
    }
    const auto parentPlace = m_places.find(place->second.parent);
    if (parentPlace == m_places.end()) {
        return {};
    }
    return createIndex(parentPlace->second.row, 0, const_cast<project::BinsTreeEntry*>(place->second.parent));
}

int BinsTreeModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) {
        return 0;
    }
    const project::BinsTreeEntry* node = nodeAt(parent);
    return node == nullptr ? 0 : static_cast<int>(node->children.size());
}

int BinsTreeModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

project::BinsTreeEntry* BinsTreeModel::node(const QModelIndex& index) const {
    return const_cast<project::BinsTreeEntry*>(nodeAt(index));
}

QModelIndex BinsTreeModel::indexOf(const project::BinsTreeEntry* node) const {
    const auto place = m_places.find(node);
    if (place == m_places.end()) {
        return {};
    }
    return createIndex(place->second.row, 0, const_cast<project::BinsTreeEntry*>(node));
}

QColor tagColour(base::Tag tag) {
    switch (tag) {
    case base::Tag::red:
        return {0xe0, 0x1b, 0x24};
    case base::Tag::green:
        return {0x2e, 0xc2, 0x7e};
    case base::Tag::blue:
        return {0x35, 0x84, 0xe4};
    case base::Tag::yellow:
        return {0xf6, 0xd3, 0x2d};
    case base::Tag::pink:
        return {0xdc, 0x8a, 0xdd};
    case base::Tag::purple:
        return {0x91, 0x41, 0xac};
    case base::Tag::none:
        break;
    }
    return {};
}

namespace {

QDateTime dateOf(double seconds) {
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(seconds * 1000.0));
}

QIcon tagIcon(base::Tag tag) {
    const QColor colour = tagColour(tag);
    if (!colour.isValid()) {
        return {};
    }
    QPixmap pixmap(12, 12);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QRectF(1, 1, 10, 10));
    return QIcon(pixmap);
}

} // namespace

QVariant BinsTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const project::BinsTreeEntry* node = nodeAt(index);
    const project::Bin* bin = node->bin.get();
    const base::Saveable& identity = node->identity();
    switch (index.column()) {
    case NameColumn:
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return QString::fromStdString(node->name());
        case Qt::ToolTipRole:
            if (bin != nullptr && bin->table() != nullptr) {
                const auto clips = static_cast<qulonglong>(bin->table()->data.size());
                const QString count = clips == 1 ? tr("1 clip") : tr("%1 clips").arg(clips);
                return QString::fromStdString(node->name()) + QStringLiteral(" — ") + count;
            }
            return QString::fromStdString(node->name());
        case Qt::DecorationRole:
            if (bin == nullptr) {
                return QIcon::fromTheme(QStringLiteral("folder"),
                                        QApplication::style()->standardIcon(QStyle::SP_DirIcon));
            }
            return QIcon(bin->isLock() ? QStringLiteral(":/images/bin-locked.svg")
                                       : QStringLiteral(":/images/bin.svg"));
        case Qt::FontRole:
            if (bin != nullptr && bin->selected()) {
                QFont font;
                font.setBold(true);
                return font;
            }
            return {};
        default:
            return {};
        }
    case TagColumn:
        if (role == Qt::DecorationRole) {
            return tagIcon(identity.tag);
        }
        if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole) {
            return QString::fromLatin1(base::tagName(identity.tag));
        }
        return {};
    case ModifiedColumn:
    case CreatedColumn: {
        const QDateTime date =
            dateOf(index.column() == ModifiedColumn ? identity.modified : identity.created);
        if (role == Qt::DisplayRole) {
            // Two-digit years keep the dates narrow, so the names have the room; the tool tip is in full.
            return date.toString(QStringLiteral("yy-MM-dd"));
        }
        if (role == Qt::ToolTipRole) {
            return date.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        }
        return {};
    }
    default:
        return {};
    }
}

QVariant BinsTreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount) {
        return {};
    }
    return QString::fromLatin1(headerTitles[static_cast<std::size_t>(section)]);
}

} // namespace lumbra::shell
