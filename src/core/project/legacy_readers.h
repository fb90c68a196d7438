#pragma once

#include "base/notification.h"
#include "project/bins_tree_entry.h"
#include "tables/columns_layout.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {

// Readers for projects saved in the earlier layout on disk, where bins, smart bins and layouts lay
// flat in one folder each and the tree of groups stood in the project file. Each is called once by
// the open sequence; what it reads is saved in the current layout by the save that ends the open.

// How far a reader got: `failed` when its folder could not be listed; `partial` when some file
// printed a failure and was passed over; `complete` when everything in the folder was taken.
enum class LegacyRead { failed, partial, complete };

// One line of the project file split by tab, its key first.
using TreeLine = std::vector<std::string>;

// The keys of the tree lines, for plain bins (`smart` false) or smart bins.
struct TreeKeys {
    std::string entry;
    std::string created;
    std::string modified;
    std::string displayname;
};
[[nodiscard]] TreeKeys treeKeys(bool smart);

// Makes the groups of "treeentry" lines missing from the tree, each at the start of its parent's
// children (the root when the parent is unknown). Ids in `skipIds` belong to bins and make no
// group. Lines with fewer than three tokens add nothing.
void applyTreeEntryLines(BinsTreeEntry& root, const std::vector<TreeLine>& lines, const TreeKeys& keys,
                         const std::vector<std::string>& skipIds, BinsHost* sharedstuff);
// Applies the "treecreated", "treemodified" and "treedisplayname" lines to the nodes they name.
void applyTreeValueLines(BinsTreeEntry& root, const std::vector<TreeLine>& lines, const TreeKeys& keys);

// The flat folder `bins`: every "<base>.bin" with its "<base>.ale". A bin goes into the group its
// "treebin" line names, else into the root. A missing .ale file skips that bin, an unreadable .bin
// file keeps the defaults (both partial). Bins that were open are handed to the project to open.
LegacyRead readLegacyBins(const std::string& folder, BinsTreeEntry& root,
                          const std::vector<TreeLine>& treeLines, BinsHost* sharedstuff,
                          base::Notifications* notifications);
// The flat folder `smartbins`: every ".smartbin" file, read through the project, into the root
// after the groups of the "smarttree" lines; each takes its domain from the project's bins tree.
LegacyRead readLegacySmartbins(const std::string& folder, BinsTreeEntry& root,
                               const std::vector<TreeLine>& treeLines, BinsHost* sharedstuff,
                               base::Notifications* notifications);

// The flat folder `layouts`: every ".layout" file appended to `layouts`, which is then sorted.
// Unreadable or empty files print a line and are skipped.
LegacyRead readLegacyLayouts(const std::string& folder, tables::ProjectLayouts& layouts,
                             base::Notifications* notifications);

// What a flat folder of objects this build has no reader for yet held.
struct LegacyFolderContent {
    std::size_t files = 0;
    std::size_t groups = 0;
};
// Lists a flat folder of databases or presets: its files, and its groups (folders whose listing
// holds the name "group"). Absent, with a printed line, when the folder cannot be listed.
[[nodiscard]] std::optional<LegacyFolderContent> listLegacyFolder(const std::string& folder);

} // namespace lumbra::project
