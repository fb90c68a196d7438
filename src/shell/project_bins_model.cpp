#include "project_bins_model.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QStyle>

namespace lumbra::shell {

ProjectBinsModel::ProjectBinsModel(QObject* parent) : QAbstractItemModel(parent) {
}

void ProjectBinsModel::setRoot(project::BinsTreeEntry* root) {
    beginResetModel();
    m_root = root;
    m_places.clear();
    if (m_root != nullptr) {
        indexPlaces(*m_root);
    }
    endResetModel();
}

void ProjectBinsModel::indexPlaces(const project::BinsTreeEntry& node) {
    for (std::size_t row = 0; row < node.children.size(); ++row) {
        const project::BinsTreeEntry* child = node.children[row].get();
        m_places[child] = {&node, static_cast<int>(row)};
        indexPlaces(*child);
    }
}

const project::BinsTreeEntry* ProjectBinsModel::nodeAt(const QModelIndex& index) const {
    return index.isValid() ? static_cast<const project::BinsTreeEntry*>(index.internalPointer()) : m_root;
}

QModelIndex ProjectBinsModel::index(int row, int column, const QModelIndex& parent) const {
    const project::BinsTreeEntry* node = nodeAt(parent);
    if (node == nullptr || row < 0 || column < 0 || column >= ColumnCount ||
        row >= static_cast<int>(node->children.size())) {
        return {};
    }
    return createIndex(row, column, node->children[static_cast<std::size_t>(row)].get());
}

QModelIndex ProjectBinsModel::parent(const QModelIndex& child) const {
    if (!child.isValid()) {
        return {};
    }
    const auto place = m_places.find(nodeAt(child));
    if (place == m_places.end() || place->second.parent == m_root) {
        return {};
    }
    const auto parentPlace = m_places.find(place->second.parent);
    if (parentPlace == m_places.end()) {
        return {};
    }
    return createIndex(parentPlace->second.row, 0, const_cast<project::BinsTreeEntry*>(place->second.parent));
}

int ProjectBinsModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) {
        return 0;
    }
    const project::BinsTreeEntry* node = nodeAt(parent);
    return node == nullptr ? 0 : static_cast<int>(node->children.size());
}

int ProjectBinsModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

QVariant ProjectBinsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const project::BinsTreeEntry* node = nodeAt(index);
    const project::Bin* bin = node->bin.get();
    if (index.column() == NameColumn) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return QString::fromStdString(node->name());
        case Qt::DecorationRole:
            return bin == nullptr
                       ? QIcon::fromTheme(QStringLiteral("folder"),
                                          QApplication::style()->standardIcon(QStyle::SP_DirIcon))
                       : QIcon::fromTheme(QStringLiteral("text-x-generic"),
                                          QApplication::style()->standardIcon(QStyle::SP_FileIcon));
        case Qt::FontRole:
            if (bin != nullptr && bin->selected()) {
                // Bins that were open when the project was saved stand out.
                QFont font;
                font.setBold(true);
                return font;
            }
            return {};
        default:
            return {};
        }
    }
    if (index.column() == ClipsColumn && bin != nullptr && bin->table() != nullptr) {
        if (role == Qt::DisplayRole) {
            return static_cast<qulonglong>(bin->table()->data.size());
        }
        if (role == Qt::TextAlignmentRole) {
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    return {};
}

QVariant ProjectBinsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case NameColumn:
        return tr("Name");
    case ClipsColumn:
        return tr("Clips");
    default:
        return {};
    }
}

} // namespace lumbra::shell
