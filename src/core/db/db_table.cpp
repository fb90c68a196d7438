#include "db/db_table.h"

#include "tables/console.h"
#include "tables/text_helpers.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace lumbra::db {

bool DBEntry::isEmpty() const {
    return std::all_of(data.begin(), data.end(), [](const auto& cell) { return cell.value.empty(); });
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
    modified = project::nowSeconds();
    hasChanged = true;
}

std::string DBTable::tableText(const std::string& separator) const {
    std::string text;
    auto appendRecord = [&](auto valueOf) {
        for (std::size_t c = 0; c < cols.size(); ++c) {
            if (c > 0)
                text += separator;
            text += tables::quotifyField(valueOf(cols[c]), separator);
        }
    };
    appendRecord([](const std::string& column) -> const std::string& { return column; });
    std::vector<tables::ColumnKey> keys;
    keys.reserve(cols.size());
    for (const auto& column : cols)
        keys.push_back(tables::ColumnNames::key(column));
    for (const auto& entry : data) {
        text += '\n';
        std::size_t c = 0;
        appendRecord([&](const std::string&) -> const std::string& { return entry.data.valueOr(keys[c++]); });
    }
    return text;
}

bool DBTable::saveFile(const std::string& path, const std::string& separator) const {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (error) {
        tables::printLine("ERROR: couldn't crete directory " + path);
        return false;
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    const std::string text = tableText(separator);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out) {
        tables::printLine("ERROR: couldn't crete directory " + path);
        return false;
    }
    return true;
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

std::unique_ptr<tables::ALETable> DBTable::toALETable() const {
    auto table = std::make_unique<tables::ALETable>();
    table->tablename = name;
    table->cols = cols;
    table->data.reserve(data.size());
    for (const auto& entry : data)
        table->appendEntry(std::make_shared<tables::ALEEntry>(entry.data));
    return table;
}

} // namespace lumbra::db
