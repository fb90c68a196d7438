#include "app/project_catalogue.h"

#include "tables/console.h"
#include "tables/text_order.h"

#include <algorithm>
#include <system_error>

namespace lumbra::app {

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
        tables::printLine("ERROR: cannot list content of folder " + folder.string());
        return false;
    }
    for (const fs::directory_iterator end; it != end; it.increment(error)) {
        if (it->path().filename() == kProjectFileName) {
            return true;
        }
    }
    if (error) {
        tables::printLine("ERROR: cannot list content of folder " + folder.string());
    }
    return false;
}

} // namespace

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
        tables::printLine("ERROR: cannot get projects list from folder " + folder.string());
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
        tables::printLine("ERROR: cannot get projects list from folder " + folder.string());
        return {};
    }
    // The platform lists a folder in no promised order; the grid reads better sorted.
    std::sort(names.begin(), names.end(), tables::textLess);
    return names;
}

ProjectCatalogue::ProjectCatalogue(UserDefaults& defaults, fs::path homeFolder)
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

} // namespace lumbra::app
