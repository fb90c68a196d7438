#pragma once

#include "app/picker_trees.h"
#include "chain/picker_popup.h"

#include <memory>
#include <vector>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace lumbra::shell {

// A picker over a tree of headings, groups, bins and layouts, built by the core.
class TreePicker : public PickerPopup {
    Q_OBJECT

public:
    explicit TreePicker(QWidget* parent = nullptr);
    [[nodiscard]] QTreeWidget* tree() const noexcept { return m_tree; }

protected:
    // Shows the tree (its root row stays hidden), every heading expanded, the column as wide as
    // its widest row.
    void showTree(app::LayoutMixedTreeEntry root);
    // A row was chosen; the picker closes afterwards, whatever the row was.
    virtual void chooseRow(const app::LayoutMixedTreeEntry& row) = 0;
    void chooseFirst() override;

private:
    void addItems(QTreeWidgetItem* parent, const app::LayoutMixedTreeEntry& entry);
    void chooseItem(QTreeWidgetItem* item);

    QTreeWidget* m_tree = nullptr;
    app::LayoutMixedTreeEntry m_root;
    std::vector<const app::LayoutMixedTreeEntry*> m_rows;
};

// One bin of the project: its groups, the open bins and, when asked, the smart bins. A group's
// row answers nothing.
class BinSetter : public TreePicker {
    Q_OBJECT

public:
    explicit BinSetter(QWidget* parent = nullptr);
    void setup(project::SharedStuff& sharedstuff, BinSettable* caller, int tag,
               bool considerSmartbins = false);

protected:
    void chooseRow(const app::LayoutMixedTreeEntry& row) override;

private:
    BinSettable* m_binsettableViewController = nullptr;
    int m_rettag = 0;
};

// A source of columns: "Any Column", a bin (standing for its layout) or a layout, searched by name.
class LayoutSetterMixed : public TreePicker {
    Q_OBJECT

public:
    explicit LayoutSetterMixed(QWidget* parent = nullptr);
    // `layouts` come first in the list, before the project's saved layouts.
    void setup(project::SharedStuff& sharedstuff, LayoutSettableMixed* caller, int tag, bool showBin,
               const tables::LayoutList& layouts = {});

protected:
    void searchChanged() override;
    void chooseRow(const app::LayoutMixedTreeEntry& row) override;

private:
    project::SharedStuff* m_sharedstuff = nullptr; // does not own
    LayoutSettableMixed* m_layoutsettableMixedViewController = nullptr;
    int m_rettag = 0;
    bool m_showBin = false;
    tables::LayoutList m_layouts;
};

// Several bins or groups of the project, each row with a check box, handed over with "Select".
class BinTreeEntriesSelector : public PickerPopup {
    Q_OBJECT

public:
    explicit BinTreeEntriesSelector(QWidget* parent = nullptr);
    void setup(project::SharedStuff& sharedstuff, BinTreeEntriesSettable* caller,
               std::vector<project::TreeNode> selected, bool groupsAreStatic);

    [[nodiscard]] QTreeWidget* binsTree() const noexcept { return m_binsTree; }
    [[nodiscard]] QPushButton* selectButton() const noexcept { return m_selectButton; }
    [[nodiscard]] const std::vector<project::TreeNode>& selectedBinTreeEntries() const;

private:
    void addItems(QTreeWidgetItem* parent, const project::TreeNode& node);
    void switchBin(QTreeWidgetItem* item);
    void showChecks();
    void selectButtonPressed();

    QTreeWidget* m_binsTree = nullptr;
    QPushButton* m_selectButton = nullptr;
    BinTreeEntriesSettable* m_btesettable = nullptr;
    std::unique_ptr<app::BinTreeEntriesSelection> m_selection;
    std::vector<project::TreeNode> m_nodes;
    bool m_showing = false;
};

} // namespace lumbra::shell
