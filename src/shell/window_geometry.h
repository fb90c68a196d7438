#pragma once

#include <QString>

class QWidget;

namespace lumbra::shell {

// Gives the window the place and size it had when a window of the same kind last closed (kept in the
// settings under "windowGeometry/<kind>"), pulled back onto a screen when that one is gone, and stores
// them again whenever such a window closes or the application quits.
void rememberGeometry(QWidget& window, const QString& kind);

} // namespace lumbra::shell
