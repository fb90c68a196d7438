#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lumbra::project {

class SharedStuff;

// What the new project window gathers before "Create".
struct NewProjectSettings {
    std::string name;
    // A fresh project's popups stand on their first choices.
    std::string fps = "23.98";
    std::string tlResolution = "1080";
    std::string sound = "44.1khz";
    // Absent while the film check box is off.
    std::optional<std::string> filmFormat;
    // Empty: no tape id.
    std::string tapeId;
    bool archiveOriginalData = true;
    // Empty: the ten columns of the system layout.
    std::vector<std::string> columns;
};

// Why a new project was refused; the window stays silent on the first two.
enum class NewProjectRefusal {
    none,
    repeatedColumn,
    emptyName,
    folderExists,
    forbiddenCharacters,
    // A setting or column name that its files could not read back (unreadableSettingReason).
    unreadableValue
};

struct NewProjectCheck {
    NewProjectRefusal refusal = NewProjectRefusal::none;
    // The text of the warnings label; empty for a silent refusal.
    std::string warning;

    [[nodiscard]] bool accepted() const noexcept { return refusal == NewProjectRefusal::none; }
};

// "Load from file": the heading of an ALE file gives the settings (an absent film format turns the film
// check box off) and its columns the project's columns. False, with the window's warning text in
// `warning` and the settings untouched, when the file cannot be read.
bool settingsFromFile(const std::string& path, NewProjectSettings& settings, std::string* warning = nullptr);

// The checks made before "Create", in the window's order, against the folder the project would go in.
[[nodiscard]] NewProjectCheck checkNewProject(const std::string& parentFolder,
                                              const NewProjectSettings& settings);

// Checks, then fills the project as "Create" does (name, settings, columns, "Default" and
// "Project Default" layouts) and saves it under `parentFolder`. A refused project changes nothing;
// a failed save says why through the project and leaves what it wrote. The main window, when
// there is one, is set on the project before the call.
NewProjectCheck createProject(SharedStuff& sharedstuff, const std::string& parentFolder,
                              const NewProjectSettings& settings, bool* saved = nullptr);

} // namespace lumbra::project
