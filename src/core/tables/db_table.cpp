#include "tables/db_table.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_file.h"
#include "base/text_helpers.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace lumbra::tables {

namespace fs = std::filesystem;
using base::NotificationType;
using base::printLine;

namespace {

// A name may hold "/", which on disk would make a folder of its own.
std::string diskName(std::string_view name) {
    std::string out(name);
    std::replace(out.begin(), out.end(), '/', '_');
    return out;
}

} // namespace

bool DBEntry::isEmpty() const {
    return std::all_of(data.begin(), data.end(), [](const auto& cell) { return cell.size == 0; });
}

bool DBTable::hasColumn(std::string_view column) const {
    return std::find(cols.begin(), cols.end(), column) != cols.end();
}

void DBTable::deleteColumn(const std::string& column) {
    auto it = std::find(cols.begin(), cols.end(), column);
    if (it == cols.end())
        return;
    cols.erase(it);
    for (auto& entry : data)
        entry.data.erase(column);
    modified = base::nowSeconds();
    hasChanged = true;
}

std::string DBTable::tableText(const std::string& separator) const {
    std::string text;
    auto appendRecord = [&](auto valueOf) {
        for (std::size_t c = 0; c < cols.size(); ++c) {
            if (c > 0)
                text += separator;
            text += base::standardCsvField(valueOf(cols[c]), separator);
        }
    };
    appendRecord([](const std::string& column) -> std::string_view { return column; });
    std::vector<tables::ColumnKey> keys;
    keys.reserve(cols.size());
    for (const auto& column : cols)
        keys.push_back(tables::ColumnNames::key(column));
    for (const auto& entry : data) {
        text += '\n';
        std::size_t c = 0;
        appendRecord([&](const std::string&) { return entry.data.valueOr(keys[c++]); });
    }
    return text;
}

bool DBTable::saveFile(const std::string& path, const std::string& separator) const {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (error) {
        base::printLine("ERROR: couldn't crete directory " + path);
        return false;
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    const std::string text = tableText(separator);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out) {
        base::printLine("ERROR: couldn't crete directory " + path);
        return false;
    }
    return true;
}

std::string DBTable::folderName() {
    return diskName(name) + " - " + uuid();
}

std::string DBTable::fileName() const {
    return diskName(name) + ".csv";
}

bool DBTable::save(const std::string& folder, bool isCopy, base::Notifications* notifications) {
    base::printLine("saving db " + name);
    const bool wasChanged = hasChanged;
    if (!Saveable::save(folder, isCopy, notifications))
        return false;
    const fs::path path = fs::path(folder) / fileName();
    if (!saveFile(path.string(), "\t")) {
        // The base save marked the table saved, yet the disk does not hold it: the next save retries.
        hasChanged = wasChanged || !isCopy;
        if (notifications)
            notifications->emplace_back("DB saving error", "Error saving " + path.string(),
                                        base::NotificationType::KO);
        return false;
    }
    // A renamed table leaves its old file behind; the loader takes the first ".csv" it meets, so only
    // the current one may stay.
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (it->path().filename() != path.filename() &&
            base::hasSuffix(it->path().filename().string(), ".csv")) {
            std::error_code ignored;
            fs::remove(it->path(), ignored);
        }
    }
    return true;
}

bool DBTable::load(const std::string& folder, base::Notifications* notifications) {
    Saveable::load(folder, notifications);
    const auto file = base::findFile(folder, ".csv", notifications, false);
    hasChanged = false;
    return file.has_value();
}

void DBTable::addNumberedColumn() {
    char column[32];
    for (int n = 1;; ++n) {
        std::snprintf(column, sizeof column, "newcol_%03d", n);
        if (!hasColumn(column)) {
            cols.emplace_back(column);
            return;
        }
    }
}

std::unique_ptr<tables::ALETable> DBTable::toALETable() const& {
    auto table = std::make_unique<tables::ALETable>();
    table->tablename = name;
    table->cols = cols;
    table->data.reserve(data.size());
    for (const auto& entry : data)
        table->appendEntry(std::make_shared<tables::ALEEntry>(entry.data));
    return table;
}

std::unique_ptr<tables::ALETable> DBTable::toALETable() && {
    auto table = std::make_unique<tables::ALETable>();
    table->tablename = std::move(name);
    table->cols = std::move(cols);
    table->data.reserve(data.size());
    for (auto& entry : data)
        table->appendEntry(std::make_shared<tables::ALEEntry>(std::move(entry.data)));
    data.clear();
    return table;
}

} // namespace lumbra::tables
