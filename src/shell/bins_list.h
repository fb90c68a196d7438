#pragma once

#include "project/bin_import.h"
#include "project/bins_tree_entry.h"

#include <QStringList>
#include <QTreeView>
#include <functional>

class QLabel;

namespace lumbra::project {
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::shell {

class BinsTreeModel;

// One tree of the project (bins or smart bins): double click opens or closes a bin, a header
// click orders the tree, files dropped on it become bins where they were dropped.
class BinsList : public QTreeView {
    Q_OBJECT

public:
    // `tree` gives the project's current tree (it is replaced when a project loads).
    BinsList(project::SharedStuff& sharedstuff, std::function<project::TreeNode()> tree,
             QWidget* parent = nullptr);

    // Shows the tree again, keeping what was expanded; the hint shows while the tree is empty.
    void reload();
    [[nodiscard]] BinsTreeModel& binsModel() const noexcept { return *m_model; }
    // The nodes of the selected rows, in tree order.
    [[nodiscard]] std::vector<project::BinsTreeEntry*> selectedNodes() const;
    // Where a new bin or dropped files go for a click or drop on this index.
    [[nodiscard]] project::ImportTarget targetAt(const QModelIndex& index) const;
    // While false (a panel is in front) drags are refused.
    void setAcceptsFiles(bool accepts) { m_acceptsFiles = accepts; }
    // The hint over an empty list; its text comes from the window.
    void setInstructions(const QString& text);

    // The file endings a drop accepts.
    [[nodiscard]] static bool isImportable(const QString& path);

signals:
    void filesDropped(const QStringList& paths, project::ImportTarget target);
    void importRequested(project::ImportTarget target);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    // The list's own menu entries for a click on `index` (invalid: no row).
    virtual void fillMenu(QMenu& menu, const QModelIndex& index);

    project::SharedStuff& m_sharedstuff;

private:
    [[nodiscard]] QStringList acceptedPaths(const QMimeData* mime) const;
    void toggleBin(const QModelIndex& index);
    void orderByHeader(int section);
    void placeInstructions();

    std::function<project::TreeNode()> m_tree;
    BinsTreeModel* m_model = nullptr;
    QLabel* m_instructions = nullptr;
    bool m_acceptsFiles = true;
};

// The smart bins tree: the same gestures, its own menu, and no file drops.
class SmartBinsList final : public BinsList {
    Q_OBJECT

public:
    using BinsList::BinsList;

protected:
    void fillMenu(QMenu& menu, const QModelIndex& index) override;
};

} // namespace lumbra::shell
