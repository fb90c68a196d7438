#include "chain/fields_selection_input.h"

#include "base/console.h"
#include "chain/single_input_view_controller.h"
#include "project/shared_stuff.h"

#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace lumbra::shell {

FieldsSelectionInput::FieldsSelectionInput(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("FieldsSelectionInput"));
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    m_layoutPopup = new QComboBox(this);
    m_layoutPopup->setObjectName(QStringLiteral("layoutPopup"));
    m_filterTextField = new QLineEdit(this);
    m_filterTextField->setObjectName(QStringLiteral("filterTextField"));
    m_filterTextField->setPlaceholderText(tr("Filter"));
    m_filterTextField->setClearButtonEnabled(true);
    m_unselectedColumnsList = new QListWidget(this);
    m_unselectedColumnsList->setObjectName(QStringLiteral("unselectedColumnsList"));
    m_unselectedColumnsList->setToolTip(tr("Click a column to add it"));
    m_selectedColumnsList = new QListWidget(this);
    m_selectedColumnsList->setObjectName(QStringLiteral("selectedColumnsList"));
    m_selectedColumnsList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_customButton = new QPushButton(tr("Custom Column…"), this);
    m_customButton->setObjectName(QStringLiteral("customColumnButton"));
    m_removeButton = new QPushButton(tr("Remove"), this);
    m_removeButton->setObjectName(QStringLiteral("removeColumnButton"));

    grid->addWidget(m_layoutPopup, 0, 0);
    grid->addWidget(new QLabel(tr("Selected columns"), this), 0, 1);
    grid->addWidget(m_filterTextField, 1, 0);
    grid->addWidget(m_unselectedColumnsList, 2, 0);
    grid->addWidget(m_selectedColumnsList, 1, 1, 2, 1);
    grid->addWidget(m_customButton, 3, 0, Qt::AlignLeft);
    grid->addWidget(m_removeButton, 3, 1, Qt::AlignRight);

    connect(m_layoutPopup, &QComboBox::textActivated, this, [this](const QString& title) {
        m_selection.selectLayout(title.toStdString());
        const QSignalBlocker blocker(m_filterTextField);
        m_filterTextField->clear();
        reloadLists();
    });
    connect(m_filterTextField, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_selection.setFilter(text.toStdString());
        reloadLists();
    });
    connect(m_unselectedColumnsList, &QListWidget::itemClicked, this, &FieldsSelectionInput::addColumn);
    connect(m_unselectedColumnsList, &QListWidget::itemActivated, this, &FieldsSelectionInput::addColumn);
    connect(m_selectedColumnsList, &QListWidget::itemDoubleClicked, this, [this] { removeSelected(); });
    connect(m_removeButton, &QPushButton::clicked, this, &FieldsSelectionInput::removeSelected);
    connect(m_customButton, &QPushButton::clicked, this, &FieldsSelectionInput::addCustomColumn);
    m_selectedColumnsList->installEventFilter(this);
}

void FieldsSelectionInput::setup(project::SharedStuff& sharedstuff) {
    m_sharedstuff = &sharedstuff;
    m_selection.setup(sharedstuff);
    m_layoutPopup->clear();
    for (const std::string& title : m_selection.popupTitles()) {
        m_layoutPopup->addItem(QString::fromStdString(title));
    }
    reloadLists();
}

void FieldsSelectionInput::setDelegate(std::function<void(const std::vector<std::string>&)> delegate) {
    m_delegate = std::move(delegate);
}

void FieldsSelectionInput::setSelectedColumns(const std::vector<std::string>& columns) {
    for (const std::string& column : std::vector<std::string>(m_selection.selectedColumns)) {
        m_selection.removeColumn(column);
    }
    for (const std::string& column : columns) {
        m_selection.addColumn(column);
    }
    reloadLists();
}

void FieldsSelectionInput::addCustomColumn() {
    const auto answer = singleInput("Custom Column", "", "Insert column name", {}, false,
                                    m_sharedstuff ? m_sharedstuff->mainWindow : nullptr, std::nullopt, this);
    if (m_selection.addCustomColumn(answer)) {
        selectionChanged();
    }
}

bool FieldsSelectionInput::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_selectedColumnsList && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Delete || key == Qt::Key_Backspace) {
            removeSelected();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void FieldsSelectionInput::reloadLists() {
    m_unselectedColumnsList->clear();
    for (const std::string& column : m_selection.filteredColumns) {
        auto* item = new QListWidgetItem(QString::fromStdString(column), m_unselectedColumnsList);
        if (m_selection.isSelected(column)) {
            item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
        }
    }
    m_selectedColumnsList->clear();
    for (const std::string& column : m_selection.selectedColumns) {
        new QListWidgetItem(QString::fromStdString(column), m_selectedColumnsList);
    }
}

void FieldsSelectionInput::selectionChanged() {
    reloadLists();
    base::printLine(m_selection.fieldsListLine());
    if (m_delegate) {
        m_delegate(m_selection.selectedColumns);
    }
}

void FieldsSelectionInput::addColumn(QListWidgetItem* item) {
    if (item && (item->flags() & Qt::ItemIsEnabled) && m_selection.addColumn(item->text().toStdString())) {
        selectionChanged();
    }
}

void FieldsSelectionInput::removeSelected() {
    bool removed = false;
    for (const QListWidgetItem* item : m_selectedColumnsList->selectedItems()) {
        removed = m_selection.removeColumn(item->text().toStdString()) || removed;
    }
    if (removed) {
        selectionChanged();
    }
}

} // namespace lumbra::shell
