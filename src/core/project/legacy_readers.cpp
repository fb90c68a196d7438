#include "project/legacy_readers.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "project/bin_file.h"
#include "tables/ale_table.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <unordered_set>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::printLine;

namespace {

constexpr std::string_view treebinKey = "treebin";

// The names of the folder's entries, sorted so that a migration reads in the same order on every disk.
std::optional<std::vector<std::string>> listNames(const std::string& folder) {
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        printLine("ERROR: cannot get files list from folder " + folder);
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec) {
            printLine("ERROR: cannot get files list from folder " + folder);
            return std::nullopt;
        }
        names.push_back(it->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// Every node of the tree by id; with equal ids the first in pre-order wins, as a search would.
std::unordered_map<std::string, BinsTreeEntry*> nodesById(BinsTreeEntry& root) {
    std::unordered_map<std::string, BinsTreeEntry*> out;
    for (auto* node : root.flatten())
        out.emplace(node->id, node);
    return out;
}

// A loaded bin waits for its group, which the tree lines make only once all bins are known.
struct PendingBin {
    TreeNode node;
    std::string group;
};

// The groups of the tree lines, then each bin into its group, then the dates and names.
void placeBins(BinsTreeEntry& root, std::vector<PendingBin>& pending, const std::vector<TreeLine>& lines,
               const TreeKeys& keys, BinsHost* sharedstuff) {
    std::vector<std::string> binIds;
    binIds.reserve(pending.size());
    for (const auto& item : pending)
        binIds.push_back(item.node->id);
    applyTreeEntryLines(root, lines, keys, binIds, sharedstuff);
    auto byId = nodesById(root);
    for (auto& item : pending) {
        auto found = byId.find(item.group);
        BinsTreeEntry* group = found != byId.end() && !found->second->bin ? found->second : &root;
        group->children.push_back(std::move(item.node));
    }
    applyTreeValueLines(root, lines, keys);
    root.rebuildArray();
}

// As the current loader does: bins open when the main window stands, not before.
void handOverOpenBins(BinsTreeEntry& root, BinsHost* sharedstuff) {
    for (Bin* bin : root.toarray) {
        if (!bin->selected())
            continue;
        if (sharedstuff)
            sharedstuff->openAfterLoading(*bin);
        bin->setSelected(false);
    }
}

std::string treebinOf(std::string_view binText) {
    for (const auto& line : base::tokenise(binText, "\n")) {
        auto tokens = base::tokenise(line, "\t");
        if (tokens.size() >= 2 && tokens[0] == treebinKey)
            return tokens[1];
    }
    return {};
}

} // namespace

TreeKeys treeKeys(bool smart) {
    std::string prefix = smart ? "smarttree" : "tree";
    return {prefix + "entry", prefix + "created", prefix + "modified", prefix + "displayname"};
}

void applyTreeEntryLines(BinsTreeEntry& root, const std::vector<TreeLine>& lines, const TreeKeys& keys,
                         const std::vector<std::string>& skipIds, BinsHost* sharedstuff) {
    auto byId = nodesById(root);
    std::unordered_set<std::string> skip(skipIds.begin(), skipIds.end());
    for (const auto& line : lines) {
        if (line.size() < 3 || line.front() != keys.entry)
            continue;
        const std::string& id = line.back();
        if (byId.count(id) || skip.count(id))
            continue;
        auto parentFound = byId.find(line[line.size() - 2]);
        BinsTreeEntry* parent = parentFound != byId.end() ? parentFound->second : &root;
        auto group = std::make_shared<BinsTreeEntry>(id, nullptr, std::vector<TreeNode>{}, sharedstuff);
        byId.emplace(id, group.get());
        // The arrays are rebuilt once the bins are in; a rebuild per group would walk the tree each time.
        parent->children.insert(parent->children.begin(), std::move(group));
    }
}

void applyTreeValueLines(BinsTreeEntry& root, const std::vector<TreeLine>& lines, const TreeKeys& keys) {
    auto byId = nodesById(root);
    for (const auto& line : lines) {
        if (line.size() < 3)
            continue;
        auto found = byId.find(line[1]);
        if (found == byId.end())
            continue;
        BinsTreeEntry& node = *found->second;
        const std::string& key = line.front();
        if (key == keys.displayname) {
            node.setName(line[2]);
        } else if (key == keys.created || key == keys.modified) {
            auto seconds = base::parseDecimal(line[2]);
            if (!seconds)
                continue;
            (key == keys.created ? node.identity().created : node.identity().modified) = *seconds;
        }
    }
}

LegacyRead readLegacyBins(const std::string& folder, BinsTreeEntry& root,
                          const std::vector<TreeLine>& treeLines, BinsHost* sharedstuff,
                          base::Notifications* notifications) {
    auto names = listNames(folder);
    if (!names)
        return LegacyRead::failed;
    std::unordered_set<std::string> present(names->begin(), names->end());
    LegacyRead result = LegacyRead::complete;
    std::vector<PendingBin> pending;
    for (const auto& name : *names) {
        if (!name.ends_with(".bin"))
            continue;
        std::string base = name.substr(0, name.size() - 4);
        if (!present.count(base + ".ale")) {
            printLine("ERROR: missing ale file for bin " + base);
            result = LegacyRead::partial;
            continue;
        }
        std::string alePath = (fs::path(folder) / (base + ".ale")).string();
        auto bin = std::make_shared<Bin>(sharedstuff);
        bin->setTable(std::make_unique<tables::ALETable>(alePath, notifications));
        if (sharedstuff) {
            for (const auto& row : bin->table()->data)
                row->sharedstuff = sharedstuff->projectLink();
        }
        if (!bin->table()->state) {
            printLine("ERROR loading " + alePath);
            result = LegacyRead::partial;
        }
        std::string binPath = (fs::path(folder) / name).string();
        std::string group;
        if (auto text = base::readTextFile(binPath)) {
            applyBinFileText(*bin, *text);
            group = treebinOf(*text);
        } else {
            printLine("ERROR while opening " + binPath);
            result = LegacyRead::partial;
        }
        // The migrated bin has never been written in the current layout: the closing save writes it.
        bin->hasChanged = true;
        auto node = std::make_shared<BinsTreeEntry>(bin->table()->tablename, bin, std::vector<TreeNode>{},
                                                    sharedstuff);
        pending.push_back({std::move(node), std::move(group)});
    }
    placeBins(root, pending, treeLines, treeKeys(false), sharedstuff);
    handOverOpenBins(root, sharedstuff);
    return result;
}

LegacyRead readLegacySmartbins(const std::string& folder, BinsTreeEntry& root,
                               const std::vector<TreeLine>& treeLines, BinsHost* sharedstuff,
                               base::Notifications* notifications) {
    auto names = listNames(folder);
    if (!names)
        return LegacyRead::failed;
    LegacyRead result = LegacyRead::complete;
    std::vector<PendingBin> pending;
    for (const auto& name : *names) {
        if (!name.ends_with(".smartbin"))
            continue;
        std::string path = (fs::path(folder) / name).string();
        auto bin = std::make_shared<Bin>(sharedstuff);
        if (!bin->readSmartbinFile(path, notifications) || !bin->table()) {
            printLine("ERROR while opening " + path);
            result = LegacyRead::partial;
            continue;
        }
        bin->hasChanged = true;
        // The earlier smart bin file names no group: smart bins start at the root.
        auto node = std::make_shared<BinsTreeEntry>(bin->table()->tablename, bin, std::vector<TreeNode>{},
                                                    sharedstuff);
        pending.push_back({std::move(node), {}});
    }
    placeBins(root, pending, treeLines, treeKeys(true), sharedstuff);
    if (BinsTreeEntry* bins = sharedstuff ? sharedstuff->binsTree() : nullptr) {
        for (Bin* bin : root.toarray) {
            if (auto* link = smartLink(*bin))
                link->resolveDomain(*bins);
        }
    }
    handOverOpenBins(root, sharedstuff);
    return result;
}

LegacyRead readLegacyLayouts(const std::string& folder, tables::ProjectLayouts& layouts,
                             base::Notifications* notifications) {
    auto names = listNames(folder);
    if (!names)
        return LegacyRead::failed;
    LegacyRead result = LegacyRead::complete;
    for (const auto& name : *names) {
        if (!name.ends_with(tables::ColumnsLayout::fileSuffix))
            continue;
        std::string path = (fs::path(folder) / name).string();
        auto text = base::readTextFile(path, notifications);
        if (!text) {
            printLine("error while opening layout file " + path);
            result = LegacyRead::partial;
            continue;
        }
        if (text->empty()) {
            printLine("error while reading " + path + ": empty file");
            result = LegacyRead::partial;
            continue;
        }
        auto layout = std::make_shared<tables::ColumnsLayout>(std::string());
        layout->readLayoutText(*text);
        layouts.layouts.push_back(std::move(layout));
    }
    layouts.sortLayouts();
    return result;
}

std::optional<LegacyFolderContent> listLegacyFolder(const std::string& folder) {
    auto names = listNames(folder);
    if (!names)
        return std::nullopt;
    LegacyFolderContent content;
    for (const auto& name : *names) {
        fs::path path = fs::path(folder) / name;
        std::error_code ec;
        if (!fs::is_directory(path, ec)) {
            ++content.files;
            continue;
        }
        if (fs::exists(path / "group", ec))
            ++content.groups;
        else
            ++content.files;
    }
    return content;
}

} // namespace lumbra::project
