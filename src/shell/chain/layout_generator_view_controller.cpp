#include "chain/layout_generator_view_controller.h"

#include "chain/tree_pickers.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QStyle>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

namespace lumbra::shell {

namespace {

// Steps of the move buttons and keys; a count past the list's length moves to its end.
constexpr long oneStep = 1;
constexpr long tenSteps = 10;

QToolButton* toolButton(QWidget* parent, const QString& name, const QString& text, const QString& tip) {
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(tip);
    button->setMinimumWidth(34);
    return button;
}

QListWidget* columnList(QWidget* parent, const QString& name) {
    auto* list = new QListWidget(parent);
    list->setObjectName(name);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setUniformItemSizes(true);
    list->setAlternatingRowColors(true);
    return list;
}

} // namespace

void LayoutPreviewModel::setBin(const project::Bin* bin, std::size_t limit) {
    beginResetModel();
    m_bin = bin;
    m_limit = limit;
    endResetModel();
}

void LayoutPreviewModel::setColumns(std::vector<std::string> columns) {
    beginResetModel();
    m_columns = std::move(columns);
    endResetModel();
}

std::size_t LayoutPreviewModel::totalRows() const {
    return m_bin && m_bin->table() ? m_bin->table()->data.size() : 0;
}

int LayoutPreviewModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(std::min(totalRows(), m_limit));
}

int LayoutPreviewModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant LayoutPreviewModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= rowCount() ||
        index.column() >= columnCount()) {
        return {};
    }
    const auto& entry = m_bin->table()->data[static_cast<std::size_t>(index.row())];
    const auto value =
        entry ? entry->value(m_columns[static_cast<std::size_t>(index.column())]) : std::nullopt;
    return QString::fromStdString(value.value_or(std::string()));
}

QVariant LayoutPreviewModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) {
        return {};
    }
    if (orientation == Qt::Vertical) {
        return section + 1;
    }
    return section >= 0 && section < columnCount()
               ? QString::fromStdString(m_columns[static_cast<std::size_t>(section)])
               : QVariant();
}

LayoutGeneratorViewController::LayoutGeneratorViewController(project::SharedStuff& sharedstuff,
                                                             QWidget* parent)
    : QDialog(parent), m_sharedstuff(sharedstuff) {
    setObjectName(QStringLiteral("layoutgeneratorwindow"));
    setWindowTitle(tr("Layout Editor"));
    buildWindow();
}

void LayoutGeneratorViewController::buildWindow() {
    auto* layout = new QVBoxLayout(this);

    auto* nameRow = new QHBoxLayout;
    m_nameTextField = new QLineEdit(this);
    m_nameTextField->setObjectName(QStringLiteral("nameTextField"));
    m_nameTextField->setPlaceholderText(tr("Layout name"));
    nameRow->addWidget(new QLabel(tr("Name:"), this));
    nameRow->addWidget(m_nameTextField, 1);
    layout->addLayout(nameRow);

    auto* lists = new QGridLayout;
    m_layoutButton = new QPushButton(this);
    m_layoutButton->setObjectName(QStringLiteral("layoutButton"));
    m_layoutButton->setToolTip(tr("Where the columns on the left come from"));
    m_filterField = new QLineEdit(this);
    m_filterField->setObjectName(QStringLiteral("filterField"));
    m_filterField->setPlaceholderText(tr("Filter"));
    m_filterField->setClearButtonEnabled(true);
    m_supportTable = columnList(this, QStringLiteral("supportTable"));
    m_supportTable->setToolTip(tr("Double-click a column to add it"));
    m_columnsTable = columnList(this, QStringLiteral("columnsTable"));
    m_columnsTable->setContextMenuPolicy(Qt::CustomContextMenu);

    auto* sourceHeader = new QHBoxLayout;
    sourceHeader->addWidget(new QLabel(tr("Columns from"), this));
    sourceHeader->addWidget(m_layoutButton, 1);
    lists->addLayout(sourceHeader, 0, 0);
    lists->addWidget(m_filterField, 1, 0);
    lists->addWidget(m_supportTable, 2, 0);

    auto* middle = new QVBoxLayout;
    m_takeOneButton =
        toolButton(this, QStringLiteral("takeOneButton"), QStringLiteral("›"), tr("Add selected"));
    m_takeAllButton = toolButton(this, QStringLiteral("takeAllButton"), QStringLiteral("»"), tr("Add all"));
    m_removeOneButton =
        toolButton(this, QStringLiteral("removeOneButton"), QStringLiteral("‹"), tr("Remove selected"));
    m_removeAllButton =
        toolButton(this, QStringLiteral("removeAllButton"), QStringLiteral("«"), tr("Remove all"));
    middle->addStretch(1);
    for (QToolButton* button : {m_takeOneButton, m_takeAllButton, m_removeOneButton, m_removeAllButton}) {
        middle->addWidget(button);
    }
    middle->addStretch(1);
    lists->addLayout(middle, 2, 1);

    lists->addWidget(new QLabel(tr("Layout columns"), this), 0, 2, 2, 1, Qt::AlignBottom);
    lists->addWidget(m_columnsTable, 2, 2);

    auto* moves = new QVBoxLayout;
    struct Move {
        const char* name;
        const char* text;
        QString tip;
        long steps;
    };
    const long toEnd = 1L << 30;
    const Move moveButtons[] = {
        {"moveToTop", "⤒", tr("Move to top (Alt+Home)"), -toEnd},
        {"moveTenUp", "⇑", tr("Move up by ten (Alt+Page Up)"), -tenSteps},
        {"moveOneUp", "↑", tr("Move up (Alt+Up)"), -oneStep},
        {"moveOneDown", "↓", tr("Move down (Alt+Down)"), oneStep},
        {"moveTenDown", "⇓", tr("Move down by ten (Alt+Page Down)"), tenSteps},
        {"moveToBottom", "⤓", tr("Move to bottom (Alt+End)"), toEnd},
    };
    moves->addStretch(1);
    for (const Move& move : moveButtons) {
        auto* button =
            toolButton(this, QString::fromLatin1(move.name), QString::fromUtf8(move.text), move.tip);
        const long steps = move.steps;
        connect(button, &QToolButton::clicked, this, [this, steps] { moveSelected(steps); });
        moves->addWidget(button);
    }
    moves->addStretch(1);
    lists->addLayout(moves, 2, 3);
    lists->setColumnStretch(0, 1);
    lists->setColumnStretch(2, 1);
    layout->addLayout(lists, 3);

    auto* previewRow = new QHBoxLayout;
    m_previewCheckbox = new QCheckBox(tr("Preview with these columns only"), this);
    m_previewCheckbox->setObjectName(QStringLiteral("previewCheckbox"));
    m_previewCheckbox->setChecked(true);
    m_cutLabel = new QLabel(this);
    m_cutLabel->setObjectName(QStringLiteral("cutLabel"));
    m_cutLabel->setForegroundRole(QPalette::PlaceholderText);
    previewRow->addWidget(m_previewCheckbox);
    previewRow->addStretch(1);
    previewRow->addWidget(m_cutLabel);
    layout->addLayout(previewRow);

    m_previewModel = new LayoutPreviewModel(this);
    m_previewTableView = new QTableView(this);
    m_previewTableView->setObjectName(QStringLiteral("previewTableView"));
    m_previewTableView->setModel(m_previewModel);
    m_previewTableView->setAlternatingRowColors(true);
    m_previewTableView->verticalHeader()->setDefaultSectionSize(22);
    m_previewTableView->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(m_previewTableView, 2);

    auto* buttons = new QDialogButtonBox(this);
    m_cancelButton = buttons->addButton(QDialogButtonBox::Cancel);
    m_createButton = buttons->addButton(tr("Create"), QDialogButtonBox::AcceptRole);
    m_createButton->setObjectName(QStringLiteral("createButton"));
    layout->addWidget(buttons);
    for (QPushButton* button : {m_cancelButton, m_createButton, m_layoutButton}) {
        button->setAutoDefault(false);
    }

    connect(m_nameTextField, &QLineEdit::textChanged, this, [this] { validateName(); });
    connect(m_nameTextField, &QLineEdit::returnPressed, this, [this] { validateName(); });
    connect(m_filterField, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_editor.setFilter(text.toStdString());
        refreshSupport();
    });
    connect(m_layoutButton, &QPushButton::clicked, this, &LayoutGeneratorViewController::selectFromLayouts);
    connect(m_takeOneButton, &QToolButton::clicked, this,
            &LayoutGeneratorViewController::takeOneButtonPressed);
    connect(m_takeAllButton, &QToolButton::clicked, this,
            &LayoutGeneratorViewController::takeAllButtonPressed);
    connect(m_removeOneButton, &QToolButton::clicked, this,
            &LayoutGeneratorViewController::removeOneButtonPressed);
    connect(m_removeAllButton, &QToolButton::clicked, this,
            &LayoutGeneratorViewController::removeAllButtonPressed);
    connect(m_supportTable, &QListWidget::itemDoubleClicked, this,
            [this](const QListWidgetItem* item) { addColumnWithButton(item->text()); });
    connect(m_previewCheckbox, &QCheckBox::toggled, this,
            [this] { refreshAll(selectedRows(m_columnsTable)); });
    connect(m_columnsTable, &QListWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        QMenu menu(this);
        menu.addAction(tr("Hide Column"), this, &LayoutGeneratorViewController::removeOneButtonPressed);
        menu.exec(m_columnsTable->viewport()->mapToGlobal(at));
    });
    connect(m_createButton, &QPushButton::clicked, this, &LayoutGeneratorViewController::createButtonPressed);
    connect(m_cancelButton, &QPushButton::clicked, this, [this] {
        m_retLayout.reset();
        done(1);
    });
    m_columnsTable->installEventFilter(this);
    m_supportTable->installEventFilter(this);
    resize(820, 640);
}

void LayoutGeneratorViewController::setup(project::Bin& bin) {
    m_retLayout.reset();
    m_bin = &bin;
    m_editor.setup(bin);
    m_previewModel->setBin(&bin, app::layoutPreviewLimit);
    const auto cut = app::previewCutText(m_previewModel->totalRows());
    m_cutLabel->setText(cut ? QString::fromStdString(*cut) : QString());
    m_cutLabel->setVisible(cut.has_value());
    {
        const QSignalBlocker blocker(m_nameTextField);
        m_nameTextField->setText(QString::fromStdString(m_editor.name));
    }
    sourceChanged(m_editor.sourceTitle);
    refreshAll({});
}

void LayoutGeneratorViewController::setLayout(const std::shared_ptr<tables::ColumnsLayout>& layout, int) {
    if (layout) {
        m_editor.useLayout(*layout);
        sourceChanged(m_editor.sourceTitle);
    }
}

void LayoutGeneratorViewController::setBin(project::Bin* bin, int) {
    if (bin) {
        m_editor.useBin(*bin);
        sourceChanged(m_editor.sourceTitle);
    }
}

void LayoutGeneratorViewController::setColumns(const std::vector<std::string>& columns, int,
                                               const std::string& name) {
    m_editor.useColumns(columns, name);
    sourceChanged(m_editor.sourceTitle);
}

void LayoutGeneratorViewController::sourceChanged(const std::string& title) {
    m_layoutButton->setText(QString::fromStdString(title) + QStringLiteral("  ▾"));
    const QSignalBlocker blocker(m_filterField);
    m_filterField->clear();
    refreshSupport();
}

void LayoutGeneratorViewController::selectFromLayouts() {
    auto* picker = new LayoutSetterMixed(m_layoutButton);
    picker->setup(m_sharedstuff, this, 0, true);
    picker->popUp(m_layoutButton);
}

void LayoutGeneratorViewController::takeOneButtonPressed() {
    refreshAll(m_editor.takeSelected(selectedRows(m_supportTable), selectedRows(m_columnsTable)));
}

void LayoutGeneratorViewController::takeAllButtonPressed() {
    m_editor.takeAll();
    refreshAll(selectedRows(m_columnsTable));
}

void LayoutGeneratorViewController::removeOneButtonPressed() {
    const auto rows = selectedRows(m_columnsTable);
    m_editor.removeRows(rows);
    // The row that follows the removed ones takes the selection, so Delete can go on.
    std::vector<std::size_t> next;
    if (!rows.empty() && !m_editor.columns.empty()) {
        next.push_back(std::min(*std::min_element(rows.begin(), rows.end()), m_editor.columns.size() - 1));
    }
    refreshAll(next);
}

void LayoutGeneratorViewController::removeAllButtonPressed() {
    m_editor.removeAll();
    refreshAll({});
}

void LayoutGeneratorViewController::moveSelected(long steps) {
    refreshAll(m_editor.moveRows(selectedRows(m_columnsTable), steps));
}

void LayoutGeneratorViewController::addColumnWithButton(const QString& column) {
    const auto row = m_editor.addColumn(column.toStdString(), selectedRows(m_columnsTable));
    refreshAll(row ? std::vector<std::size_t>{*row} : selectedRows(m_columnsTable));
}

void LayoutGeneratorViewController::keyPressEvent(QKeyEvent* event) {
    // Return belongs to the field or list that has it; the window is confirmed by its button only.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool LayoutGeneratorViewController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return QDialog::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    if (watched == m_supportTable && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) {
        takeOneButtonPressed();
        return true;
    }
    if (watched != m_columnsTable) {
        return QDialog::eventFilter(watched, event);
    }
    if (key->key() == Qt::Key_Delete || key->key() == Qt::Key_Backspace) {
        removeOneButtonPressed();
        return true;
    }
    if (!(key->modifiers() & Qt::AltModifier)) {
        return QDialog::eventFilter(watched, event);
    }
    const long toEnd = static_cast<long>(m_editor.columns.size());
    switch (key->key()) {
    case Qt::Key_Up:
        moveSelected(-oneStep);
        return true;
    case Qt::Key_Down:
        moveSelected(oneStep);
        return true;
    case Qt::Key_PageUp:
        moveSelected(-tenSteps);
        return true;
    case Qt::Key_PageDown:
        moveSelected(tenSteps);
        return true;
    case Qt::Key_Home:
        moveSelected(-toEnd);
        return true;
    case Qt::Key_End:
        moveSelected(toEnd);
        return true;
    default:
        return QDialog::eventFilter(watched, event);
    }
}

void LayoutGeneratorViewController::refreshAll(const std::vector<std::size_t>& selectedColumns) {
    m_columnsTable->clear();
    for (const std::string& column : m_editor.columns) {
        new QListWidgetItem(QString::fromStdString(column), m_columnsTable);
    }
    for (std::size_t row : selectedColumns) {
        if (QListWidgetItem* item = m_columnsTable->item(static_cast<int>(row))) {
            item->setSelected(true);
            m_columnsTable->setCurrentItem(item, QItemSelectionModel::Select);
        }
    }
    refreshSupport();
    if (m_previewCheckbox->isChecked() || !m_bin || !m_bin->table()) {
        m_previewModel->setColumns(m_editor.columns);
    } else {
        m_previewModel->setColumns(m_bin->table()->cols);
    }
    validateName();
}

void LayoutGeneratorViewController::refreshSupport() {
    m_supportTable->clear();
    for (const std::string& column : m_editor.filteredsupportcolumns) {
        new QListWidgetItem(QString::fromStdString(column), m_supportTable);
    }
}

void LayoutGeneratorViewController::validateName() {
    m_editor.name = m_nameTextField->text().toStdString();
    const app::LayoutNameState state = m_editor.nameState(m_sharedstuff.projectLayouts);
    m_layAlreadyExist = state.exists;
    m_createButton->setEnabled(state.canCreate);
    m_createButton->setText(
        QString::fromUtf8(state.buttonTitle().data(), static_cast<int>(state.buttonTitle().size())));
}

void LayoutGeneratorViewController::createButtonPressed() {
    validateName();
    m_retLayout = m_editor.confirm(m_sharedstuff.projectLayouts);
    if (m_retLayout) {
        done(1);
    }
}

std::vector<std::size_t> LayoutGeneratorViewController::selectedRows(const QListWidget* list) const {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : list->selectionModel()->selectedIndexes()) {
        rows.push_back(static_cast<std::size_t>(index.row()));
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

bool openLayoutEditor(project::SharedStuff& sharedstuff, project::Bin* bin, QWidget* parent) {
    if (bin == nullptr) {
        return false;
    }
    LayoutGeneratorViewController editor(sharedstuff, parent);
    editor.setup(*bin);
    if (sharedstuff.mainWindow) {
        sharedstuff.mainWindow->setFog(true);
    }
    editor.exec();
    if (sharedstuff.mainWindow) {
        sharedstuff.mainWindow->setFog(false);
    }
    const auto result = editor.retLayout();
    return result && app::adoptEditedLayout(sharedstuff, *bin, result);
}

} // namespace lumbra::shell
