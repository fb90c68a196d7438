#pragma once

#include "tables/db_table.h"

#include <optional>
#include <string>
#include <vector>

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::db {

// What the user does to the project's databases and to the rows of one. Each edit sets the table's
// `modified` and `hasChanged` and marks the project as having something to save: nothing saves at once,
// the next project save writes it.

// The position of the table in the project's list; absent when it is not there.
[[nodiscard]] std::optional<std::size_t> databaseIndex(const project::SharedStuff& sharedstuff,
                                                       const tables::DBTable& table);
// The first database of that name; null when none has it.
[[nodiscard]] tables::DBTable* databaseNamed(const project::SharedStuff& sharedstuff, std::string_view name);

// The new name is the table's; its folder and file follow at the next save.
void renameDatabase(project::SharedStuff& sharedstuff, tables::DBTable& table, std::string name);
// Asks "Insert name for the DB" under "Rename DB" and renames; false when the user cancels.
bool renameDatabase(project::SharedStuff& sharedstuff, tables::DBTable& table);
// Out of the project's list; its folder goes at the next save. False when it is not in the list.
bool deleteDatabase(project::SharedStuff& sharedstuff, tables::DBTable& table);

// A new row without values before row `before`, or at the end without one (or past the end); its index.
std::size_t addEntry(project::SharedStuff& sharedstuff, tables::DBTable& table,
                     std::optional<std::size_t> before = {});
// False for a row past the end.
bool deleteEntry(project::SharedStuff& sharedstuff, tables::DBTable& table, std::size_t row);
// An edited cell; false for a row past the end.
bool setCell(project::SharedStuff& sharedstuff, tables::DBTable& table, std::size_t row,
             const std::string& column, std::string value);
// Marks the table after a tool or a column change, and the project.
void tableEdited(project::SharedStuff& sharedstuff, tables::DBTable& table);

// The row holding the column's longest value in characters, the first of equals; absent when every
// value is empty. The display measures that one text instead of every cell.
[[nodiscard]] std::optional<std::size_t> longestCellRow(const tables::DBTable& table,
                                                        const std::string& column);

// A new bin from the table: its name made free among the bins, the project's heading values, the
// columns and a copy of every row, a layout "*" + name of those columns; added at the top of the bins
// and opened. The bin.
project::Bin& binFromDatabase(project::SharedStuff& sharedstuff, const tables::DBTable& table);

} // namespace lumbra::db
