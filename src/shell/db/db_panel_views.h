#pragma once

#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QStyledItemDelegate>
#include <QTableView>
#include <string>

namespace lumbra::shell {

class DatabasePanel;

// The list of the project's databases: its right-click menu and the files dropped on it.
class DBPanelList final : public QListView {
    Q_OBJECT

public:
    explicit DBPanelList(DatabasePanel& dbpanel, QWidget* parent = nullptr);

    // Whether files that the list takes are being dragged over it.
    [[nodiscard]] bool isHighlighted() const noexcept { return m_highlighted; }
    // The row of the last right click; -1 below the rows.
    [[nodiscard]] int lastClicked() const noexcept { return m_lastClicked; }

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setHighlighted(bool highlighted);

    DatabasePanel& m_dbpanel;
    int m_lastClicked = -1;
    bool m_highlighted = false;
};

// The rows of the selected database.
class DBPanelDisplay final : public QTableView {
    Q_OBJECT

public:
    explicit DBPanelDisplay(DatabasePanel& dbpanel, QWidget* parent = nullptr);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    DatabasePanel& m_dbpanel;
};

// The column header of the display, with the column tools on its right-click menu.
class DBHeaderView final : public QHeaderView {
    Q_OBJECT

public:
    explicit DBHeaderView(DatabasePanel& dbpanel, QWidget* parent = nullptr);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    DatabasePanel& m_dbpanel;
};

// The editable cell of the display: bound to its row and column, it writes at each change.
class DBDisplayTextField final : public QLineEdit {
    Q_OBJECT

public:
    DBDisplayTextField(std::string column, int row, QWidget* parent = nullptr);

    [[nodiscard]] const std::string& column() const noexcept { return m_column; }
    [[nodiscard]] int row() const noexcept { return m_row; }

private:
    std::string m_column;
    int m_row = 0;
};

// Gives the display its text fields and hands every keystroke to the model.
class DBDisplayDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

signals:
    // An edit of a cell is over.
    void editFinished() const;
};

} // namespace lumbra::shell
