#pragma once

#include "base/notification.h"
#include "tables/columns_layout.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lumbra::tables {

// Why a name read from a layout file cannot name its folder (not text, control characters, too
// long, empty); absent when it can.
[[nodiscard]] std::optional<std::string> unusableLayoutName(std::string_view name);

// Reads the saved layouts of a project: one folder per layout directly under the base folder.
class LayoutsLoader {
public:
    explicit LayoutsLoader(std::string baseUrl) : m_baseUrl(std::move(baseUrl)) {}

    // True when the folder lists a name ending in ".layout" in any case; false when it cannot be listed.
    [[nodiscard]] static bool isLayoutFolder(const std::string& url);
    // Null for a folder that is no layout folder; otherwise the loaded layout, even when the load
    // failed (then with an empty name and no columns, and the notifications saying why). Null, with
    // a "Layout refused" warning, for a file whose name line could not name a folder.
    [[nodiscard]] std::shared_ptr<ColumnsLayout> loadLayout(const std::string& url,
                                                            base::Notifications* notifications) const;
    // Every layout folder under the base, in listing order; empty, without a message, when the
    // base cannot be listed.
    [[nodiscard]] LayoutList loadAll(base::Notifications* notifications) const;

    [[nodiscard]] const std::string& baseUrl() const noexcept { return m_baseUrl; }

private:
    std::string m_baseUrl;
};

} // namespace lumbra::tables
