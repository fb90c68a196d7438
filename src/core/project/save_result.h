#pragma once

#include <string>
#include <vector>

namespace lumbra::project {

// What a save did: whether everything was written, and what was not, one entry per object ("bin
// day01", "layouts"...). A failed save still wrote every object it could.
struct SaveResult {
    bool saved = true;
    std::vector<std::string> unwritten;

    // Callers that only ask whether the save went through read it as a Bool.
    operator bool() const noexcept { return saved; } // NOLINT(google-explicit-constructor)
};

} // namespace lumbra::project
