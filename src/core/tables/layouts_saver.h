#pragma once

#include "base/notification.h"
#include "tables/columns_layout.h"

#include <string>
#include <string_view>
#include <vector>

namespace lumbra::tables {

// The folder of a project that holds its saved layouts.
inline constexpr std::string_view layoutsFolderName = "layout";

// Keeps a folder of layout folders in step with a project's saved layouts: each layout has its
// folder `<name> - <uuid>`, renamed ones are moved, and folders of layouts no longer listed go.
class LayoutsSaver {
public:
    // The base is always given: falling back to the project's own folder would let saveAll remove
    // the folders of bins and groups, which carry uuids too.
    LayoutsSaver(ProjectLayouts& sharedstuff, std::string baseUrl);

    // Saves what changed, moves renamed folders, removes folders of layouts gone from the list.
    // False when a folder could not be moved or a layout could not be saved; the rest is still done.
    bool saveAll(base::Notifications* notifications);
    // The uuids of the folders directly under the base, in listing order; folders without one left out.
    [[nodiscard]] std::vector<std::string> folderUuids() const;

    [[nodiscard]] const std::string& baseUrl() const noexcept { return m_baseUrl; }

private:
    ProjectLayouts& m_sharedstuff;
    std::string m_baseUrl;
};

} // namespace lumbra::tables
