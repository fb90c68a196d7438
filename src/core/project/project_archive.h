#pragma once

#include <string>

namespace lumbra::project {

// Zips the folder and everything under it into a new archive at `zipPath`, the folder's own name
// as the archive's top level. False with the reason in `error` (a partial archive is removed).
[[nodiscard]] bool zipFolder(const std::string& folder, const std::string& zipPath,
                             std::string* error = nullptr);

} // namespace lumbra::project
