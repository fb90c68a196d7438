#include "window_geometry.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QWidget>

namespace lumbra::shell {

namespace {

QString settingsKey(const QString& kind) {
    return QStringLiteral("windowGeometry/") + kind;
}

// Lives as the window's child and stores its geometry each time the window is hidden.
class GeometryKeeper final : public QObject {
public:
    GeometryKeeper(QWidget& window, const QString& kind) : QObject(&window), m_window(window), m_kind(kind) {
        window.installEventFilter(this);
        // Quitting may take the windows away without hiding them first.
        connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
            if (m_window.isVisible()) {
                store();
            }
        });
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == &m_window && event->type() == QEvent::Hide && !m_window.isMinimized()) {
            store();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void store() { QSettings().setValue(settingsKey(m_kind), m_window.saveGeometry()); }

    QWidget& m_window;
    QString m_kind;
};

// A window whose title bar is on no screen cannot be reached: it goes to the middle of the primary one.
void keepOnScreen(QWidget& window) {
    const QRect frame = window.frameGeometry();
    if (QGuiApplication::screenAt(frame.topLeft() + QPoint(frame.width() / 2, 8)) != nullptr) {
        return;
    }
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (primary == nullptr) {
        return;
    }
    const QRect available = primary->availableGeometry();
    window.resize(window.size().boundedTo(available.size()));
    window.move(available.center() - QPoint(window.width() / 2, window.height() / 2));
}

} // namespace

void rememberGeometry(QWidget& window, const QString& kind) {
    const QByteArray stored = QSettings().value(settingsKey(kind)).toByteArray();
    if (!stored.isEmpty() && window.restoreGeometry(stored) && !window.isMaximized()) {
        keepOnScreen(window);
    }
    new GeometryKeeper(window, kind);
}

} // namespace lumbra::shell
