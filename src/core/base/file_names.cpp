#include "base/file_names.h"

#include "base/text_helpers.h"

#include <filesystem>

namespace lumbra::base {

bool hasSuffix(std::string_view name, std::string_view suffix) {
    return lowercased(name).ends_with(suffix);
}

bool holdsEntry(const std::string& folder, const std::function<bool(const std::string& name)>& wanted) {
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        if (wanted(it->path().filename().string()))
            return true;
    }
    return false;
}

std::string lastComponent(std::string_view path, std::string_view ending) {
    std::string last = std::filesystem::path(path).filename().string();
    if (!ending.empty() && last.ends_with(ending))
        last.resize(last.size() - ending.size());
    return last;
}

} // namespace lumbra::base
