#include "app/layout_menu.h"

#include "project/bin.h"
#include "project/shared_stuff.h"

namespace lumbra::app {

namespace {

constexpr const char* defaultPrefix = "-- [Default] ";

} // namespace

std::vector<LayoutMenuItem> layoutMenuItems(project::SharedStuff& sharedstuff) {
    tables::ProjectLayouts& layouts = sharedstuff.projectLayouts;
    std::vector<LayoutMenuItem> items;
    // Only the default's own entry is marked: entries that merely hold the same columns are other layouts.
    if (layouts.baseLayout)
        items.push_back({std::string(defaultPrefix) + layouts.baseLayout->name, layouts.baseLayout});
    if (layouts.projectLayout)
        items.push_back({"-- Project Original Default --", layouts.projectLayout});
    items.push_back({"-- System Default --", layouts.systemLayout()});
    if (sharedstuff.activeBin && sharedstuff.activeBin->layout)
        items.push_back({"-- Active Bin Layout --", sharedstuff.activeBin->layout});
    for (const auto& layout : layouts.layouts)
        items.push_back({layout->name, layout});
    return items;
}

void setDefaultLayout(project::SharedStuff& sharedstuff, const tables::ColumnsLayout& layout) {
    tables::ProjectLayouts& layouts = sharedstuff.projectLayouts;
    if (!layouts.baseLayout)
        layouts.baseLayout = std::make_shared<tables::ColumnsLayout>("Default");
    // Copied first: the chosen entry may be the default itself.
    const tables::ColumnsLayout chosen = layout;
    layouts.baseLayout->columns = chosen.columns;
    layouts.baseLayout->colwidths = chosen.colwidths;
    layouts.lastSelectedDefault = std::make_shared<tables::ColumnsLayout>(chosen);
    for (project::Bin* bin : sharedstuff.allBins()) {
        if (!bin->layout || bin->layout->name != "Default")
            continue;
        bin->layout = layouts.baseLayout;
        if (bin->selected() && bin->box())
            bin->box()->refresh();
    }
    sharedstuff.addLog("Default layout updated", true, "Applied", base::NotificationType::OK);
}

void applyLayoutToOpenBins(project::SharedStuff& sharedstuff,
                           const std::shared_ptr<tables::ColumnsLayout>& layout) {
    for (project::Bin* bin : sharedstuff.openBins()) {
        if (!bin->selected())
            continue;
        bin->layout = layout;
        if (bin->box())
            bin->box()->refresh();
    }
    sharedstuff.addLog("Layout applied to open bins", true, "Applied", base::NotificationType::OK);
}

} // namespace lumbra::app
