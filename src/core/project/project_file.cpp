#include "project/project_file.h"

#include "project/shared_stuff.h"

namespace lumbra::project {

std::string projectFileText(const SharedStuff& sharedstuff) {
    return {};
}
bool writeProjectFile(const SharedStuff& sharedstuff, const std::string& path) {
    return false;
}
ProjectFileNotes readProjectFileText(std::string_view text, SharedStuff& sharedstuff) {
    return {};
}
std::optional<ProjectFileNotes> readProjectFile(const std::string& path, SharedStuff& sharedstuff,
                                                tables::Notifications* notifications) {
    return std::nullopt;
}

} // namespace lumbra::project
