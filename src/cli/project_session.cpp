#include "project_session.h"

#include "command.h"
#include "project/project_catalogue.h"
#include "project/project_loader.h"

#include <filesystem>

namespace lumbra::cli {

namespace fs = std::filesystem;

std::optional<fs::path> projectFolderArgument(const std::string& path) {
    std::error_code error;
    fs::path folder = fs::absolute(path, error).lexically_normal();
    if (error)
        return std::nullopt;
    return folder.has_filename() ? folder : folder.parent_path();
}

ProjectSession::ProjectSession(AnswerPolicy policy)
    : m_interaction(policy), m_project(std::make_unique<project::SharedStuff>(&m_interaction)) {
}

bool ProjectSession::open(const std::string& path) {
    std::optional<fs::path> argument = projectFolderArgument(path);
    if (!argument) {
        failure("Cannot open " + path + ": the working folder cannot be read");
        return false;
    }
    const fs::path& folder = *argument;
    std::error_code error;
    if (!fs::is_regular_file(folder / project::kProjectFileName, error)) {
        failure("Cannot open " + path + ": no project there");
        return false;
    }
    m_project->currentFolder = folder.parent_path().string();
    m_project->projectName = folder.filename().string();
    std::string reason;
    switch (project::openProject(*m_project, {}, &reason)) {
    case project::OpenResult::opened:
        return true;
    case project::OpenResult::cancelled:
        failure("Cannot open " + path + ": updating its earlier layout was refused");
        return false;
    case project::OpenResult::unreadableProject:
        failure("Cannot open " + path + ": its project file cannot be read");
        return false;
    case project::OpenResult::binsFailed:
        failure("Cannot open " + path + ": its bins in the earlier layout cannot be read");
        return false;
    case project::OpenResult::notSaved:
        failure("Cannot save " + path + ": the save that ends its opening failed");
        return false;
    case project::OpenResult::damagedProject:
    case project::OpenResult::migrationFailed:
        failure("Cannot open " + path + ": " + reason);
        return false;
    }
    return false;
}

} // namespace lumbra::cli
