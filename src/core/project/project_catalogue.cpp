#include "project/project_catalogue.h"

#include "base/console.h"
#include "base/text_order.h"

#include <algorithm>
#include <system_error>

namespace lumbra::project {

namespace fs = std::filesystem;

namespace {

bool isHidden(const fs::path& entry) {
    const std::string name = entry.filename().string();
    return !name.empty() && name.front() == '.';
}

// Whether the folder lists an entry named exactly "tarelproject"; a folder that cannot be listed is no
// project.
bool holdsProjectFile(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator it(folder, error);
    if (error) {
        base::printLine("ERROR: cannot list content of folder " + folder.string());
        return false;
    }
    for (const fs::directory_iterator end; it != end; it.increment(error)) {
        if (it->path().filename() == kProjectFileName) {
            return true;
        }
    }
    if (error) {
        base::printLine("ERROR: cannot list content of folder " + folder.string());
    }
    return false;
}

} // namespace

bool hasForbiddenProjectCharacter(std::string_view name) {
    return name.find_first_of(":,;/`@{}\n<>") != std::string_view::npos;
}

std::string folderKey(int folderType) {
    switch (folderType) {
    case static_cast<int>(FolderType::Local):
        return "localfolder";
    case static_cast<int>(FolderType::Shared):
        return "sharedfolder";
    case static_cast<int>(FolderType::External):
        return "externalfolder";
    default:
        return {};
    }
}

std::vector<std::string> listProjects(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator it(folder, error);
    if (error) {
        base::printLine("ERROR: cannot get projects list from folder " + folder.string());
        return names;
    }
    for (const fs::directory_iterator end; it != end; it.increment(error)) {
        const fs::path& entry = it->path();
        std::error_code typeError;
        if (isHidden(entry) || !it->is_directory(typeError) || !holdsProjectFile(entry)) {
            continue;
        }
        names.push_back(entry.filename().string());
    }
    if (error) {
        base::printLine("ERROR: cannot get projects list from folder " + folder.string());
        return {};
    }
    // The platform lists a folder in no promised order; the grid reads better sorted.
    std::sort(names.begin(), names.end(), base::textLess);
    return names;
}

ProjectCatalogue::ProjectCatalogue(base::UserDefaults& defaults, fs::path homeFolder)
    : m_defaults(defaults), m_homeFolder(std::move(homeFolder)) {
}

void ProjectCatalogue::setFolderType(int folderType) {
    m_currentFolderType = folderType;
    refresh();
}

fs::path ProjectCatalogue::folder() const {
    const std::string key = folderKey(m_currentFolderType);
    if (key.empty()) {
        return m_homeFolder;
    }
    const std::optional<std::string> stored = m_defaults.stringValue(key);
    return stored ? fs::path(*stored) : m_homeFolder;
}

void ProjectCatalogue::setFolder(const fs::path& folder) {
    const std::string key = folderKey(m_currentFolderType);
    if (!key.empty()) {
        m_defaults.setString(key, folder.string());
    }
    refresh();
}

void ProjectCatalogue::refresh() {
    m_availableProjects.clear();
    m_selected.reset();
    m_availableProjects = listProjects(folder());
}

bool ProjectCatalogue::canCreateProject() const {
    std::error_code error;
    return fs::is_directory(folder(), error);
}

void ProjectCatalogue::select(int index) {
    if (index >= 0 && index < static_cast<int>(m_availableProjects.size())) {
        m_selected = index;
    } else {
        m_selected.reset();
    }
}

std::optional<fs::path> ProjectCatalogue::selectedProjectFolder() const {
    if (!m_selected) {
        return std::nullopt;
    }
    return folder() / m_availableProjects[static_cast<std::size_t>(*m_selected)];
}

bool ProjectCatalogue::deleteProject(int index, base::UserInteraction& interaction) {
    select(index);
    const std::optional<fs::path> path = selectedProjectFolder();
    if (!path) {
        return false;
    }
    const std::string name = m_availableProjects[static_cast<std::size_t>(index)];
    const base::AlertAnswer answer = interaction.alert({"Delete Project?",
                                                        "Project \"" + name + "\" will be deleted.",
                                                        base::AlertStyle::Warning,
                                                        {"Confirm", "Cancel"},
                                                        false});
    if (answer.button != 0) {
        return false;
    }
    base::printLine("removing " + path->string());
    std::error_code error;
    fs::remove_all(*path, error);
    if (error) {
        base::printLine("Error removing folder " + path->string());
    }
    refresh();
    return !error;
}

bool ProjectCatalogue::renameProject(int index, base::UserInteraction& interaction) {
    select(index);
    const std::optional<fs::path> path = selectedProjectFolder();
    if (!path) {
        return false;
    }
    const std::string oldName = m_availableProjects[static_cast<std::size_t>(index)];
    const std::optional<std::string> newName =
        interaction.askText({"Rename project", "Insert a new name for project \"" + oldName + "\"", oldName,
                             m_availableProjects});
    if (!newName) {
        return false;
    }
    base::printLine("renaming project from \"" + oldName + "\" to \"" + *newName + "\"");
    const fs::path target = path->parent_path() / *newName;
    std::error_code error;
    // A name that would leave the folder, or take an existing one, fails like any other move.
    if (newName->empty() || hasForbiddenProjectCharacter(*newName) || fs::exists(target, error)) {
        error = std::make_error_code(std::errc::invalid_argument);
    } else {
        fs::rename(*path, target, error);
    }
    if (error) {
        base::printLine("Error renaming folder " + path->string());
    }
    refresh();
    return !error;
}

} // namespace lumbra::project
