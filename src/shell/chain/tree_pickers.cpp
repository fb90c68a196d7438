#include "chain/tree_pickers.h"

#include "project/shared_stuff.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <functional>

namespace lumbra::shell {

namespace {

QIcon rowIcon(const app::LayoutMixedTreeEntry& row, const QStyle* style) {
    if (row.bin) {
        return QIcon(row.bin->isLock() ? QStringLiteral(":/images/bin-locked.svg")
                                       : QStringLiteral(":/images/bin.svg"));
    }
    if (row.columnsLayout || row.anyColumns) {
        return style->standardIcon(QStyle::SP_FileDialogDetailedView);
    }
    return QIcon(QStringLiteral(":/images/Folder.svg"));
}

QTreeWidget* makeTree(QWidget* parent) {
    auto* tree = new QTreeWidget(parent);
    tree->setObjectName(QStringLiteral("binstree"));
    tree->setHeaderHidden(true);
    tree->setUniformRowHeights(true);
    tree->setRootIsDecorated(true);
    tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    return tree;
}

} // namespace

TreePicker::TreePicker(QWidget* parent) : PickerPopup(parent) {
    m_tree = makeTree(this);
    body()->addWidget(m_tree, 1);
    connect(m_tree, &QTreeWidget::itemClicked, this, &TreePicker::chooseItem);
    connect(m_tree, &QTreeWidget::itemActivated, this, &TreePicker::chooseItem);
}

void TreePicker::showTree(app::LayoutMixedTreeEntry root) {
    m_tree->clear();
    m_root = std::move(root);
    m_rows.clear();
    for (const auto& child : m_root.children) {
        addItems(nullptr, child);
    }
    m_tree->expandAll();
    // The picker is as wide as its widest row, within reason.
    m_tree->resizeColumnToContents(0);
    const int wanted = m_tree->columnWidth(0) + 48;
    resize(std::clamp(wanted, 240, 480), height());
}

void TreePicker::addItems(QTreeWidgetItem* parent, const app::LayoutMixedTreeEntry& entry) {
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_tree);
    item->setText(0, QString::fromStdString(entry.id));
    item->setIcon(0, rowIcon(entry, style()));
    item->setData(0, Qt::UserRole, static_cast<int>(m_rows.size()));
    if (entry.isGroup()) {
        QFont font = item->font(0);
        font.setBold(entry._groupname.has_value() && !parent);
        item->setFont(0, font);
    }
    m_rows.push_back(&entry);
    for (const auto& child : entry.children) {
        addItems(item, child);
    }
}

void TreePicker::chooseItem(QTreeWidgetItem* item) {
    if (item == nullptr) {
        return;
    }
    const int index = item->data(0, Qt::UserRole).toInt();
    if (index >= 0 && index < static_cast<int>(m_rows.size())) {
        chooseRow(*m_rows[static_cast<std::size_t>(index)]);
    }
    close();
}

void TreePicker::chooseFirst() {
    for (const app::LayoutMixedTreeEntry* row : m_rows) {
        if (!row->isGroup() && !row->anyColumns) {
            chooseRow(*row);
            close();
            return;
        }
    }
}

BinSetter::BinSetter(QWidget* parent) : TreePicker(parent) {
    setObjectName(QStringLiteral("BinSetter"));
    searchField()->hide();
}

void BinSetter::setup(project::SharedStuff& sharedstuff, BinSettable* caller, int tag,
                      bool considerSmartbins) {
    m_binsettableViewController = caller;
    m_rettag = tag;
    showTree(app::binSetterTree(sharedstuff, considerSmartbins));
}

void BinSetter::chooseRow(const app::LayoutMixedTreeEntry& row) {
    if (row.bin && m_binsettableViewController) {
        m_binsettableViewController->setBin(row.bin, m_rettag);
    }
}

LayoutSetterMixed::LayoutSetterMixed(QWidget* parent) : TreePicker(parent) {
    setObjectName(QStringLiteral("LayoutSetterMixed"));
}

void LayoutSetterMixed::setup(project::SharedStuff& sharedstuff, LayoutSettableMixed* caller, int tag,
                              bool showBin, const tables::LayoutList& layouts) {
    m_sharedstuff = &sharedstuff;
    m_layoutsettableMixedViewController = caller;
    m_rettag = tag;
    m_showBin = showBin;
    m_layouts = app::mixedPickerLayouts(layouts, sharedstuff);
    searchChanged();
}

void LayoutSetterMixed::searchChanged() {
    if (m_sharedstuff == nullptr) {
        return;
    }
    showTree(app::layoutSetterMixedTree(*m_sharedstuff, m_showBin, m_layouts,
                                        searchField()->text().toStdString()));
}

void LayoutSetterMixed::chooseRow(const app::LayoutMixedTreeEntry& row) {
    LayoutSettableMixed* caller = m_layoutsettableMixedViewController;
    if (caller == nullptr) {
        return;
    }
    if (row.columnsLayout) {
        caller->setLayout(row.columnsLayout, m_rettag);
    } else if (row.bin) {
        caller->setBin(row.bin, m_rettag);
    } else if (row.anyColumns && m_sharedstuff) {
        caller->setColumns(m_sharedstuff->allColumns()._data, m_rettag, std::string(app::anyColumnsName));
    }
}

BinTreeEntriesSelector::BinTreeEntriesSelector(QWidget* parent) : PickerPopup(parent) {
    setObjectName(QStringLiteral("BinTreeEntriesSelector"));
    searchField()->hide();
    m_binsTree = makeTree(this);
    body()->addWidget(m_binsTree, 1);
    m_selectButton = new QPushButton(tr("Select"), this);
    m_selectButton->setDefault(true);
    body()->addWidget(m_selectButton, 0, Qt::AlignRight);
    connect(m_binsTree, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) {
        if (!m_showing) {
            switchBin(item);
        }
    });
    connect(m_selectButton, &QPushButton::clicked, this, &BinTreeEntriesSelector::selectButtonPressed);
}

void BinTreeEntriesSelector::setup(project::SharedStuff& sharedstuff, BinTreeEntriesSettable* caller,
                                   std::vector<project::TreeNode> selected, bool groupsAreStatic) {
    m_btesettable = caller;
    m_selection = std::make_unique<app::BinTreeEntriesSelection>(groupsAreStatic);
    m_selection->setSelected(std::move(selected));
    m_showing = true;
    m_binsTree->clear();
    m_nodes.clear();
    for (const auto& child : sharedstuff.bins->children) {
        addItems(nullptr, child);
    }
    m_binsTree->expandAll();
    m_showing = false;
    showChecks();
}

const std::vector<project::TreeNode>& BinTreeEntriesSelector::selectedBinTreeEntries() const {
    static const std::vector<project::TreeNode> none;
    return m_selection ? m_selection->selectedBinTreeEntries() : none;
}

void BinTreeEntriesSelector::addItems(QTreeWidgetItem* parent, const project::TreeNode& node) {
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_binsTree);
    item->setText(0, QString::fromStdString(node->name()));
    item->setIcon(
        0, QIcon(node->bin ? QStringLiteral(":/images/bin.svg") : QStringLiteral(":/images/Folder.svg")));
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setData(0, Qt::UserRole, static_cast<int>(m_nodes.size()));
    m_nodes.push_back(node);
    for (const auto& child : node->children) {
        addItems(item, child);
    }
}

void BinTreeEntriesSelector::switchBin(QTreeWidgetItem* item) {
    const int index = item->data(0, Qt::UserRole).toInt();
    if (!m_selection || index < 0 || index >= static_cast<int>(m_nodes.size())) {
        return;
    }
    m_selection->toggle(m_nodes[static_cast<std::size_t>(index)]);
    showChecks();
}

void BinTreeEntriesSelector::showChecks() {
    m_showing = true;
    // A static group is never in the list itself; its box shows how much of it is.
    std::function<std::pair<bool, bool>(QTreeWidgetItem*)> show = [&](QTreeWidgetItem* item) {
        const auto& node = m_nodes[static_cast<std::size_t>(item->data(0, Qt::UserRole).toInt())];
        bool all = true;
        bool any = false;
        bool hasBins = false;
        for (int i = 0; i < item->childCount(); ++i) {
            const auto [childAll, childAny] = show(item->child(i));
            all = all && childAll;
            any = any || childAny;
            hasBins = true;
        }
        Qt::CheckState state = Qt::Unchecked;
        if (node->bin || !m_selection->groupsAreStatic) {
            state = m_selection->isChecked(*node) ? Qt::Checked : Qt::Unchecked;
            all = state == Qt::Checked && (node->bin || all);
            any = any || state == Qt::Checked;
        } else {
            all = hasBins && all;
            state = all ? Qt::Checked : (any ? Qt::PartiallyChecked : Qt::Unchecked);
        }
        item->setCheckState(0, state);
        return std::pair{all, any};
    };
    for (int i = 0; i < m_binsTree->topLevelItemCount(); ++i) {
        show(m_binsTree->topLevelItem(i));
    }
    m_showing = false;
}

void BinTreeEntriesSelector::selectButtonPressed() {
    if (m_btesettable && m_selection) {
        m_btesettable->setBinTreeEntries(m_selection->selectedBinTreeEntries());
    }
    close();
}

} // namespace lumbra::shell
