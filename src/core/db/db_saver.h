#pragma once

#include "db/db_table.h"
#include "project/legacy_readers.h"
#include "project/saveable.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::db {

// Writes the project's databases under its `db` folder, one folder `<name> - <uuid>` each, and
// removes the folders of deleted ones.
class DBSaver {
public:
    DBSaver(std::string baseUrl, project::SharedStuff& sharedstuff);

    // `baseUrl`/`<name> - <uuid>` for a database of the project; absent for one that is not in its list.
    [[nodiscard]] std::optional<std::string> folderUrl(DBTable& table) const;
    // Every database through saveItem, the walk going on after a failure (false overall); then, unless
    // this is a copy, the folders of `itemsToRemove` go ("ERROR removing <path>" when one cannot).
    bool saveAll(const std::vector<std::shared_ptr<project::Saveable>>& itemsToRemove,
                 Notifications* notifications);
    // Moves the table's folder to its current name and saves the table there when it changed or
    // was not on disk; false with an "Unknown item" or "Moving error" notification, or the table's own.
    bool saveItem(DBTable& table, Notifications* notifications);

    // A copy saves every table into a new place and leaves each marked as it was.
    bool isCopy = false;

private:
    bool saveItem(DBTable& table, std::unordered_map<std::string, std::string>& folders,
                  Notifications* notifications);

    std::string m_baseUrl;
    project::SharedStuff& m_sharedstuff;
};

// Reads the databases of a project's `db` folder.
class DBLoader {
public:
    explicit DBLoader(std::string baseUrl) : m_baseUrl(std::move(baseUrl)) {}

    // One CSVTable per folder that holds a ".csv" file, named after the folder less its " - <uuid>"
    // tail and then loaded, in name order. Absent when the folder cannot be listed.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<DBTable>>>
    loadAll(Notifications* notifications) const;

    // The earlier flat folder of databases: every file in it read as a database file, in name order,
    // appended to `tables` as changed, so that the next save writes them in the current layout.
    // failed (printed) when the folder cannot be listed, partial when a file could not be read.
    [[nodiscard]] static project::LegacyRead loadLegacy(const std::string& folder,
                                                        std::vector<std::shared_ptr<DBTable>>& tables,
                                                        Notifications* notifications);

private:
    std::string m_baseUrl;
};

} // namespace lumbra::db
