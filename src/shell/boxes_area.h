#pragma once

#include <QWidget>
#include <functional>

namespace lumbra::shell {

// The area the open bins' boxes are tiled in; it lays them out again whenever its size changes.
class BoxesArea final : public QWidget {
    Q_OBJECT

public:
    explicit BoxesArea(QWidget* parent = nullptr) : QWidget(parent) {
        setObjectName(QStringLiteral("boxesView"));
    }

    std::function<void()> onResize;

protected:
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        if (onResize) {
            onResize();
        }
    }
};

} // namespace lumbra::shell
