#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace lumbra::base {

// True when the name ends in `suffix` whatever its case; `suffix` is given in lower case (".ale").
[[nodiscard]] bool hasSuffix(std::string_view name, std::string_view suffix);

// True when the folder holds an entry whose name `wanted` takes; false when it cannot be listed.
[[nodiscard]] bool holdsEntry(const std::string& folder,
                              const std::function<bool(const std::string& name)>& wanted);

// The last component of `path`, less `ending` when it ends with it: a bin's folder less " - <uuid>".
[[nodiscard]] std::string lastComponent(std::string_view path, std::string_view ending = {});

} // namespace lumbra::base
