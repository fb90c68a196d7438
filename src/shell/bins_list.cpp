#include "bins_list.h"

#include "app/bins_list_commands.h"
#include "bins_tree_model.h"
#include "project/shared_stuff.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSet>
#include <QUrl>
#include <unordered_set>

namespace lumbra::shell {

namespace {

// Expanded groups by uuid: a reload may bring a new tree whose nodes are other objects with the same uuids.
void collectExpanded(const QTreeView& view, const BinsTreeModel& model, const QModelIndex& parent,
                     std::unordered_set<std::string>& out) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (view.isExpanded(index)) {
            out.insert(model.node(index)->nodeUuid());
            collectExpanded(view, model, index, out);
        }
    }
}

} // namespace

BinsList::BinsList(project::SharedStuff& sharedstuff, std::function<project::TreeNode()> tree,
                   QWidget* parent)
    : QTreeView(parent), m_sharedstuff(sharedstuff), m_tree(std::move(tree)) {
    m_model = new BinsTreeModel(this);
    setModel(m_model);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    viewport()->setAcceptDrops(true);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(BinsTreeModel::NameColumn, QHeaderView::Stretch);
    header()->setSectionResizeMode(BinsTreeModel::TagColumn, QHeaderView::Fixed);
    header()->resizeSection(BinsTreeModel::TagColumn, 36);
    // Dates take the width of their text; the full time is in their tool tips, the name gets the rest.
    header()->setSectionResizeMode(BinsTreeModel::ModifiedColumn, QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(BinsTreeModel::CreatedColumn, QHeaderView::ResizeToContents);
    header()->setMinimumSectionSize(24);
    header()->setSectionsClickable(true);
    header()->setSortIndicatorShown(false);
    connect(header(), &QHeaderView::sectionClicked, this, &BinsList::orderByHeader);
    // Groups open and close on a double click by the view itself; bins open and close here.
    connect(this, &QTreeView::doubleClicked, this, &BinsList::toggleBin);

    m_instructions = new QLabel(viewport());
    m_instructions->setObjectName(QStringLiteral("instructionsView"));
    m_instructions->setAlignment(Qt::AlignCenter);
    m_instructions->setForegroundRole(QPalette::PlaceholderText);
    m_instructions->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_instructions->hide();
}

void BinsList::setInstructions(const QString& text) {
    m_instructions->setText(text);
    placeInstructions();
}

void BinsList::reload() {
    // The model still holds the tree it showed, even one the project has replaced since: walking it is safe.
    std::unordered_set<std::string> expanded;
    collectExpanded(*this, *m_model, {}, expanded);
    const bool firstFill = m_model->rowCount() == 0;
    const project::TreeNode tree = m_tree();
    if (tree != nullptr) {
        tree->rebuildArray();
    }
    m_model->setRoot(tree);
    if (tree != nullptr) {
        for (project::BinsTreeEntry* node : tree->flatten()) {
            // A list filled for the first time shows every group open.
            if (node != tree.get() && node->bin == nullptr &&
                (firstFill || expanded.contains(node->nodeUuid()))) {
                setExpanded(m_model->indexOf(node), true);
            }
        }
    }
    m_instructions->setVisible(!m_instructions->text().isEmpty() && m_model->rowCount() == 0);
    placeInstructions();
}

std::vector<project::BinsTreeEntry*> BinsList::selectedNodes() const {
    std::vector<project::BinsTreeEntry*> nodes;
    const project::TreeNode tree = m_tree();
    if (tree == nullptr) {
        return nodes;
    }
    QSet<const project::BinsTreeEntry*> chosen;
    for (const QModelIndex& index : selectionModel()->selectedRows()) {
        chosen.insert(m_model->node(index));
    }
    for (project::BinsTreeEntry* node : tree->flatten()) {
        if (chosen.contains(node)) {
            nodes.push_back(node);
        }
    }
    return nodes;
}

project::ImportTarget BinsList::targetAt(const QModelIndex& index) const {
    if (!index.isValid()) {
        return {};
    }
    project::BinsTreeEntry* node = m_model->node(index);
    // On a group the new bins come first in it; on a bin they follow it in its group.
    if (node->bin == nullptr) {
        return {node, 0};
    }
    return {node, index.row() + 1};
}

bool BinsList::isImportable(const QString& path) {
    const QString lower = path.toLower();
    static const QStringList endings{
        QStringLiteral(".ale"),    QStringLiteral(".edl"), QStringLiteral(".csv"), QStringLiteral(".tsv"),
        QStringLiteral(".ccc"),    QStringLiteral(".mhl"), QStringLiteral(".avb"), QStringLiteral(".aaf"),
        QStringLiteral(".fcpxml"), QStringLiteral(".otio")};
    for (const QString& ending : endings) {
        if (lower.endsWith(ending)) {
            return true;
        }
    }
    return false;
}

QStringList BinsList::acceptedPaths(const QMimeData* mime) const {
    QStringList paths;
    if (!m_acceptsFiles || mime == nullptr || !mime->hasUrls()) {
        return paths;
    }
    for (const QUrl& url : mime->urls()) {
        if (url.isLocalFile() && isImportable(url.toLocalFile())) {
            paths.push_back(url.toLocalFile());
        }
    }
    return paths;
}

void BinsList::dragEnterEvent(QDragEnterEvent* event) {
    if (acceptedPaths(event->mimeData()).isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
}

void BinsList::dragMoveEvent(QDragMoveEvent* event) {
    if (acceptedPaths(event->mimeData()).isEmpty()) {
        event->ignore();
        return;
    }
    const QModelIndex index = indexAt(event->position().toPoint());
    setCurrentIndex(index);
    event->acceptProposedAction();
}

void BinsList::dropEvent(QDropEvent* event) {
    const QStringList paths = acceptedPaths(event->mimeData());
    if (paths.isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    emit filesDropped(paths, targetAt(indexAt(event->position().toPoint())));
}

void BinsList::toggleBin(const QModelIndex& index) {
    project::BinsTreeEntry* node = m_model->node(index);
    if (node == nullptr || node->bin == nullptr) {
        return;
    }
    node->bin->setSelected(!node->bin->selected());
    for (project::SharedStuffDelegate* delegate : m_sharedstuff.delegates) {
        delegate->reloadBinsLists();
    }
}

void BinsList::orderByHeader(int section) {
    const project::TreeNode tree = m_tree();
    const auto mode = app::orderingForHeader(BinsTreeModel::headerTitles[static_cast<std::size_t>(section)]);
    if (tree == nullptr || !mode) {
        return;
    }
    app::orderBinsTree(*tree, *mode);
    for (project::SharedStuffDelegate* delegate : m_sharedstuff.delegates) {
        delegate->reloadBinsLists();
    }
}

void BinsList::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(viewport()->mapFrom(this, event->pos()));
    // A row clicked outside the selection becomes the selection, as the commands act on it.
    if (index.isValid() && !selectionModel()->isRowSelected(index.row(), index.parent())) {
        selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    QMenu menu(this);
    fillMenu(menu, index);
    if (!menu.isEmpty()) {
        menu.exec(event->globalPos());
    }
}

void BinsList::fillMenu(QMenu& menu, const QModelIndex& index) {
    const project::ImportTarget target = targetAt(index);
    menu.addAction(QIcon(QStringLiteral(":/images/new-bin.svg")), tr("New Bin"), this,
                   [this, target] { app::createEmptyBin(m_sharedstuff, target); });
    menu.addAction(QIcon::fromTheme(QStringLiteral("document-open")), tr("New Bin From File"), this,
                   [this, target] { emit importRequested(target); });
    menu.addAction(QIcon(QStringLiteral(":/images/new-group.svg")), tr("New Group"), this,
                   [this, target] { app::addGroup(m_sharedstuff, *m_sharedstuff.bins, target); });
    if (!index.isValid()) {
        return;
    }
    menu.addSeparator();
    menu.addAction(tr("Open"), this, [this] { app::setBinsOpen(m_sharedstuff, selectedNodes(), true); });
    menu.addAction(tr("Close"), this, [this] { app::setBinsOpen(m_sharedstuff, selectedNodes(), false); });
}

void SmartBinsList::fillMenu(QMenu& menu, const QModelIndex& index) {
    const project::ImportTarget target = targetAt(index);
    menu.addAction(QIcon(QStringLiteral(":/images/new-group.svg")), tr("New Group"), this,
                   [this, target] { app::addGroup(m_sharedstuff, *m_sharedstuff.smartbins, target); });
    if (!index.isValid()) {
        return;
    }
    menu.addSeparator();
    menu.addAction(tr("Open"), this, [this] { app::setBinsOpen(m_sharedstuff, selectedNodes(), true); });
    menu.addAction(tr("Close"), this, [this] { app::setBinsOpen(m_sharedstuff, selectedNodes(), false); });
}

void BinsList::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    placeInstructions();
}

void BinsList::placeInstructions() {
    m_instructions->setGeometry(viewport()->rect());
}

} // namespace lumbra::shell
