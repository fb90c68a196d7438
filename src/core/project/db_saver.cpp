#include "project/db_saver.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "import/csv_parser.h"
#include "project/bins_tree_loader.h"
#include "project/shared_stuff.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::NotificationType;
using base::printLine;
using tables::CSVTable;
using tables::DBTable;

namespace {} // namespace

DBSaver::DBSaver(std::string baseUrl, project::SharedStuff& sharedstuff)
    : m_baseUrl(std::move(baseUrl)), m_sharedstuff(sharedstuff) {
}

std::optional<std::string> DBSaver::folderUrl(DBTable& table) const {
    const auto& list = m_sharedstuff.db;
    if (std::none_of(list.begin(), list.end(), [&](const auto& item) { return item.get() == &table; }))
        return std::nullopt;
    return (fs::path(m_baseUrl) / table.folderName()).string();
}

bool DBSaver::saveAll(const std::vector<std::shared_ptr<base::Saveable>>& itemsToRemove,
                      base::Notifications* notifications) {
    // One walk of the folder answers where every table was last saved.
    auto folders = base::folderIndex(m_baseUrl);
    bool result = true;
    for (const auto& table : m_sharedstuff.db) {
        if (!saveItem(*table, folders, notifications)) {
            printLine("ERROR saving DBs");
            result = false;
        }
    }
    if (isCopy)
        return result;
    for (const auto& item : itemsToRemove) {
        auto it = folders.find(item->uuid());
        if (it == folders.end())
            continue;
        std::error_code error;
        fs::remove_all(it->second, error);
        if (error)
            printLine("ERROR removing " + it->second);
    }
    return result;
}

bool DBSaver::saveItem(DBTable& table, base::Notifications* notifications) {
    if (!folderUrl(table)) {
        printLine("ERROR: cannot save item that is outside this tree");
        if (notifications)
            notifications->emplace_back("Unknown item",
                                        "Cannot save " + table.name + " because it is outside of this tree",
                                        NotificationType::KO);
        return false;
    }
    std::unordered_map<std::string, std::string> folders;
    if (auto old = base::findFolder(table.uuid(), m_baseUrl))
        folders.emplace(table.uuid(), *old);
    return saveItem(table, folders, notifications);
}

bool DBSaver::saveItem(DBTable& table, std::unordered_map<std::string, std::string>& folders,
                       base::Notifications* notifications) {
    const std::string folder = (fs::path(m_baseUrl) / table.folderName()).string();
    auto old = folders.find(table.uuid());
    const bool onDisk = old != folders.end();
    if (onDisk && old->second != folder) {
        printLine("moving " + old->second + " to " + folder);
        std::error_code error;
        fs::rename(old->second, folder, error);
        if (error) {
            std::string where = old->second + " to " + folder;
            printLine("Error moving folder for " + where);
            if (notifications)
                notifications->emplace_back("Moving error", "Error moving folder for " + where,
                                            NotificationType::KO);
            return false;
        }
        old->second = folder;
    }
    // An ordinary save writes only what changed; a table missing from the folder is written whatever its
    // mark.
    if (onDisk && !table.hasChanged && !isCopy)
        return true;
    if (!table.save(folder, isCopy, notifications))
        return false;
    folders[table.uuid()] = folder;
    return true;
}

bool readDatabaseFile(const std::string& path, DBTable& table, base::Notifications* notifications) {
    auto text = base::readTextFile(path, notifications);
    if (!text) {
        printLine("ERROR WHILE READING FROM " + path);
        table.cols.clear();
        table.data.clear();
        return false;
    }
    base::CsvOptions options;
    options.separator = U'\t';
    options.delimiter = U'"';
    // Our files put the column line first and quote as standard CSV: an empty row of a one-column table must
    // not pass for the empty line before the column names, and the plain reading would split quoted values.
    options.first_line = base::FirstLineStyle::first;
    options.first_line_number = 0;
    options.ignore_oriented_quotes = false;
    options.standard_csv = true;
    auto parsed =
        import::parseCSVText(std::move(*text), options, fs::path(path).filename().string(), nullptr);
    table.name = std::move(parsed->name);
    table.cols = std::move(parsed->cols);
    table.data = std::move(parsed->data);
    return true;
}

std::optional<std::vector<std::shared_ptr<DBTable>>>
DBLoader::loadAll(base::Notifications* notifications) const {
    std::error_code error;
    fs::directory_iterator it(m_baseUrl, error);
    if (error)
        return std::nullopt;
    std::vector<fs::path> folders;
    for (fs::directory_iterator end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (it->is_directory(typeError))
            folders.push_back(it->path());
    }
    if (error)
        return std::nullopt;
    // The file system's order differs from disk to disk; the name order is the same everywhere.
    std::sort(folders.begin(), folders.end());
    std::vector<std::shared_ptr<DBTable>> tables;
    for (const auto& folder : folders) {
        if (!base::holdsEntry(folder.string(),
                              [](const std::string& name) { return base::hasSuffix(name, ".csv"); }))
            continue;
        auto table = std::make_shared<CSVTable>(project::nameOfFolder(folder.string()));
        if (table->load(folder.string(), notifications)) {
            if (auto file = base::findFile(folder.string(), ".csv", notifications, false))
                readDatabaseFile(*file, *table, notifications);
            table->hasChanged = false;
        }
        tables.push_back(std::move(table));
    }
    return tables;
}

project::LegacyRead DBLoader::loadLegacy(const std::string& folder,
                                         std::vector<std::shared_ptr<DBTable>>& tables,
                                         base::Notifications* notifications) {
    std::error_code error;
    std::vector<fs::path> files;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (!it->is_directory(typeError))
            files.push_back(it->path());
    }
    if (error) {
        printLine("ERROR: cannot get files list from folder " + folder);
        return project::LegacyRead::failed;
    }
    std::sort(files.begin(), files.end());
    auto read = project::LegacyRead::complete;
    for (const auto& file : files) {
        auto table = std::make_shared<CSVTable>();
        if (!readDatabaseFile(file.string(), *table, notifications)) {
            read = project::LegacyRead::partial;
            continue;
        }
        tables.push_back(std::move(table));
    }
    return read;
}

} // namespace lumbra::project
