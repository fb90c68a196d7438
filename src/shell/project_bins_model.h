#pragma once

#include "project/bins_tree_entry.h"

#include <QAbstractItemModel>
#include <unordered_map>

namespace lumbra::shell {

// The project's bins tree, read only: groups and bins by display name, with the clip count of each bin.
class ProjectBinsModel final : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { NameColumn = 0, ClipsColumn = 1, ColumnCount = 2 };

    explicit ProjectBinsModel(QObject* parent = nullptr);

    // Shows this tree from now on; null shows nothing. The model does not own it.
    void setRoot(project::BinsTreeEntry* root);

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    struct Place {
        const project::BinsTreeEntry* parent = nullptr;
        int row = 0;
    };
    [[nodiscard]] const project::BinsTreeEntry* nodeAt(const QModelIndex& index) const;
    void indexPlaces(const project::BinsTreeEntry& node);

    project::BinsTreeEntry* m_root = nullptr;
    // Parent and row of every node, so parent() is a look-up rather than a search of the tree.
    std::unordered_map<const project::BinsTreeEntry*, Place> m_places;
};

} // namespace lumbra::shell
