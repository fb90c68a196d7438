#pragma once

#include "base/notification.h"

#include <QAbstractListModel>
#include <QListView>
#include <QStyledItemDelegate>
#include <deque>
#include <memory>

namespace lumbra::shell {

// The notifications as cards, newest on top; entries go only when the user deletes them.
class NotificationsBox final : public QListView {
    Q_OBJECT

public:
    static constexpr int rowHeight = 65;

    explicit NotificationsBox(QWidget* parent = nullptr);

    // Each goes on top in turn, so the last of the list stands highest.
    void add(const base::Notifications& items);
    // By position; nothing when the row is gone already.
    void remove(int row);
    [[nodiscard]] int count() const;
    [[nodiscard]] const base::NotificationData& item(int row) const;

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    class Model;
    class CardDelegate;
    Model* m_model = nullptr;
};

} // namespace lumbra::shell
