#pragma once

// The master comes with the panel: the panel base reads its master through a QPointer.
#include "chain/chainable_master.h"

#include <QPoint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QMenu;

namespace lumbra::tables {
class DBTable;
}

namespace lumbra::shell {

class DatabaseTableModel;
class DatabasesListModel;
class DBHeaderView;
class DBPanelDisplay;
class DBPanelList;

// What the three right-click menus of the panel do; a menu item carries one as its data.
enum class DBCommand {
    renameDatabase,
    createBin,
    deleteDatabase,
    addDatabase,
    addEntry,
    deleteEntry,
    inferPath,
    trimExtension,
    suppressSequence,
    groupBy,
    deleteColumn,
};

// The project's lookup databases: their list on the left, the rows of the selected one on the right,
// editable in place. Files come in from the list's menu or by a drop on the list. The panel saves
// nothing itself: every change marks the table and the project for the next save.
class DatabasePanel final : public ChainableViewController {
    Q_OBJECT

public:
    explicit DatabasePanel(QWidget* parent = nullptr);
    ~DatabasePanel() override;

    void receive(const ChainableInput& input) override;
    void afterLayout() override;

    // The list and the display again from the project's databases; the selection stays on its table.
    void reload();
    // Shows the database of that row of the list; -1 or a row past the end shows none.
    void select(int index);
    // Reads the files as databases into the project (each logged) and shows the list again.
    void addDatabases(const std::vector<std::string>& paths);
    // The file panel of "Add Database": several files of the database types.
    void chooseDatabaseFiles();
    // Runs a menu command: `index` is the list row, the display row (-1 for none) or the column.
    void perform(DBCommand command, int index);

    // The menus, titled "select action"; each item's data is its DBCommand.
    [[nodiscard]] std::unique_ptr<QMenu> listMenu(int row) const;
    [[nodiscard]] std::unique_ptr<QMenu> displayMenu(int row) const;
    [[nodiscard]] std::unique_ptr<QMenu> headerMenu(int section) const;
    // Opens the menu at `globalPos` and runs the item chosen.
    void showMenu(std::unique_ptr<QMenu> menu, QPoint globalPos, int index);

    // Stores the width the user gave a column of the display.
    void columnResized(int section, int newSize);
    // The edit of a cell is over: the end of the user's action.
    void cellEditFinished();

    [[nodiscard]] DBPanelList* dbList() const noexcept { return m_dbList; }
    [[nodiscard]] DBPanelDisplay* displayTable() const noexcept { return m_displayTable; }
    [[nodiscard]] const std::shared_ptr<tables::DBTable>& selectedTable() const noexcept {
        return m_selectedTable;
    }
    [[nodiscard]] int selectedIndex() const noexcept { return m_selectedIndex; }

private:
    void rebuildDisplay();
    void showInstructions();
    void runColumnTool(DBCommand command, int section);
    void createBin(int index);
    void changed();

    std::unique_ptr<DatabasesListModel> m_listModel;
    std::unique_ptr<DatabaseTableModel> m_tableModel;
    QWidget* m_listContainer = nullptr;
    QLabel* m_titleStack = nullptr;
    DBPanelList* m_dbList = nullptr;
    DBPanelDisplay* m_displayTable = nullptr;
    DBHeaderView* m_header = nullptr;
    QWidget* m_instructionsView = nullptr;
    std::shared_ptr<tables::DBTable> m_selectedTable;
    int m_selectedIndex = -1;
    // Widths set while the display is rebuilt are the rule's, not the user's.
    bool m_applyingWidths = false;
};

} // namespace lumbra::shell
