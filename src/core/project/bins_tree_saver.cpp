#include "project/bins_tree_saver.h"

#include "base/console.h"
#include "tables/background_writer.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::Notifications;
using base::NotificationType;
using base::printLine;

namespace {

// The folder of one node. A "/" would open a folder of its own, so it stands as "_" on disk;
// the name itself is kept in the node's files.
std::string component(BinsTreeEntry& entry) {
    std::string name = entry.name();
    std::replace(name.begin(), name.end(), '/', '_');
    return name + " - " + entry.nodeUuid();
}

std::string join(const std::string& folder, const std::string& name) {
    return (fs::path(folder) / name).string();
}

bool outsideTree(BinsTreeEntry& entry, Notifications* notifications) {
    printLine("ERROR: cannot save item that is outside this tree");
    if (notifications)
        notifications->emplace_back("Unknown item",
                                    "Error: cannot save entry " + entry.name() +
                                        " because it is outside of this tree",
                                    NotificationType::KO);
    return false;
}

// Folders move and go only once the files still being written into them are done.
void settleWrites(BinsTreeEntry& root) {
    if (root.sharedstuff != nullptr) {
        if (tables::BackgroundWriter* writer = root.sharedstuff->backgroundWriter())
            writer->waitIdle();
    }
}

} // namespace

BinsTreeSaver::BinsTreeSaver(std::string baseUrl, BinsTreeEntry& rootEntry)
    : m_baseUrl(std::move(baseUrl)), m_root(rootEntry) {
}

std::optional<std::string> BinsTreeSaver::folderOf(BinsTreeEntry& entry,
                                                   const std::optional<std::string>& base) {
    auto path = m_root.pathTo(&entry);
    if (path.empty())
        return std::nullopt;
    std::string folder = base.value_or(m_baseUrl);
    for (std::size_t i = 1; i < path.size(); ++i)
        folder = join(folder, component(*path[i]));
    return folder;
}

bool BinsTreeSaver::leftUnwritten(BinsTreeEntry& entry) {
    for (BinsTreeEntry* node : entry.flatten()) {
        if (node != &m_root)
            m_unwritten.push_back(node->name());
    }
    return false;
}

bool BinsTreeSaver::saveItem(BinsTreeEntry& entry, Notifications* notifications) {
    m_folders.reset();
    m_wrote = false;
    m_unwritten.clear();
    auto path = folderOf(entry);
    if (!path)
        return outsideTree(entry, notifications);
    return saveAt(entry, *path, notifications);
}

bool BinsTreeSaver::saveAt(BinsTreeEntry& entry, const std::string& path, Notifications* notifications) {
    auto place = currentFolder(entry, path);
    if (place && *place != path) {
        printLine("moving " + *place + " to " + path);
        settleWrites(m_root);
        std::error_code ec;
        fs::create_directories(fs::path(path).parent_path(), ec);
        fs::rename(*place, path, ec);
        if (ec) {
            std::string what = "moving folder for " + entry.name() + " from " + *place + " to " + path;
            printLine("ERROR " + what);
            if (notifications)
                notifications->emplace_back("Moving error", "Error " + what, NotificationType::KO);
            // Written at the new place, the subtree would stand twice on disk.
            return leftUnwritten(entry);
        }
        movedFolder(*place, path);
        m_wrote = true;
    }
    if (!place || entry.identity().hasChanged) {
        // A group that has no folder cannot hold its children's.
        if (!entry.save(path, false, notifications))
            return leftUnwritten(entry);
        m_wrote = true;
    }
    bool all = true;
    for (const auto& child : entry.children)
        all = saveAt(*child, join(path, component(*child)), notifications) && all;
    return all;
}

std::optional<std::string> BinsTreeSaver::currentFolder(BinsTreeEntry& entry, const std::string& path) {
    const std::string& uuid = entry.nodeUuid();
    std::error_code ec;
    if (fs::is_directory(path, ec) && base::readDetailsLine(path, 1) == uuid)
        return path;
    if (!m_folders)
        m_folders = base::folderIndex(m_baseUrl);
    auto it = m_folders->find(uuid);
    if (it == m_folders->end())
        return std::nullopt;
    if (base::readDetailsLine(it->second, 1) == uuid)
        return it->second;
    return base::findFolder(uuid, m_baseUrl);
}

void BinsTreeSaver::movedFolder(const std::string& from, const std::string& to) {
    if (!m_folders)
        return;
    std::string prefix = from + "/";
    for (auto& [uuid, folder] : *m_folders) {
        if (folder == from)
            folder = to;
        else if (folder.compare(0, prefix.size(), prefix) == 0)
            folder = to + folder.substr(from.size());
    }
}

bool BinsTreeSaver::removeEntries(const std::vector<TreeNode>& entries, Notifications* notifications) {
    if (!saveItem(m_root, notifications)) {
        printLine("ERROR saving bins");
        return false;
    }
    bool wrote = m_wrote;
    m_folders = base::folderIndex(m_baseUrl);
    for (const auto& entry : entries) {
        if (!entry)
            continue;
        auto it = m_folders->find(entry->nodeUuid());
        if (it == m_folders->end())
            continue;
        settleWrites(m_root);
        std::error_code ec;
        fs::remove_all(it->second, ec);
        if (ec)
            printLine("ERROR removing " + it->second);
        else
            wrote = true;
    }
    m_wrote = wrote;
    return true;
}

bool BinsTreeSaver::saveAll(const std::string& base, BinsTreeEntry& entry, Notifications* notifications) {
    m_unwritten.clear();
    auto path = folderOf(entry, base);
    if (!path)
        return outsideTree(entry, notifications);
    auto copyAt = [&](auto& self, BinsTreeEntry& node, const std::string& folder) -> bool {
        printLine("saving " + folder);
        if (!node.save(folder, true, notifications))
            return leftUnwritten(node);
        bool all = true;
        for (const auto& child : node.children)
            all = self(self, *child, join(folder, component(*child))) && all;
        return all;
    };
    return copyAt(copyAt, entry, *path);
}

} // namespace lumbra::project
