#pragma once

#include "tables/columns_layout.h"

#include <memory>
#include <string>
#include <vector>

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::app {

// One entry of the menus that set the default layout or apply a layout to the open bins.
struct LayoutMenuItem {
    std::string title;
    std::shared_ptr<tables::ColumnsLayout> layout;
};

// The current default, the project's original default, the system layout, the active bin's layout
// when a bin is active, then every saved layout; the default's own entry says so.
[[nodiscard]] std::vector<LayoutMenuItem> layoutMenuItems(project::SharedStuff& sharedstuff);

// The default takes the layout's columns and widths; every bin on the default follows, open
// ones are redrawn, and an "Applied" notification says so.
void setDefaultLayout(project::SharedStuff& sharedstuff, const tables::ColumnsLayout& layout);
// Every open bin takes the layout and is redrawn; an "Applied" notification says so.
void applyLayoutToOpenBins(project::SharedStuff& sharedstuff,
                           const std::shared_ptr<tables::ColumnsLayout>& layout);

} // namespace lumbra::app
