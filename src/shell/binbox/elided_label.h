#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyle>

namespace lumbra::shell {

// A one-line label that keeps its whole text but draws it cut with "…" when it is wider than the label,
// and gives up its width first when its row is short of room.
class ElidedLabel final : public QLabel {
public:
    explicit ElidedLabel(QWidget* parent = nullptr) : QLabel(parent) {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QRect room = contentsRect();
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, room.width());
        style()->drawItemText(&painter, room, static_cast<int>(alignment()), palette(), isEnabled(), shown,
                              foregroundRole());
    }
};

} // namespace lumbra::shell
