#pragma once

#include "base/notification.h"

#include <string>
#include <vector>

namespace lumbra::project {

// What an open did with the temporary files that killed writes left in a project's folder.
struct InterruptedWrites {
    // Complete files that a kill kept from their place, now in it.
    std::vector<std::string> recovered;
    // Temporary files of files that are in their place, removed.
    std::vector<std::string> removed;
    // Cut-short first writes of files that do not exist: kept, as they hold the only copy there is.
    std::vector<std::string> incomplete;
};

// Walks the project's folder. A temporary file of the atomic writer whose target is missing and
// whose size is the one its name gives becomes the target; one whose target exists goes; one cut short
// of a missing target stays. Each recovery and each file kept is told in a notification.
InterruptedWrites finishInterruptedWrites(const std::string& projectFolder,
                                          base::Notifications* notifications);

} // namespace lumbra::project
