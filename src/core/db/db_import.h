#pragma once

#include "tables/db_table.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::base {
class UserInteraction;
}
namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::db {

// The table of a file by the last four characters of its path, case kept: ".csv" (the options asked
// of `interaction`, default options without one), ".mhl", ".ccc", ".edl". Null for any other ending,
// for a file that cannot be read (".csv" prints "ERROR WHILE READING FROM <path>") and for a
// cancelled question.
[[nodiscard]] std::unique_ptr<tables::DBTable> tableFromFile(const std::string& path,
                                                             base::UserInteraction* interaction);

// The file types the "Add Database" file panel offers, without their dots.
[[nodiscard]] std::span<const std::string_view> databaseFileTypes();
// Whether a file dropped on the list of databases is taken: its last four characters are ".csv",
// ".mhl", ".ccc" or ".edl", case kept.
[[nodiscard]] bool acceptsDrop(std::string_view path);

// One database per readable file, in order, appended to the project's list under a name that no
// database has ("_" appended while one does); each file is logged as "Added DB" or "Cannot load DB".
// The tables added; the project is then marked as having something to save.
std::vector<tables::DBTable*> addDatabases(project::SharedStuff& sharedstuff,
                                           const std::vector<std::string>& paths);

} // namespace lumbra::db
