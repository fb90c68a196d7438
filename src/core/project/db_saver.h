#pragma once

#include "base/saveable.h"
#include "project/legacy_readers.h"
#include "tables/db_table.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::project {

// Writes the project's databases under its `db` folder, one folder `<name> - <uuid>` each, and
// removes the folders of deleted ones.
class DBSaver {
public:
    DBSaver(std::string baseUrl, project::SharedStuff& sharedstuff);

    // `baseUrl`/`<name> - <uuid>` for a database of the project; absent for one that is not in its list.
    [[nodiscard]] std::optional<std::string> folderUrl(tables::DBTable& table) const;
    // Every database through saveItem, the walk going on after a failure (false overall); then, unless
    // this is a copy, the folders of `itemsToRemove` go ("ERROR removing <path>" when one cannot).
    bool saveAll(const std::vector<std::shared_ptr<base::Saveable>>& itemsToRemove,
                 base::Notifications* notifications);
    // Moves the table's folder to its current name and saves the table there when it changed or
    // was not on disk; false with an "Unknown item" or "Moving error" notification, or the table's own.
    bool saveItem(tables::DBTable& table, base::Notifications* notifications);

    // A copy saves every table into a new place and leaves each marked as it was.
    bool isCopy = false;

private:
    bool saveItem(tables::DBTable& table, std::unordered_map<std::string, std::string>& folders,
                  base::Notifications* notifications);

    std::string m_baseUrl;
    project::SharedStuff& m_sharedstuff;
};

// Reads a database file (tab-separated standard CSV, the column names on the first line) into the table's
// `name` (the file's name less its last four characters), `cols` and `data`. False, with "ERROR WHILE READING
// FROM <path>" printed and the table emptied, when it cannot be read.
bool readDatabaseFile(const std::string& path, tables::DBTable& table, base::Notifications* notifications);

// Reads the databases of a project's `db` folder.
class DBLoader {
public:
    explicit DBLoader(std::string baseUrl) : m_baseUrl(std::move(baseUrl)) {}

    // One CSVTable per folder that holds a ".csv" file, named after the folder less its " - <uuid>"
    // tail and then loaded, in name order. Absent when the folder cannot be listed.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<tables::DBTable>>>
    loadAll(base::Notifications* notifications) const;

    // The earlier flat folder of databases: every file in it read as a database file, in name order,
    // appended to `tables` as changed, so that the next save writes them in the current layout.
    // failed (printed) when the folder cannot be listed, partial when a file could not be read.
    [[nodiscard]] static project::LegacyRead loadLegacy(const std::string& folder,
                                                        std::vector<std::shared_ptr<tables::DBTable>>& tables,
                                                        base::Notifications* notifications);

private:
    std::string m_baseUrl;
};

} // namespace lumbra::project
