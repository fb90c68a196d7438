#pragma once

#include "base/notification.h"

class QWidget;

namespace lumbra::shell {

class BinBox;

// What a bin box asks of the window that holds it; the main window implements it and places the
// boxes itself.
class BoxHost {
public:
    virtual ~BoxHost() = default;
    // True while a panel stands in front of the boxes: the box's search and close are off then.
    [[nodiscard]] virtual bool panelInFront() const = 0;
    // Between showing the active bin alone and all open bins.
    virtual void toggleViewMode() = 0;
    // The area the boxes live in; nullptr keeps the box where its creator put it.
    virtual QWidget* boxesArea() = 0;
    // The box became the active one (the previous one has already drawn itself inactive).
    virtual void boxActivated(BinBox& box) {}
    // A message for the notifications box ("Ordered").
    virtual void showNotification(const base::NotificationData& notification) = 0;
};

} // namespace lumbra::shell
