#pragma once

#include "app/bin_box_columns.h"
#include "app/bin_box_edits.h"
#include "app/bin_box_search.h"
#include "binbox/box_host.h"
#include "project/bins_host.h"

#include <QPoint>
#include <QWidget>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QAction;
class QFrame;
class QLabel;
class QLineEdit;
class QTableView;
class QToolButton;

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::shell {

class BinTableModel;
class BoxHeader;

// One open bin on screen: a title bar, a search strip, the pinned and the main table side by side
// with their rows aligned, and a status bar. The window places and sizes the box; the box only
// adds itself to the window's boxes area.
class BinBox final : public QWidget, public project::BinBoxLink {
    Q_OBJECT

public:
    BinBox(project::Bin& bin, project::SharedStuff& sharedstuff, BoxHost& host, QWidget* parent = nullptr);
    ~BinBox() override;

    void refresh() override { refresh(false); }
    // The whole redraw; nothing while the bin is closed. With activate the box becomes the active one.
    void refresh(bool activate);
    // Makes the bin the project's active one; with focus the table last used takes the keyboard.
    void setActive(bool focus);
    void updateStatusBar();

    // Sorts the bin by the column: the same column flips the direction, another starts descending.
    void orderByColumn(const std::string& column);
    // Fits a column of either table to its widest value; with store the width goes to the layout.
    void fitColumn(const std::string& column, bool force, bool store);
    // Find-next over data or headers by the scope, with the search field's text (Ctrl+G, Return).
    void findNext();
    // The scope of the search field: data (false) or headers (true); searches again at once.
    void setSearchHeaders(bool headers);

    [[nodiscard]] project::Bin& bin() noexcept { return m_bin; }
    [[nodiscard]] const app::ColumnSplit& columns() const noexcept { return m_split; }
    [[nodiscard]] const app::OrderMark& orderMark() const noexcept { return m_order; }
    [[nodiscard]] bool isActiveLook() const noexcept { return m_activeLook; }

    // What tests and the window reach directly.
    [[nodiscard]] QTableView* mainTable() const noexcept { return m_main.view; }
    [[nodiscard]] QTableView* pinnedTable() const noexcept { return m_pinned.view; }
    [[nodiscard]] BoxHeader* mainHeader() const noexcept { return m_main.header; }
    [[nodiscard]] BoxHeader* pinnedHeader() const noexcept { return m_pinned.header; }
    [[nodiscard]] QLineEdit* searchField() const noexcept { return m_searchField; }
    [[nodiscard]] QLabel* titleLabel() const noexcept { return m_titleLabel; }
    [[nodiscard]] QLabel* statusLabel() const noexcept { return m_statusLabel; }
    [[nodiscard]] QToolButton* closeButton() const noexcept { return m_closeButton; }
    [[nodiscard]] QToolButton* gangButton() const noexcept { return m_gangButton; }
    // Opens the layout editor on the bin; its text names the bin's layout.
    [[nodiscard]] QToolButton* layoutButton() const noexcept { return m_layoutButton; }
    // Stands for the title bar's buttons while the bar is too narrow for them.
    [[nodiscard]] QToolButton* moreButton() const noexcept { return m_moreButton; }

    // No box is laid out smaller: below this the title, the search field and the rows stop being usable.
    static constexpr int smallestWidth = 240;
    static constexpr int smallestHeight = 190;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    // One of the two tables with what the box keeps about it.
    struct TablePart {
        QTableView* view = nullptr;
        BinTableModel* model = nullptr;
        BoxHeader* header = nullptr;
        bool pinned = false;
        // Widths the user or a fit gave, by column name, kept across rebuilds.
        std::map<std::string, int> widths;
    };

    // The redraw of refresh, keeping the counted column widths: for the box's own commands that move rows
    // or change columns but alter no value.
    void redraw(bool activate);
    void buildViews();
    void setUpTable(TablePart& part, bool pinned);
    void rebuildColumns();
    void applyWidths(TablePart& part);
    [[nodiscard]] int cellMargins(const TablePart& part) const;
    void fitColumnsOnRefresh();
    void updateFrames();
    void updateButtons();
    void updateActiveLook(bool active);
    // Shows the title bar's buttons, or the one button with their menu when the bar has no room for them.
    void foldTitleButtons();
    void editLayout();
    [[nodiscard]] TablePart& partOf(bool pinned) { return pinned ? m_pinned : m_main; }
    [[nodiscard]] TablePart* partHolding(const std::string& column);

    bool cellEdited(int row, const std::string& column, const std::string& text);
    // What one stored or cleared cell changes on screen: the cell (the column when `row` is -1), the
    // column's width when the width rule fits columns, the status line. A box whose row count no longer
    // matches its bin's (a smart bin the row entered) redraws whole.
    void showCellEdit(int row, const std::string& column, const app::CellEditResult& edit);
    [[nodiscard]] bool fitsOnRefresh(const app::ColumnSpec& spec) const;
    void syncSelection(TablePart& from);
    void selectRowsAlone(int row);
    void selectColumnAlone(TablePart& part, int column);
    void clearMarks();
    void showHit(const app::SearchHit& hit);
    void searchAsYouType(const QString& text);
    void scrolled();
    void scrollBy(const QPoint& delta);
    [[nodiscard]] QPoint scrollOrigin() const;
    void headerOrder(TablePart& part, int column);
    void headerWidthChosen(TablePart& part, int column);
    void headerBlockMove(TablePart& part, const std::vector<int>& selected, int from, int to);
    void applyColumnSelection(TablePart& part, const std::vector<int>& columns);
    void closePressed();
    void gangPressed();
    [[nodiscard]] std::vector<BinBox*> otherOpenBoxes() const;

    project::Bin& m_bin;
    project::SharedStuff& m_sharedstuff;
    BoxHost& m_host;

    bool m_initialized = false;
    bool m_acceptEdit = false;
    bool m_activeLook = false;
    bool m_syncing = false;
    bool m_searchHeaders = false;
    app::OrderMark m_order;
    app::BinSearchState m_search;
    app::ColumnSplit m_split;
    app::ContentWidths m_contentWidths;
    std::optional<QPoint> m_lastScroll;
    TablePart* m_activeTable = nullptr;

    TablePart m_main;
    TablePart m_pinned;
    QFrame* m_titleBar = nullptr;
    QLabel* m_titleLabel = nullptr;
    QToolButton* m_closeButton = nullptr;
    QToolButton* m_gangButton = nullptr;
    QToolButton* m_extendButton = nullptr;
    QToolButton* m_layoutButton = nullptr;
    QToolButton* m_moreButton = nullptr;
    QAction* m_gangAction = nullptr;
    QWidget* m_searchStrip = nullptr;
    QLineEdit* m_searchField = nullptr;
    QLabel* m_notFoundLabel = nullptr;
    QToolButton* m_dataScopeButton = nullptr;
    QToolButton* m_headersScopeButton = nullptr;
    QLabel* m_statusLabel = nullptr;
};

} // namespace lumbra::shell
