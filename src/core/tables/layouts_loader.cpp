#include "tables/layouts_loader.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_helpers.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::tables {

namespace fs = std::filesystem;

namespace {

// The longest name whose folder "<name> - <uuid>" and file "<name>.layout" a file system still takes.
constexpr std::size_t longestName = 200;

} // namespace

std::optional<std::string> unusableLayoutName(std::string_view name) {
    if (name.empty())
        return "it has no name";
    if (!base::isValidUtf8(name))
        return "its name is not text";
    if (std::any_of(name.begin(), name.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }))
        return "its name holds control characters";
    if (name.size() > longestName)
        return "its name is longer than " + std::to_string(longestName) + " bytes";
    return std::nullopt;
}

bool LayoutsLoader::isLayoutFolder(const std::string& url) {
    return base::holdsEntry(
        url, [](const std::string& name) { return base::hasSuffix(name, ColumnsLayout::fileSuffix); });
}

std::shared_ptr<ColumnsLayout> LayoutsLoader::loadLayout(const std::string& url,
                                                         base::Notifications* notifications) const {
    if (!isLayoutFolder(url))
        return nullptr;
    auto layout = std::make_shared<ColumnsLayout>("");
    const bool loaded = layout->load(url, notifications);
    // The name becomes the layout's folder name at the next save: a damaged one is refused here.
    auto reason = loaded ? unusableLayoutName(layout->name) : std::nullopt;
    if (reason) {
        base::printLine("WARNING: layout in " + url + " refused: " + *reason);
        if (notifications)
            notifications->emplace_back("Layout refused",
                                        "The layout in " + url + " was not loaded: " + *reason +
                                            ". Its folder is left as it is.",
                                        base::NotificationType::WARNING);
        return nullptr;
    }
    return layout;
}

LayoutList LayoutsLoader::loadAll(base::Notifications* notifications) const {
    LayoutList layouts;
    std::error_code ec;
    fs::directory_iterator it(m_baseUrl, ec);
    if (ec)
        return layouts;
    for (const auto& entry : it) {
        std::error_code typeError;
        if (!entry.is_directory(typeError))
            continue;
        if (auto layout = loadLayout(entry.path().string(), notifications))
            layouts.push_back(std::move(layout));
    }
    return layouts;
}

} // namespace lumbra::tables
