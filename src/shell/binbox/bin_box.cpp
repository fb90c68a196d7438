#include "binbox/bin_box.h"

#include "binbox/bin_table_model.h"
#include "binbox/box_header.h"
#include "binbox/elided_label.h"
#include "chain/layout_generator_view_controller.h"
#include "project/bin.h"
#include "project/shared_stuff.h"
#include "qt_text.h"
#include "table_rows.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>
#include <functional>

namespace lumbra::shell {

namespace {

// The cell editor of a box: its first typed character is what allows the end of an edit to store.
class CellDelegate final : public QStyledItemDelegate {
public:
    CellDelegate(std::function<void()> onTyped, QObject* parent)
        : QStyledItemDelegate(parent), m_onTyped(std::move(onTyped)) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
        if (auto* line = qobject_cast<QLineEdit*>(editor))
            connect(line, &QLineEdit::textEdited, this, [this] { m_onTyped(); });
        return editor;
    }

private:
    std::function<void()> m_onTyped;
};

QToolButton* makeButton(QWidget* parent, const char* iconName, const QString& text, const QString& tip) {
    auto* button = new QToolButton(parent);
    button->setIcon(QIcon::fromTheme(QString::fromLatin1(iconName)));
    button->setText(text);
    button->setToolTip(tip);
    button->setAutoRaise(true);
    button->setToolButtonStyle(button->icon().isNull() ? Qt::ToolButtonTextOnly : Qt::ToolButtonIconOnly);
    return button;
}

constexpr int searchStripHeight = 30;
constexpr int searchStripInset = 20;

} // namespace

BinBox::BinBox(project::Bin& bin, project::SharedStuff& sharedstuff, BoxHost& host, QWidget* parent)
    : QWidget(parent), m_bin(bin), m_sharedstuff(sharedstuff), m_host(host) {
    setObjectName(QStringLiteral("binBox"));
    setMinimumSize(smallestWidth, smallestHeight);
    buildViews();
    refresh(false);
}

BinBox::~BinBox() {
    // The views die after this object: what they tell while dying must not reach a half-gone box.
    for (TablePart* part : {&m_pinned, &m_main}) {
        // An editor still open commits as it closes; the box is no longer there to store it.
        part->model->onEdit = nullptr;
        part->view->selectionModel()->disconnect(this);
        part->view->verticalScrollBar()->disconnect(this);
        part->view->horizontalScrollBar()->disconnect(this);
        part->header->disconnect(this);
        part->view->viewport()->removeEventFilter(this);
    }
    m_titleBar->removeEventFilter(this);
    m_titleLabel->removeEventFilter(this);
}

void BinBox::buildViews() {
    if (m_initialized)
        return;
    m_initialized = true;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_titleBar = new QFrame(this);
    m_titleBar->setAutoFillBackground(true);
    m_titleBar->installEventFilter(this);
    auto* titleLayout = new QHBoxLayout(m_titleBar);
    titleLayout->setContentsMargins(4, 2, 4, 2);
    titleLayout->setSpacing(4);
    m_closeButton = makeButton(m_titleBar, "window-close", tr("✕"), tr("Close Bin"));
    m_titleLabel = new ElidedLabel(m_titleBar);
    m_titleLabel->setObjectName(QStringLiteral("titleLabel"));
    QFont bold = m_titleLabel->font();
    bold.setBold(true);
    m_titleLabel->setFont(bold);
    m_titleLabel->installEventFilter(this);
    m_gangButton = makeButton(m_titleBar, "object-locked", tr("Gang"), tr("Scroll all open bins together"));
    m_gangButton->setCheckable(true);
    m_extendButton =
        makeButton(m_titleBar, "view-fullscreen", tr("Extend"), tr("Show this bin alone or all open bins"));
    titleLayout->addWidget(m_closeButton);
    titleLayout->addWidget(m_titleLabel, 1);
    m_layoutButton = makeButton(m_titleBar, "view-list-details", tr("Layout"), tr("Edit the bin's columns"));
    m_layoutButton->setObjectName(QStringLiteral("layoutButton"));
    m_layoutButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_moreButton = makeButton(m_titleBar, "", tr("⋯"), tr("Layout, gang scrolling and extending"));
    m_moreButton->setObjectName(QStringLiteral("moreButton"));
    m_moreButton->setPopupMode(QToolButton::InstantPopup);
    m_moreButton->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));
    auto* more = new QMenu(m_moreButton);
    more->addAction(tr("Layout…"), this, &BinBox::editLayout);
    m_gangAction = more->addAction(tr("Gang"), this, &BinBox::gangPressed);
    m_gangAction->setCheckable(true);
    more->addAction(tr("Extend"), this, [this] {
        setActive(true);
        m_host.toggleViewMode();
    });
    m_moreButton->setMenu(more);
    m_moreButton->hide();
    titleLayout->addWidget(m_layoutButton);
    titleLayout->addWidget(m_gangButton);
    titleLayout->addWidget(m_extendButton);
    titleLayout->addWidget(m_moreButton);
    layout->addWidget(m_titleBar);

    m_searchStrip = new QWidget(this);
    m_searchStrip->setFixedHeight(searchStripHeight);
    auto* searchLayout = new QHBoxLayout(m_searchStrip);
    searchLayout->setContentsMargins(searchStripInset, 2, searchStripInset, 2);
    searchLayout->setSpacing(6);
    m_searchField = new QLineEdit(m_searchStrip);
    m_searchField->setPlaceholderText(tr("Search in bin"));
    m_searchField->setClearButtonEnabled(true);
    m_notFoundLabel = new QLabel(tr("not found"), m_searchStrip);
    m_notFoundLabel->setObjectName(QStringLiteral("searchNotFound"));
    m_notFoundLabel->hide();
    m_dataScopeButton = new QToolButton(m_searchStrip);
    m_dataScopeButton->setText(tr("data"));
    m_headersScopeButton = new QToolButton(m_searchStrip);
    m_headersScopeButton->setText(tr("headers"));
    for (QToolButton* scope : {m_dataScopeButton, m_headersScopeButton}) {
        scope->setCheckable(true);
        scope->setAutoExclusive(true);
    }
    m_dataScopeButton->setChecked(true);
    searchLayout->addWidget(m_searchField, 1);
    searchLayout->addWidget(m_notFoundLabel);
    searchLayout->addWidget(new QLabel(tr("in"), m_searchStrip));
    searchLayout->addWidget(m_dataScopeButton);
    searchLayout->addWidget(m_headersScopeButton);
    layout->addWidget(m_searchStrip);

    auto* tables = new QWidget(this);
    auto* tablesLayout = new QHBoxLayout(tables);
    tablesLayout->setContentsMargins(0, 0, 0, 0);
    tablesLayout->setSpacing(0);
    setUpTable(m_pinned, true);
    setUpTable(m_main, false);
    tablesLayout->addWidget(m_pinned.view);
    tablesLayout->addWidget(m_main.view, 1);
    layout->addWidget(tables, 1);

    m_statusLabel = new QLabel(this);
    m_statusLabel->setContentsMargins(8, 2, 8, 2);
    layout->addWidget(m_statusLabel);

    QScrollBar* mainRows = m_main.view->verticalScrollBar();
    QScrollBar* pinnedRows = m_pinned.view->verticalScrollBar();
    connect(mainRows, &QScrollBar::valueChanged, pinnedRows, &QScrollBar::setValue);
    connect(pinnedRows, &QScrollBar::valueChanged, mainRows, &QScrollBar::setValue);
    for (QScrollBar* bar :
         {mainRows, m_main.view->horizontalScrollBar(), m_pinned.view->horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, &BinBox::scrolled);

    connect(m_closeButton, &QToolButton::clicked, this, &BinBox::closePressed);
    connect(m_gangButton, &QToolButton::clicked, this, &BinBox::gangPressed);
    connect(m_layoutButton, &QToolButton::clicked, this, &BinBox::editLayout);
    connect(m_extendButton, &QToolButton::clicked, this, [this] {
        setActive(true);
        m_host.toggleViewMode();
    });
    connect(m_searchField, &QLineEdit::textChanged, this, &BinBox::searchAsYouType);
    connect(m_searchField, &QLineEdit::returnPressed, this, &BinBox::findNext);
    connect(m_dataScopeButton, &QToolButton::clicked, this, [this] { setSearchHeaders(false); });
    connect(m_headersScopeButton, &QToolButton::clicked, this, [this] { setSearchHeaders(true); });
    auto* next = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_G), this);
    next->setContext(Qt::WidgetWithChildrenShortcut);
    connect(next, &QShortcut::activated, this, &BinBox::findNext);
    auto* find = new QShortcut(QKeySequence::Find, this);
    find->setContext(Qt::WidgetWithChildrenShortcut);
    connect(find, &QShortcut::activated, this, [this] {
        m_searchField->setFocus();
        m_searchField->selectAll();
    });
}

void BinBox::editLayout() {
    setActive(true);
    if (openLayoutEditor(m_sharedstuff, &m_bin, window()))
        refresh(false);
}

void BinBox::foldTitleButtons() {
    const QList<QToolButton*> folding{m_layoutButton, m_gangButton, m_extendButton};
    const QLayout* bar = m_titleBar->layout();
    const QMargins margins = bar->contentsMargins();
    // The title keeps room for a few words before any button gives way.
    const int titleRoom = std::min(m_titleLabel->fontMetrics().horizontalAdvance(m_titleLabel->text()), 90);
    int needed = margins.left() + margins.right() + m_closeButton->sizeHint().width() + titleRoom;
    for (const QToolButton* button : folding)
        needed += bar->spacing() + button->sizeHint().width();
    const bool fold = m_titleBar->width() < needed + bar->spacing();
    for (QToolButton* button : folding)
        button->setVisible(!fold);
    m_moreButton->setVisible(fold);
}

void BinBox::setUpTable(TablePart& part, bool pinned) {
    part.pinned = pinned;
    part.view = new QTableView(this);
    part.view->setObjectName(pinned ? QStringLiteral("pinnedTable") : QStringLiteral("mainTable"));
    part.model = new BinTableModel(m_bin, part.view);
    part.header = new BoxHeader(part.view);
    part.view->setModel(part.model);
    part.view->setHorizontalHeader(part.header);
    part.view->verticalHeader()->hide();
    setClipRowHeight(*part.view);
    part.view->setSelectionBehavior(QAbstractItemView::SelectRows);
    part.view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    part.view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    part.view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    part.view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    part.view->setWordWrap(false);
    part.view->setTextElideMode(Qt::ElideRight);
    part.view->setAlternatingRowColors(true);
    part.view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                               QAbstractItemView::AnyKeyPressed);
    part.view->setItemDelegate(new CellDelegate([this] { m_acceptEdit = true; }, part.view));
    part.view->viewport()->installEventFilter(this);
    if (pinned)
        part.view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    part.model->onEdit = [this](int row, const std::string& column, const std::string& text) {
        return cellEdited(row, column, text);
    };
    connect(part.view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this, &part] { syncSelection(part); });
    connect(part.header, &QHeaderView::sectionResized, this, [&part](int column, int, int size) {
        if (column >= 0 && column < part.model->columnCount())
            part.widths[part.model->columns()[static_cast<std::size_t>(column)].identifier] = size;
    });
    connect(part.header, &BoxHeader::pressed, this, [this] { setActive(true); });
    connect(part.header, &BoxHeader::columnsSelected, this,
            [this, &part](const std::vector<int>& columns) { applyColumnSelection(part, columns); });
    connect(part.header, &BoxHeader::orderRequested, this,
            [this, &part](int column) { headerOrder(part, column); });
    connect(part.header, &BoxHeader::fitRequested, this, [this, &part](int column) {
        fitColumn(part.model->columns()[static_cast<std::size_t>(column)].identifier, true, true);
        redraw(false);
    });
    connect(part.header, &BoxHeader::widthChosen, this,
            [this, &part](int column) { headerWidthChosen(part, column); });
    connect(part.header, &BoxHeader::blockMoveRequested, this,
            [this, &part](const std::vector<int>& selected, int from, int to) {
                headerBlockMove(part, selected, from, to);
            });
}

void BinBox::refresh(bool activate) {
    m_contentWidths.clear();
    redraw(activate);
}

void BinBox::redraw(bool activate) {
    if (!m_bin.selected())
        return;
    const bool free = !m_host.panelInFront();
    m_searchField->setEnabled(free);
    m_closeButton->setEnabled(free);
    const QPoint mainOrigin(m_main.view->horizontalScrollBar()->value(),
                            m_main.view->verticalScrollBar()->value());
    const int pinnedX = m_pinned.view->horizontalScrollBar()->value();

    m_syncing = true;
    rebuildColumns();
    fitColumnsOnRefresh();
    updateFrames();
    m_main.view->horizontalScrollBar()->setValue(mainOrigin.x());
    m_main.view->verticalScrollBar()->setValue(mainOrigin.y());
    m_pinned.view->horizontalScrollBar()->setValue(pinnedX);
    m_syncing = false;

    if (QWidget* area = m_host.boxesArea(); area && parentWidget() != area) {
        setParent(area);
        show();
    }
    if (activate)
        setActive(false);
    updateActiveLook(m_sharedstuff.activeBin == &m_bin);
    updateButtons();
    m_lastScroll = scrollOrigin();
    updateStatusBar();
}

void BinBox::rebuildColumns() {
    static const std::vector<std::string> noColumns;
    const auto& layoutColumns = m_bin.layout ? m_bin.layout->columns : noColumns;
    const tables::ProjectLayouts& layouts = m_sharedstuff.projectLayouts;
    m_split = app::splitColumns(layouts.pinnedColumns, layoutColumns);
    for (TablePart* part : {&m_pinned, &m_main}) {
        const auto& names = part->pinned ? m_split.pinned : m_split.main;
        part->model->setColumns(app::columnSpecs(names, part->pinned, m_bin, layouts, m_order));
        applyWidths(*part);
    }
}

void BinBox::applyWidths(TablePart& part) {
    const auto& specs = part.model->columns();
    const QFontMetrics metrics(part.header->font());
    for (int i = 0; i < static_cast<int>(specs.size()); ++i) {
        const app::ColumnSpec& spec = specs[static_cast<std::size_t>(i)];
        part.header->setSectionResizeMode(i, spec.isTag ? QHeaderView::Fixed : QHeaderView::Interactive);
        if (spec.sizing == app::ColumnSizing::given) {
            part.header->resizeSection(i,
                                       static_cast<int>(spec.width) + (spec.isTag ? 0 : cellMargins(part)));
        } else if (spec.sizing == app::ColumnSizing::sizeToFit) {
            part.header->resizeSection(i, metrics.horizontalAdvance(toQt(spec.title)) + 20);
        } else if (const auto kept = part.widths.find(spec.identifier); kept != part.widths.end()) {
            part.header->resizeSection(i, kept->second);
        }
    }
}

int BinBox::cellMargins(const TablePart& part) const {
    // Layout widths measure the text alone; the cell's own margins come on top, so a fitted value is not cut.
    return 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, part.view) + 1) + 4;
}

bool BinBox::fitsOnRefresh(const app::ColumnSpec& spec) const {
    const auto rule = m_sharedstuff.projectLayouts.columnsdefaultwidth;
    return !spec.isTag && !spec.storedWidth &&
           (rule == tables::ColumnsDefaultWidth::fittocontent ||
            rule == tables::ColumnsDefaultWidth::asneeded);
}

void BinBox::fitColumnsOnRefresh() {
    const bool force =
        m_sharedstuff.projectLayouts.columnsdefaultwidth == tables::ColumnsDefaultWidth::fittocontent;
    for (TablePart* part : {&m_pinned, &m_main}) {
        for (const app::ColumnSpec& spec : part->model->columns()) {
            if (fitsOnRefresh(spec))
                fitColumn(spec.identifier, force, false);
        }
    }
}

void BinBox::fitColumn(const std::string& column, bool force, bool store) {
    TablePart* part = partHolding(column);
    if (!part || !m_bin.table())
        return;
    const int index = part->model->columnOf(column);
    const int margins = cellMargins(*part);
    const double content = m_contentWidths.width(*m_bin.table(), column);
    const int width =
        static_cast<int>(app::fittedWidth(part->header->sectionSize(index) - margins, content, force));
    part->header->resizeSection(index, width + margins);
    if (store)
        app::storeColumnWidth(m_sharedstuff, m_bin, column, width);
}

void BinBox::updateFrames() {
    int pinnedWidth = 0;
    for (int i = 0; i < m_pinned.model->columnCount(); ++i)
        pinnedWidth += m_pinned.header->sectionSize(i);
    m_pinned.view->setVisible(pinnedWidth > 0);
    if (pinnedWidth > 0)
        m_pinned.view->setFixedWidth(pinnedWidth + 2 * m_pinned.view->frameWidth() + 3);
}

void BinBox::updateButtons() {
    m_gangButton->setChecked(m_sharedstuff.gang);
    m_gangAction->setChecked(m_sharedstuff.gang);
    const QString layout = toQt(m_bin.layout ? m_bin.layout->name : std::string());
    m_layoutButton->setText(m_layoutButton->fontMetrics().elidedText(layout, Qt::ElideRight, 110));
    m_layoutButton->setToolTip(tr("Layout “%1”: edit the bin's columns").arg(layout));
    foldTitleButtons();
    m_dataScopeButton->setChecked(!m_searchHeaders);
    m_headersScopeButton->setChecked(m_searchHeaders);
}

void BinBox::updateActiveLook(bool active) {
    m_activeLook = active;
    // The lock mark follows the bin on every redraw, not only when the box is activated.
    const std::string name = m_bin.displayName();
    m_titleLabel->setText(toQt(m_bin.isLock() ? "🔒" + name : name));
    m_titleLabel->setToolTip(m_titleLabel->text());
    QPalette look = palette();
    const bool smart = project::smartLink(m_bin) != nullptr;
    if (active) {
        look.setColor(QPalette::Window, look.color(smart ? QPalette::LinkVisited : QPalette::Highlight));
        look.setColor(QPalette::WindowText, look.color(QPalette::HighlightedText));
    } else {
        look.setColor(QPalette::Window, look.color(QPalette::Button));
        look.setColor(QPalette::WindowText, look.color(QPalette::PlaceholderText));
    }
    m_titleBar->setPalette(look);
}

void BinBox::setActive(bool focus) {
    project::Bin* previous = m_sharedstuff.activeBin;
    m_sharedstuff.activeBin = &m_bin;
    if (previous && previous != &m_bin && previous->selected()) {
        if (auto* box = dynamic_cast<BinBox*>(previous->box()))
            box->updateActiveLook(false);
    }
    updateActiveLook(true);
    if (focus && m_activeTable)
        m_activeTable->view->setFocus();
    m_host.boxActivated(*this);
}

void BinBox::updateStatusBar() {
    std::string text = m_sharedstuff.statusBarRule;
    const std::string token = "#{COUNT ENTRIES}";
    const std::string count = std::to_string(m_bin.table() ? m_bin.table()->data.size() : 0);
    for (std::size_t at = text.find(token); at != std::string::npos; at = text.find(token, at + count.size()))
        text.replace(at, token.size(), count);
    m_statusLabel->setText(toQt(text));
}

BinBox::TablePart* BinBox::partHolding(const std::string& column) {
    for (TablePart* part : {&m_pinned, &m_main}) {
        if (part->model->columnOf(column) >= 0)
            return part;
    }
    return nullptr;
}

bool BinBox::cellEdited(int row, const std::string& column, const std::string& text) {
    if (!m_acceptEdit)
        return false;
    const app::CellEditResult result = app::editCell(m_sharedstuff, m_bin, row, column, text);
    if (result.outcome == app::CellEditOutcome::refused)
        return false;
    const bool changed =
        result.outcome == app::CellEditOutcome::stored || result.outcome == app::CellEditOutcome::cleared;
    if (changed) {
        for (project::Bin* other : result.binsToRefresh) {
            if (other == &m_bin)
                continue;
            if (auto* box = dynamic_cast<BinBox*>(other->box()))
                box->showCellEdit(-1, column, result);
        }
        showCellEdit(row, column, result);
    }
    setActive(false);
    return changed;
}

void BinBox::showCellEdit(int row, const std::string& column, const app::CellEditResult& edit) {
    const tables::ALETable* table = m_bin.table();
    if (!m_bin.selected() || !table)
        return;
    if (static_cast<int>(table->data.size()) != m_main.model->rowCount()) {
        refresh(false);
        return;
    }
    m_contentWidths.replace(column, edit.oldValue, edit.newValue);
    if (TablePart* part = partHolding(column)) {
        const int index = part->model->columnOf(column);
        // Only the edited column's content changed: the other columns keep the widths the rule gave them.
        if (fitsOnRefresh(part->model->columns()[static_cast<std::size_t>(index)])) {
            fitColumn(column,
                      m_sharedstuff.projectLayouts.columnsdefaultwidth ==
                          tables::ColumnsDefaultWidth::fittocontent,
                      false);
            updateFrames();
        }
        part->model->cellChanged(row, index);
    }
    updateStatusBar();
}

void BinBox::syncSelection(TablePart& from) {
    if (m_syncing)
        return;
    m_activeTable = &from;
    TablePart& to = &from == &m_main ? m_pinned : m_main;
    const int lastColumn = to.model->columnCount() - 1;
    if (lastColumn >= 0) {
        QItemSelection rows;
        for (const QItemSelectionRange& range : from.view->selectionModel()->selection())
            rows.select(to.model->index(range.top(), 0), to.model->index(range.bottom(), lastColumn));
        m_syncing = true;
        to.view->selectionModel()->select(rows,
                                          QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_syncing = false;
    }
    setActive(true);
}

void BinBox::selectRowsAlone(int row) {
    m_syncing = true;
    for (TablePart* part : {&m_pinned, &m_main}) {
        part->header->setSelectedColumns({});
        if (part->model->columnCount() > 0)
            part->view->selectionModel()->select(
                part->model->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    m_syncing = false;
}

void BinBox::applyColumnSelection(TablePart& part, const std::vector<int>& columns) {
    QItemSelection selection;
    for (int column : columns)
        selection.select(part.model->index(0, column), part.model->index(0, column));
    m_syncing = true;
    part.view->selectionModel()->select(selection,
                                        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Columns);
    m_syncing = false;
    m_activeTable = &part;
}

void BinBox::selectColumnAlone(TablePart& part, int column) {
    clearMarks();
    part.header->setSelectedColumns({column});
    applyColumnSelection(part, {column});
}

void BinBox::clearMarks() {
    m_syncing = true;
    for (TablePart* part : {&m_pinned, &m_main}) {
        part->view->clearSelection();
        part->header->setSelectedColumns({});
    }
    m_syncing = false;
}

void BinBox::showHit(const app::SearchHit& hit) {
    TablePart& part = partOf(hit.inPinned);
    const int column = part.model->columnOf(hit.column);
    if (column < 0)
        return;
    if (hit.row < 0) {
        selectColumnAlone(part, column);
        QScrollBar* bar = part.view->horizontalScrollBar();
        const int left = part.header->sectionPosition(column);
        const int right = left + part.header->sectionSize(column);
        if (left < bar->value() || right > bar->value() + part.view->viewport()->width())
            bar->setValue(left);
    } else {
        const QModelIndex cell = part.model->index(hit.row, column);
        selectRowsAlone(hit.row);
        // The hit is only made current, never edited: a key typed next must not overwrite the clip.
        part.view->selectionModel()->setCurrentIndex(cell, QItemSelectionModel::NoUpdate);
        part.view->scrollTo(cell);
    }
    m_searchField->setFocus();
    m_searchField->setCursorPosition(static_cast<int>(m_searchField->text().size()));
}

void BinBox::searchAsYouType(const QString& text) {
    const std::string lowered = fromQt(text.toLower());
    clearMarks();
    m_notFoundLabel->hide();
    if (!lowered.empty() && m_bin.table()) {
        static const std::vector<std::string> noColumns;
        const auto& layoutColumns = m_bin.layout ? m_bin.layout->columns : noColumns;
        const auto hit = m_searchHeaders
                             ? app::searchHeadersFirst(m_split, lowered)
                             : app::searchDataFirst(*m_bin.table(), m_split, layoutColumns, lowered);
        if (hit) {
            showHit(*hit);
            return;
        }
        m_notFoundLabel->show();
    }
    m_searchField->setFocus();
    m_searchField->setCursorPosition(static_cast<int>(text.size()));
}

void BinBox::findNext() {
    if (!m_bin.table())
        return;
    static const std::vector<std::string> noColumns;
    const auto& layoutColumns = m_bin.layout ? m_bin.layout->columns : noColumns;
    const std::vector<std::string> columns = app::searchColumns(m_split, layoutColumns);
    const std::string text = fromQt(m_searchField->text());
    const auto hit = m_searchHeaders ? app::searchHeadersNext(m_search, m_split, columns, text)
                                     : app::searchDataNext(m_search, *m_bin.table(), m_split, columns, text);
    m_notFoundLabel->setVisible(!hit && !text.empty());
    if (hit)
        showHit(*hit);
}

void BinBox::setSearchHeaders(bool headers) {
    m_searchHeaders = headers;
    updateButtons();
    searchAsYouType(m_searchField->text());
    updateFrames();
}

QPoint BinBox::scrollOrigin() const {
    return {m_main.view->horizontalScrollBar()->value(), m_main.view->verticalScrollBar()->value()};
}

void BinBox::scrolled() {
    if (!m_lastScroll || m_syncing)
        return;
    const QPoint now = scrollOrigin();
    const QPoint delta = now - *m_lastScroll;
    m_lastScroll = now;
    if (delta.isNull() || !m_sharedstuff.gang || m_sharedstuff.activeBin != &m_bin)
        return;
    for (BinBox* other : otherOpenBoxes())
        other->scrollBy(delta);
}

void BinBox::scrollBy(const QPoint& delta) {
    QScrollBar* across = m_main.view->horizontalScrollBar();
    QScrollBar* down = m_main.view->verticalScrollBar();
    QScrollBar* pinnedAcross = m_pinned.view->horizontalScrollBar();
    across->setValue(across->value() + delta.x());
    down->setValue(down->value() + delta.y());
    pinnedAcross->setValue(pinnedAcross->value() + delta.x());
}

std::vector<BinBox*> BinBox::otherOpenBoxes() const {
    std::vector<BinBox*> out;
    for (project::Bin* bin : m_sharedstuff.openBins()) {
        if (bin == &m_bin || !bin->selected())
            continue;
        if (auto* box = dynamic_cast<BinBox*>(bin->box()))
            out.push_back(box);
    }
    return out;
}

void BinBox::headerOrder(TablePart& part, int column) {
    orderByColumn(part.model->columns()[static_cast<std::size_t>(column)].identifier);
}

void BinBox::orderByColumn(const std::string& column) {
    setActive(true);
    m_host.showNotification(app::orderByColumn(m_sharedstuff, m_bin, m_order, column));
    // A sort moves rows without changing a value: the counted widths still hold.
    redraw(false);
}

void BinBox::headerWidthChosen(TablePart& part, int column) {
    const std::string& name = part.model->columns()[static_cast<std::size_t>(column)].identifier;
    app::storeColumnWidth(m_sharedstuff, m_bin, name, part.header->sectionSize(column) - cellMargins(part));
    redraw(false);
}

void BinBox::headerBlockMove(TablePart& part, const std::vector<int>& selected, int from, int to) {
    if (m_bin.isLock())
        return;
    std::vector<std::string> names;
    for (const app::ColumnSpec& spec : part.model->columns())
        names.push_back(spec.identifier);
    const auto move = app::moveColumnBlock(names, std::vector<std::size_t>(selected.begin(), selected.end()),
                                           static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    if (!move)
        return;
    if (part.pinned) {
        app::applyPinnedColumnsOrder(m_sharedstuff, move->order);
        for (BinBox* other : otherOpenBoxes())
            other->refresh(false);
    } else if (!app::applyMainColumnsOrder(m_sharedstuff, m_bin, move->order)) {
        return;
    }
    redraw(false);
    const std::vector<int> moved(move->selected.begin(), move->selected.end());
    part.header->setSelectedColumns(moved);
    applyColumnSelection(part, moved);
}

void BinBox::closePressed() {
    m_bin.setSelected(false);
    hide();
    for (project::SharedStuffDelegate* delegate : m_sharedstuff.delegates)
        delegate->reloadBinsLists();
}

void BinBox::gangPressed() {
    m_sharedstuff.gang = !m_sharedstuff.gang;
    updateButtons();
    for (BinBox* other : otherOpenBoxes())
        other->updateButtons();
}

bool BinBox::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_titleBar && event->type() == QEvent::Resize)
        foldTitleButtons();
    if (event->type() == QEvent::MouseButtonPress)
        setActive(true);
    return QWidget::eventFilter(watched, event);
}

void BinBox::mousePressEvent(QMouseEvent* event) {
    setActive(true);
    QWidget::mousePressEvent(event);
}

void BinBox::hideEvent(QHideEvent* event) {
    // A closed bin's rows may change through other boxes without this one hearing of it.
    m_contentWidths.clear();
    QWidget::hideEvent(event);
}

} // namespace lumbra::shell
