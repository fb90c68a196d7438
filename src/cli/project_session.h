#pragma once

#include "policy_interaction.h"
#include "project/shared_stuff.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace lumbra::cli {

// One project opened for a command, with the user that answers its questions.
class ProjectSession {
public:
    explicit ProjectSession(AnswerPolicy policy);

    // Splits PATH into parent folder and name and runs the ordered open, which ends with a save. On
    // failure (that save included) prints the one line that says why on standard error and returns
    // false; a refused earlier layout changes nothing.
    bool open(const std::string& path);

    [[nodiscard]] project::SharedStuff& project() noexcept { return *m_project; }
    [[nodiscard]] PolicyInteraction& interaction() noexcept { return m_interaction; }

private:
    PolicyInteraction m_interaction;
    std::unique_ptr<project::SharedStuff> m_project;
};

// The folder as given, absolute and normalised, less a trailing "/": its parent and last component
// name the project. Absent when a relative path meets a working folder that is gone.
[[nodiscard]] std::optional<std::filesystem::path> projectFolderArgument(const std::string& path);

} // namespace lumbra::cli
