#include "db/db_import.h"

#include "import/csv_parser.h"
#include "import/file_formats.h"
#include "project/shared_stuff.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <unordered_set>

namespace lumbra::db {

namespace {

using base::NotificationType;

// The readers of these formats serve the bin import too, through the formats table: their clip table's
// name, columns and rows go into a table of the given kind.
template <typename Table> std::unique_ptr<tables::DBTable> throughClipReader(const std::string& path) {
    const import::FileFormat* format = import::formatForPath(path);
    if (!format || !format->read)
        return nullptr;
    import::ReadResult result = format->read(path, nullptr);
    if (result.failure)
        return nullptr;
    const std::unique_ptr<tables::ALETable>& read = result.table;
    auto table = std::make_unique<Table>(read->tablename);
    table->cols = read->cols;
    table->data.reserve(read->data.size());
    for (const auto& entry : read->data)
        table->data.push_back(tables::DBEntry{entry->data()});
    return table;
}

} // namespace

std::span<const std::string_view> databaseFileTypes() {
    static constexpr std::array<std::string_view, 5> types{"csv", "mhl", "ccc", "edl", "aaf"};
    return types;
}

bool acceptsDrop(std::string_view path) {
    const std::string_view ending = path.size() >= 4 ? path.substr(path.size() - 4) : std::string_view();
    return ending == ".csv" || ending == ".mhl" || ending == ".ccc" || ending == ".edl";
}

std::unique_ptr<tables::DBTable> tableFromFile(const std::string& path, base::UserInteraction* interaction) {
    const std::string ending = path.size() >= 4 ? path.substr(path.size() - 4) : std::string();
    if (ending == ".csv")
        return import::parseCSVFile(path, nullptr, interaction, nullptr);
    if (ending == ".edl")
        return throughClipReader<tables::EDLTable>(path);
    if (ending == ".mhl")
        return throughClipReader<tables::MHLTable>(path);
    if (ending == ".ccc")
        return throughClipReader<tables::CCCTable>(path);
    // ".aaf" gives a table through the embedded Python, which databases do not start yet.
    return nullptr;
}

std::vector<tables::DBTable*> addDatabases(project::SharedStuff& sharedstuff,
                                           const std::vector<std::string>& paths) {
    std::vector<tables::DBTable*> added;
    std::unordered_set<std::string> names;
    for (const auto& table : sharedstuff.db)
        names.insert(table->name);
    for (const auto& path : paths) {
        std::unique_ptr<tables::DBTable> table = tableFromFile(path, sharedstuff.interaction);
        if (!table) {
            sharedstuff.addLog("Couldn't load " + std::filesystem::path(path).filename().string(), true,
                               "Cannot load DB", NotificationType::WARNING);
            continue;
        }
        while (names.contains(table->name))
            table->name += '_';
        names.insert(table->name);
        sharedstuff.addLog("Successfully loaded " + table->name, true, "Added DB", NotificationType::OK);
        added.push_back(table.get());
        sharedstuff.db.push_back(std::move(table));
    }
    if (!added.empty())
        sharedstuff.something_to_save = true;
    return added;
}

} // namespace lumbra::db
