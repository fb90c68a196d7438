#pragma once

namespace lumbra::shell {

// Makes the tool panels known to every project window (the toolbar's "database", ...) and gives the
// pickers their file readers. Called once before the first window.
void registerToolPanels();

} // namespace lumbra::shell
