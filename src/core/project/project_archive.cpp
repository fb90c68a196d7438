#include "project/project_archive.h"

namespace lumbra::project {

bool zipFolder(const std::string& folder, const std::string& zipPath, std::string* error) {
    if (error)
        *error = "not yet";
    return false;
}

} // namespace lumbra::project
