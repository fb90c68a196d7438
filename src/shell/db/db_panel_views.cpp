#include "db/db_panel_views.h"

#include "db/database_panel.h"
#include "db/db_import.h"
#include "table_rows.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMimeData>
#include <QUrl>

namespace lumbra::shell {

namespace {

// The local files of a drag that the list takes, by the last four characters of their paths.
std::vector<std::string> acceptedFiles(const QMimeData* mime) {
    std::vector<std::string> paths;
    if (!mime || !mime->hasUrls()) {
        return paths;
    }
    for (const QUrl& url : mime->urls()) {
        if (url.isLocalFile()) {
            std::string path = url.toLocalFile().toStdString();
            if (db::acceptsDrop(path)) {
                paths.push_back(std::move(path));
            }
        }
    }
    return paths;
}

} // namespace

DBPanelList::DBPanelList(DatabasePanel& dbpanel, QWidget* parent) : QListView(parent), m_dbpanel(dbpanel) {
    setObjectName(QStringLiteral("dbList"));
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
}

void DBPanelList::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    m_lastClicked = index.isValid() ? index.row() : -1;
    m_dbpanel.showMenu(m_dbpanel.listMenu(m_lastClicked), event->globalPos(), m_lastClicked);
}

void DBPanelList::dragEnterEvent(QDragEnterEvent* event) {
    if (acceptedFiles(event->mimeData()).empty()) {
        event->ignore();
        return;
    }
    setHighlighted(true);
    event->acceptProposedAction();
}

void DBPanelList::dragMoveEvent(QDragMoveEvent* event) {
    if (m_highlighted) {
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void DBPanelList::dragLeaveEvent(QDragLeaveEvent* event) {
    setHighlighted(false);
    event->accept();
}

void DBPanelList::dropEvent(QDropEvent* event) {
    setHighlighted(false);
    std::vector<std::string> paths = acceptedFiles(event->mimeData());
    if (paths.empty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    m_dbpanel.addDatabases(paths);
}

void DBPanelList::setHighlighted(bool highlighted) {
    if (m_highlighted == highlighted) {
        return;
    }
    m_highlighted = highlighted;
    setStyleSheet(highlighted ? QStringLiteral("QListView#dbList { border: 2px solid palette(highlight); }")
                              : QString());
}

DBPanelDisplay::DBPanelDisplay(DatabasePanel& dbpanel, QWidget* parent)
    : QTableView(parent), m_dbpanel(dbpanel) {
    setObjectName(QStringLiteral("displayTable"));
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                    QAbstractItemView::AnyKeyPressed);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setWordWrap(false);
    setClipRowHeight(*this);
}

void DBPanelDisplay::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    const int row = index.isValid() ? index.row() : -1;
    m_dbpanel.showMenu(m_dbpanel.displayMenu(row), event->globalPos(), row);
}

DBHeaderView::DBHeaderView(DatabasePanel& dbpanel, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), m_dbpanel(dbpanel) {
    setObjectName(QStringLiteral("dbHeader"));
    setSectionsClickable(true);
    setSectionResizeMode(QHeaderView::Interactive);
}

void DBHeaderView::contextMenuEvent(QContextMenuEvent* event) {
    const int section = logicalIndexAt(event->pos());
    if (section < 0) {
        return;
    }
    m_dbpanel.showMenu(m_dbpanel.headerMenu(section), event->globalPos(), section);
}

DBDisplayTextField::DBDisplayTextField(std::string column, int row, QWidget* parent)
    : QLineEdit(parent), m_column(std::move(column)), m_row(row) {
    setObjectName(QStringLiteral("dbDisplayTextField"));
    setFrame(false);
}

QWidget* DBDisplayDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                         const QModelIndex& index) const {
    const std::string column =
        index.model()->headerData(index.column(), Qt::Horizontal).toString().toStdString();
    auto* field = new DBDisplayTextField(column, index.row(), parent);
    QPersistentModelIndex cell(index);
    // Each keystroke goes into the entry, not only the finished text.
    connect(field, &QLineEdit::textEdited, field, [cell](const QString& text) {
        if (cell.isValid()) {
            const_cast<QAbstractItemModel*>(cell.model())->setData(cell, text, Qt::EditRole);
        }
    });
    return field;
}

void DBDisplayDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    // The model echoes every keystroke back: only a text from elsewhere replaces the field's, so
    // the cursor stays where the user types.
    auto* field = qobject_cast<DBDisplayTextField*>(editor);
    const QString text = index.data(Qt::EditRole).toString();
    if (field && field->text() != text) {
        field->setText(text);
    }
}

void DBDisplayDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                     const QModelIndex& index) const {
    if (auto* field = qobject_cast<DBDisplayTextField*>(editor)) {
        model->setData(index, field->text(), Qt::EditRole);
        emit editFinished();
    }
}

} // namespace lumbra::shell
