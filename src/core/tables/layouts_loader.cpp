#include "tables/layouts_loader.h"

#include "base/text_helpers.h"

#include <filesystem>

namespace lumbra::tables {

namespace fs = std::filesystem;

bool LayoutsLoader::isLayoutFolder(const std::string& url) {
    std::error_code ec;
    fs::directory_iterator it(url, ec);
    if (ec)
        return false;
    for (const auto& entry : it) {
        std::string lower = base::lowercased(entry.path().filename().string());
        if (lower.ends_with(ColumnsLayout::fileSuffix))
            return true;
    }
    return false;
}

std::shared_ptr<ColumnsLayout> LayoutsLoader::loadLayout(const std::string& url,
                                                         base::Notifications* notifications) const {
    if (!isLayoutFolder(url))
        return nullptr;
    auto layout = std::make_shared<ColumnsLayout>("");
    static_cast<void>(layout->load(url, notifications));
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
