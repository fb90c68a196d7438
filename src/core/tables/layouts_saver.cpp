#include "tables/layouts_saver.h"

#include "base/console.h"
#include "base/saveable.h"

#include <filesystem>
#include <unordered_map>
#include <unordered_set>

namespace lumbra::tables {

namespace fs = std::filesystem;

namespace {

// The folders of the layouts by uuid, kept current as the save moves them.
class FolderIndex {
public:
    FolderIndex(const std::string& base, std::vector<std::string>* direct)
        : m_folders(base::folderIndex(base, direct)) {}

    [[nodiscard]] std::optional<std::string> find(const std::string& uuid) const {
        auto it = m_folders.find(uuid);
        if (it == m_folders.end())
            return std::nullopt;
        return it->second;
    }
    void set(const std::string& uuid, const std::string& folder) { m_folders[uuid] = folder; }

private:
    std::unordered_map<std::string, std::string> m_folders;
};

} // namespace

LayoutsSaver::LayoutsSaver(ProjectLayouts& sharedstuff, std::string baseUrl)
    : m_sharedstuff(sharedstuff), m_baseUrl(std::move(baseUrl)) {
}

std::vector<std::string> LayoutsSaver::folderUuids() const {
    std::vector<std::string> uuids;
    std::error_code ec;
    fs::directory_iterator it(m_baseUrl, ec);
    if (ec)
        return uuids;
    for (const auto& entry : it) {
        std::error_code typeError;
        if (!entry.is_directory(typeError))
            continue;
        if (auto uuid = base::readDetailsLine(entry.path().string(), 1))
            uuids.push_back(std::move(*uuid));
    }
    return uuids;
}

bool LayoutsSaver::saveAll(base::Notifications* notifications) {
    std::vector<std::string> onDisk;
    FolderIndex index(m_baseUrl, &onDisk);
    bool result = true;
    std::unordered_set<std::string> seen;
    seen.reserve(m_sharedstuff.layouts.size());
    for (const auto& layout : m_sharedstuff.layouts) {
        const std::string& uuid = layout->uuid();
        seen.insert(uuid);
        std::string path = (fs::path(m_baseUrl) / layout->folderName()).string();
        auto old = index.find(uuid);
        if (old && *old != path) {
            base::printLine("moving " + *old + " to " + path);
            std::error_code ec;
            fs::rename(*old, path, ec);
            if (ec) {
                std::string where = layout->name + " from " + *old + " to " + path;
                base::printLine("ERROR moving folder for " + where);
                if (notifications)
                    notifications->emplace_back("Moving error", "Error moving folder for " + where,
                                                base::NotificationType::KO);
                result = false;
            } else {
                index.set(uuid, path);
            }
        }
        // After a failed move the layout still saves when it changed, to its new place.
        if (!old || layout->hasChanged) {
            bool saved = layout->save(path, false, notifications);
            if (saved)
                index.set(uuid, path);
            result = result && saved;
        }
    }
    std::unordered_set<std::string> removed;
    for (const auto& uuid : onDisk) {
        if (seen.contains(uuid))
            continue;
        auto folder = index.find(uuid);
        // Two folders with one uuid: the first is gone already, so search again for the next.
        if (folder && removed.contains(*folder))
            folder = base::findFolder(uuid, m_baseUrl);
        if (!folder)
            continue;
        std::error_code ec;
        fs::remove_all(*folder, ec);
        if (ec)
            base::printLine("ERROR removing " + *folder);
        else
            removed.insert(*folder);
    }
    return result;
}

} // namespace lumbra::tables
