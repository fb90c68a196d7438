#pragma once

#include "base/saveable.h"
#include "project/bins_tree_entry.h"

#include <QAbstractItemModel>
#include <QColor>
#include <array>
#include <unordered_map>

namespace lumbra::shell {

// A tree of bins as the bins lists show it: each node's name, tag colour and both dates; bins that are
// open stand out. The model reads the tree in place and is reset whenever the tree changed; it shares
// the root it shows, so a tree the project has replaced stays whole until the model lets it go.
// The colour a tag is shown in; invalid for `none`.
[[nodiscard]] QColor tagColour(base::Tag tag);

class BinsTreeModel final : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { NameColumn = 0, TagColumn = 1, ModifiedColumn = 2, CreatedColumn = 3, ColumnCount = 4 };

    explicit BinsTreeModel(QObject* parent = nullptr);

    // Shows this tree from now on; null shows nothing.
    void setRoot(project::TreeNode root);

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // The node of an index; the root for an invalid one.
    [[nodiscard]] project::BinsTreeEntry* node(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOf(const project::BinsTreeEntry* node) const;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

    // The title of each column, as the tree's orders know them.
    static constexpr std::array<const char*, ColumnCount> headerTitles{"Bin", "Tag", "Modified", "Created"};

private:
    struct Place {
        const project::BinsTreeEntry* parent = nullptr;
        int row = 0;
    };
    [[nodiscard]] const project::BinsTreeEntry* nodeAt(const QModelIndex& index) const;
    void indexPlaces(const project::BinsTreeEntry& node);

    project::TreeNode m_root;
    // Parent and row of every node, so parent() is a look-up rather than a search of the tree.
    std::unordered_map<const project::BinsTreeEntry*, Place> m_places;
};

} // namespace lumbra::shell
