#include "notifications_box.h"

#include "qt_text.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>
#include <QToolTip>
#include <QUrl>

namespace lumbra::shell {

namespace {

QColor kindColour(base::NotificationType type) {
    switch (type) {
    case base::NotificationType::OK:
        return {0x2e, 0xa0, 0x43};
    case base::NotificationType::WARNING:
        return {0xe6, 0x8a, 0x00};
    case base::NotificationType::KO:
        break;
    }
    return {0xd0, 0x2b, 0x2b};
}

// The link words that are in the body, each with the address of its first occurrence.
std::vector<std::pair<QString, QString>> linksInBody(const base::NotificationData& data) {
    std::vector<std::pair<QString, QString>> found;
    if (!data.hasLinks) {
        return found;
    }
    const QString body = toQt(data.body);
    for (const auto& [word, address] : data.links) {
        if (!word.empty() && body.contains(toQt(word))) {
            found.emplace_back(toQt(word), toQt(address));
        }
    }
    return found;
}

constexpr int margin = 4;
constexpr int padding = 8;
constexpr int circle = 10;
constexpr int closeSize = 14;

struct CardGeometry {
    QRect card;
    QRect circle;
    QRect title;
    QRect body;
    QRect close;
};

CardGeometry geometryFor(const QRect& cell) {
    CardGeometry g;
    g.card = cell.adjusted(margin, margin / 2, -margin, -margin / 2);
    g.circle = QRect(g.card.left() + padding, g.card.top() + padding + 2, circle, circle);
    g.close =
        QRect(g.card.right() - padding - closeSize + 2, g.card.top() + padding - 2, closeSize, closeSize);
    const int textLeft = g.circle.right() + padding;
    g.title = QRect(textLeft, g.card.top() + padding - 2, g.close.left() - textLeft - 4, 18);
    g.body = QRect(textLeft, g.title.bottom() + 1, g.card.right() - padding - textLeft,
                   g.card.bottom() - padding - g.title.bottom());
    return g;
}

} // namespace

class NotificationsBox::Model final : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(items.size());
    }

    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || index.row() >= static_cast<int>(items.size())) {
            return {};
        }
        const base::NotificationData& item = items[static_cast<std::size_t>(index.row())];
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return toQt(item.title) + QLatin1Char('\n') + toQt(item.body);
        default:
            return {};
        }
    }

    void add(const base::Notifications& added) {
        for (const auto& item : added) {
            // A card that repeats the newest one says nothing new: a second identical order does not stack.
            if (!items.empty() && items.front() == item) {
                continue;
            }
            beginInsertRows({}, 0, 0);
            items.push_front(item);
            endInsertRows();
        }
    }

    void remove(int row) {
        if (row < 0 || row >= static_cast<int>(items.size())) {
            return;
        }
        beginRemoveRows({}, row, row);
        items.erase(items.begin() + row);
        endRemoveRows();
    }

    std::deque<base::NotificationData> items;
};

class NotificationsBox::CardDelegate final : public QStyledItemDelegate {
public:
    CardDelegate(Model& model, QObject* parent) : QStyledItemDelegate(parent), m_model(model) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {option.rect.width(), rowHeight};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const base::NotificationData& item = m_model.items[static_cast<std::size_t>(index.row())];
        const CardGeometry g = geometryFor(option.rect);
        const QPalette& palette = option.palette;
        const QColor colour = kindColour(item.type);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        QPainterPath card;
        card.addRoundedRect(QRectF(g.card).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        painter->fillPath(card, palette.color(QPalette::Base));
        painter->setPen(QPen(colour, 1.5));
        painter->drawPath(card);
        painter->setPen(Qt::NoPen);
        painter->setBrush(colour);
        painter->drawEllipse(g.circle);

        QFont titleFont = option.font;
        titleFont.setBold(true);
        painter->setFont(titleFont);
        painter->setPen(palette.color(QPalette::Text));
        const QString title = toQt(item.title);
        painter->drawText(g.title, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(titleFont).elidedText(title, Qt::ElideRight, g.title.width()));

        painter->setPen(palette.color(QPalette::PlaceholderText));
        painter->drawText(g.close, Qt::AlignCenter, QStringLiteral("×"));

        painter->setFont(option.font);
        const auto links = linksInBody(item);
        painter->setPen(links.empty() ? palette.color(QPalette::Text) : palette.color(QPalette::Link));
        // At most two lines; what does not fit is in the tool tip.
        painter->drawText(
            g.body, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
            QFontMetrics(option.font).elidedText(toQt(item.body), Qt::ElideRight, g.body.width() * 2 - 20));
        painter->restore();
    }

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override {
        const base::NotificationData& item = m_model.items[static_cast<std::size_t>(index.row())];
        const CardGeometry g = geometryFor(option.rect);
        const QFontMetrics metrics(option.font);
        QString tip;
        if (g.close.contains(event->pos())) {
            tip = tr("Delete");
        } else if (g.title.contains(event->pos()) &&
                   metrics.horizontalAdvance(toQt(item.title)) > g.title.width()) {
            tip = toQt(item.title);
        } else if (g.body.contains(event->pos()) &&
                   metrics.horizontalAdvance(toQt(item.body)) > g.body.width()) {
            tip = toQt(item.body);
        }
        if (tip.isEmpty()) {
            QToolTip::hideText();
            return true;
        }
        QToolTip::showText(event->globalPos(), tip, view);
        return true;
    }

private:
    Model& m_model;
};

NotificationsBox::NotificationsBox(QWidget* parent) : QListView(parent) {
    setObjectName(QStringLiteral("notificationsBox"));
    m_model = new Model(this);
    setModel(m_model);
    setItemDelegate(new CardDelegate(*m_model, this));
    setSelectionMode(QAbstractItemView::NoSelection);
    setUniformItemSizes(true);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFrameShape(QFrame::NoFrame);
    setMouseTracking(true);
}

void NotificationsBox::add(const base::Notifications& items) {
    m_model->add(items);
    scrollToTop();
}

void NotificationsBox::remove(int row) {
    m_model->remove(row);
}

int NotificationsBox::count() const {
    return static_cast<int>(m_model->items.size());
}

const base::NotificationData& NotificationsBox::item(int row) const {
    return m_model->items[static_cast<std::size_t>(row)];
}

void NotificationsBox::mouseReleaseEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && event->button() == Qt::LeftButton) {
        const CardGeometry g = geometryFor(visualRect(index));
        if (g.close.contains(event->position().toPoint())) {
            remove(index.row());
            return;
        }
        // A card with a link word in its body opens its address; a plain card does nothing.
        const auto links = linksInBody(item(index.row()));
        if (!links.empty()) {
            QDesktopServices::openUrl(QUrl(links.front().second));
        }
    }
    QListView::mouseReleaseEvent(event);
}

void NotificationsBox::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid()) {
        return;
    }
    QMenu menu(this);
    QAction* remove = menu.addAction(QIcon::fromTheme(QStringLiteral("edit-delete")), tr("Delete"));
    if (menu.exec(event->globalPos()) == remove) {
        this->remove(index.row());
    }
}

} // namespace lumbra::shell
