#pragma once

#include "base/notification.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {

class SharedStuff;

// The project's settings file in its folder.
inline constexpr const char* projectFileName = "tarelproject";

// What the reader met beyond the settings: the earlier form of the project kept its trees of
// bins as lines of this file, which only the earlier bins readers understand.
struct ProjectFileNotes {
    // A "treeentry" line was met: the bins are in the earlier form.
    bool treeentry = false;
    // A "smarttreeentry" line was met: the smart bins are in the earlier form.
    bool smarttreeentry = false;
    // A "baselayout" or "projectlayout" line set that layout.
    bool hadBaseLayout = false;
    bool hadProjectLayout = false;
    // The keys that every project file holds and this one lacks; with a cut last line the file
    // counts as damaged too ("a cut last line"). Empty for a whole file.
    std::vector<std::string> damage;
    // The "treeentry", "treecreated", "treemodified", "treedisplayname" lines, split by tab, key first, in
    // order.
    std::vector<std::vector<std::string>> treeLines;
    // The same for the "smarttree..." lines.
    std::vector<std::vector<std::string>> smartTreeLines;
};

// The whole file: the name line, then the settings in their fixed order.
[[nodiscard]] std::string projectFileText(const SharedStuff& sharedstuff);
// Written whole or not at all; false (the old file untouched) when it cannot be written.
[[nodiscard]] bool writeProjectFile(const SharedStuff& sharedstuff, const std::string& path);

// Reads the settings into the project. The first line is skipped: the name comes from the
// folder. Unknown keys are ignored; bad values give their fallbacks. Never fails; a file cut short
// is noted in `damage`, and its opener must not save over it.
ProjectFileNotes readProjectFileText(std::string_view text, SharedStuff& sharedstuff);
// The same from a file; absent (nothing changed, a message) when the file cannot be read.
std::optional<ProjectFileNotes> readProjectFile(const std::string& path, SharedStuff& sharedstuff,
                                                base::Notifications* notifications);

} // namespace lumbra::project
