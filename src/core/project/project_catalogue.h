#pragma once

#include "base/user_defaults.h"
#include "base/user_interaction.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {

// The file whose presence makes a folder a project.
inline constexpr const char* kProjectFileName = "tarelproject";

// The three places projects are kept; the values are the chooser's segments.
enum class FolderType { Local = 0, Shared = 1, External = 2 };

// The user default that holds the folder of a type; empty for a type outside the three.
[[nodiscard]] std::string folderKey(int folderType);

// The project names in a folder: its direct subfolders, not hidden, holding a "tarelproject" file,
// in the program's text order. A folder that cannot be listed prints an error and gives none.
[[nodiscard]] std::vector<std::string> listProjects(const std::filesystem::path& folder);

// True when the name holds a character a project's name may not hold: ":,;/`@{}<>" or a line feed.
[[nodiscard]] bool hasForbiddenProjectCharacter(std::string_view name);

// The projects of one of the three folders, as the chooser shows them.
class ProjectCatalogue {
public:
    // A folder type without a stored folder falls back to homeFolder.
    ProjectCatalogue(base::UserDefaults& defaults, std::filesystem::path homeFolder);

    [[nodiscard]] int currentFolderType() const noexcept { return m_currentFolderType; }
    // Selects the type and lists its folder again.
    void setFolderType(int folderType);
    // The stored folder of the current type, or the home folder.
    [[nodiscard]] std::filesystem::path folder() const;
    // Stores the folder for the current type and lists it again.
    void setFolder(const std::filesystem::path& folder);
    // Lists the folder again; the names and the selection start over.
    void refresh();

    [[nodiscard]] const std::vector<std::string>& availableProjects() const noexcept {
        return m_availableProjects;
    }
    // True only when the folder exists and is a folder.
    [[nodiscard]] bool canCreateProject() const;
    // Selects the project at this index; an index outside the list leaves the selection empty.
    void select(int index);
    [[nodiscard]] std::optional<int> selected() const noexcept { return m_selected; }
    // The folder of the selected project; absent with no selection.
    [[nodiscard]] std::optional<std::filesystem::path> selectedProjectFolder() const;

    // Asks "Delete Project?", then removes the folder; false when cancelled or when removal failed (printed).
    bool deleteProject(int index, base::UserInteraction& interaction);
    // Asks for a new name, then moves the folder in the same parent; false when cancelled or on failure
    // (printed).
    bool renameProject(int index, base::UserInteraction& interaction);

private:
    base::UserDefaults& m_defaults;
    std::filesystem::path m_homeFolder;
    int m_currentFolderType = static_cast<int>(FolderType::Local);
    std::vector<std::string> m_availableProjects;
    std::optional<int> m_selected;
};

} // namespace lumbra::project
