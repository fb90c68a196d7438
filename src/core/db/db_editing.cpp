#include "db/db_editing.h"

#include "base/text_helpers.h"
#include "base/user_interaction.h"
#include "project/bin.h"
#include "project/project_saver.h"
#include "project/shared_stuff.h"

#include <algorithm>

namespace lumbra::db {

std::optional<std::size_t> databaseIndex(const project::SharedStuff& sharedstuff,
                                         const tables::DBTable& table) {
    const auto& list = sharedstuff.db;
    auto it = std::find_if(list.begin(), list.end(), [&](const auto& item) { return item.get() == &table; });
    if (it == list.end())
        return std::nullopt;
    return static_cast<std::size_t>(it - list.begin());
}

tables::DBTable* databaseNamed(const project::SharedStuff& sharedstuff, std::string_view name) {
    for (const auto& table : sharedstuff.db) {
        if (table->name == name)
            return table.get();
    }
    return nullptr;
}

void tableEdited(project::SharedStuff& sharedstuff, tables::DBTable& table) {
    table.modified = base::nowSeconds();
    table.hasChanged = true;
    // The panel saves nothing itself: the next save of the project writes the table.
    sharedstuff.something_to_save = true;
}

void renameDatabase(project::SharedStuff& sharedstuff, tables::DBTable& table, std::string name) {
    table.name = std::move(name);
    tableEdited(sharedstuff, table);
}

bool renameDatabase(project::SharedStuff& sharedstuff, tables::DBTable& table) {
    if (!sharedstuff.interaction)
        return false;
    auto answer = sharedstuff.interaction->askText({"Rename DB", "Insert name for the DB", table.name, {}});
    // An empty name would leave the table a file called ".csv": it counts as no answer.
    if (!answer || answer->empty())
        return false;
    renameDatabase(sharedstuff, table, std::move(*answer));
    return true;
}

bool deleteDatabase(project::SharedStuff& sharedstuff, tables::DBTable& table) {
    auto index = databaseIndex(sharedstuff, table);
    if (!index)
        return false;
    auto& list = sharedstuff.db;
    sharedstuff.saver().dbsToRemove.push_back(list[*index]);
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(*index));
    sharedstuff.something_to_save = true;
    return true;
}

std::size_t addEntry(project::SharedStuff& sharedstuff, tables::DBTable& table,
                     std::optional<std::size_t> before) {
    std::size_t at = before && *before < table.data.size() ? *before : table.data.size();
    table.data.insert(table.data.begin() + static_cast<std::ptrdiff_t>(at), tables::DBEntry{});
    tableEdited(sharedstuff, table);
    return at;
}

bool deleteEntry(project::SharedStuff& sharedstuff, tables::DBTable& table, std::size_t row) {
    if (row >= table.data.size())
        return false;
    table.data.erase(table.data.begin() + static_cast<std::ptrdiff_t>(row));
    tableEdited(sharedstuff, table);
    return true;
}

bool setCell(project::SharedStuff& sharedstuff, tables::DBTable& table, std::size_t row,
             const std::string& column, std::string value) {
    if (row >= table.data.size())
        return false;
    table.data[row].data.set(column, value);
    tableEdited(sharedstuff, table);
    return true;
}

std::optional<std::size_t> longestCellRow(const tables::DBTable& table, const std::string& column) {
    const tables::ColumnKey key = tables::ColumnNames::key(column);
    std::optional<std::size_t> longest;
    std::size_t longestLength = 0;
    for (std::size_t row = 0; row < table.data.size(); ++row) {
        const std::size_t length = base::characterCount(table.data[row].data.valueOr(key));
        if (length > longestLength) {
            longest = row;
            longestLength = length;
        }
    }
    return longest;
}

project::Bin& binFromDatabase(project::SharedStuff& sharedstuff, const tables::DBTable& table) {
    std::unique_ptr<tables::ALETable> clips = table.toALETable();
    clips->tablename = sharedstuff.uniqueName(table.name);
    clips->fps = sharedstuff.fps;
    clips->video_format = sharedstuff.tlResolution;
    clips->audio_format = sharedstuff.sound;
    clips->film_format = sharedstuff.film_format;
    if (sharedstuff.tapeId)
        clips->tape = sharedstuff.tapeId;
    // The database's own columns, as an imported table with columns of its own gets: the project's base
    // layout may name none of them, which would show a bin of empty cells.
    auto layout = std::make_shared<tables::ColumnsLayout>("*" + clips->tablename, clips->cols);
    auto bin = std::make_shared<project::Bin>(std::move(clips), &sharedstuff, std::move(layout), true);
    project::Bin& made = *bin;
    sharedstuff.addBin(std::move(bin));
    sharedstuff.refreshSmartbins(made, false);
    made.setSelected(true);
    return made;
}

} // namespace lumbra::db
