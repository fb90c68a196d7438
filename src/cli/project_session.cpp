#include "project_session.h"

#include "app/project_catalogue.h"
#include "command.h"
#include "project/project_loader.h"

#include <filesystem>

namespace lumbra::cli {

namespace fs = std::filesystem;

fs::path projectFolderArgument(const std::string& path) {
    fs::path folder = fs::absolute(path).lexically_normal();
    return folder.has_filename() ? folder : folder.parent_path();
}

ProjectSession::ProjectSession(AnswerPolicy policy)
    : m_interaction(policy), m_project(std::make_unique<project::SharedStuff>(&m_interaction)) {
}

bool ProjectSession::open(const std::string& path) {
    fs::path folder = projectFolderArgument(path);
    std::error_code error;
    if (!fs::is_regular_file(folder / app::kProjectFileName, error)) {
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
    case project::OpenResult::damagedProject:
    case project::OpenResult::migrationFailed:
        failure("Cannot open " + path + ": " + reason);
        return false;
    }
    return false;
}

} // namespace lumbra::cli
