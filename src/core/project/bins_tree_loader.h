#pragma once

#include "project/bins_tree_entry.h"

#include <optional>
#include <string>

namespace lumbra::project {

// Rebuilds a tree of nodes from its tree of folders: a folder with a table file is a bin, any
// other folder a group. Children come in the order of the folder's names.
class BinsTreeLoader {
public:
    explicit BinsTreeLoader(std::string baseUrl);
    virtual ~BinsTreeLoader() = default;

    // The root "root" with every folder under `url` (else the base folder). Bins that were open
    // are handed to the project to open later, and closed here. A folder that fails to load
    // stays in the tree, with notifications.
    virtual TreeNode load(BinsHost* sharedstuff, const std::optional<std::string>& url,
                          base::Notifications* notifications);
    // One node and, for a group, its subtree.
    // Null for a broken bin (a folder with the bin's files but no table), which is reported instead.
    TreeNode loadEntry(const std::string& url, BinsHost* sharedstuff, base::Notifications* notifications);
    // Whether the folder holds an .ale or .smartbin file.
    [[nodiscard]] static bool isBinFolder(const std::string& url);

protected:
    std::string m_baseUrl;
};

// The smart bins tree: loaded as bins are, with the root "smartbins"; each smart bin then takes
// its domain from the project's bins tree, which must stand already.
class SmartbinsTreeLoader : public BinsTreeLoader {
public:
    using BinsTreeLoader::BinsTreeLoader;
    TreeNode load(BinsHost* sharedstuff, const std::optional<std::string>& url,
                  base::Notifications* notifications) override;
};

// The folder's name less " - <uuid>": the uuid of its details when they have one, else a text
// in the form of a uuid after the last " - ". A name without it is taken whole.
[[nodiscard]] std::string nameOfFolder(const std::string& folder);

} // namespace lumbra::project
