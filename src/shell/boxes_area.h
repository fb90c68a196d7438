#pragma once

#include <QScrollArea>
#include <functional>

namespace lumbra::shell {

// The area the open bins' boxes are tiled in: the boxes live on a canvas as large as the area, or larger when
// they would come out smaller than a box may be, and the area then scrolls. It lays them out again whenever
// its size changes.
class BoxesArea final : public QScrollArea {
    Q_OBJECT

public:
    explicit BoxesArea(QWidget* parent = nullptr) : QScrollArea(parent), m_canvas(new QWidget) {
        setObjectName(QStringLiteral("boxesArea"));
        setFrameShape(QFrame::NoFrame);
        m_canvas->setObjectName(QStringLiteral("boxesView"));
        setWidget(m_canvas);
    }

    // Where the boxes are.
    [[nodiscard]] QWidget* canvas() const noexcept { return m_canvas; }

    std::function<void()> onResize;

protected:
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        if (onResize) {
            onResize();
        }
    }

private:
    QWidget* m_canvas;
};

} // namespace lumbra::shell
