#pragma once

#include "base/saveable.h"
#include "tables/ale_table.h"
#include "tables/row_data.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumbra::tables {

using base::Notifications;

// One row of a lookup table: column name to value, nothing else.
struct DBEntry {
    tables::RowData data;
    // True when every value is "" (also for a row with no keys).
    [[nodiscard]] bool isEmpty() const;
};

// A plain lookup table kept beside the bins: named columns over rows of text, no heading and no
// layout. Every reader of a non-ALE file gives one; a project keeps its databases as these.
class DBTable : public base::Saveable {
public:
    DBTable() = default;
    explicit DBTable(std::string name) : name(std::move(name)) {}

    // Prints "saving db <name>", saves the details, then writes `<folder>/<name>.csv` tab-separated;
    // a failed write adds "DB saving error" and leaves the table changed.
    bool save(const std::string& folder, bool isCopy, base::Notifications* notifications) override;
    // Reads the details; the rows come from the folder's ".csv" file through the project's database
    // loader, which knows the file's layout. False when the folder holds no ".csv".
    bool load(const std::string& folder, base::Notifications* notifications) override;
    // `<name> - <uuid>`, the folder of the table under the project's `db` folder.
    [[nodiscard]] std::string folderName();
    // `<name>.csv`, the file in that folder.
    [[nodiscard]] std::string fileName() const;

    // Nothing when it is no column; otherwise the key leaves every row and the table is changed.
    virtual void deleteColumn(const std::string& column);
    // The column line, then a record per row, fields quoted as standard CSV where they must be; no final
    // line feed.
    [[nodiscard]] virtual std::string tableText(const std::string& separator) const;
    // Creates the folders on the way and writes tableText; false with a printed message.
    virtual bool saveFile(const std::string& path, const std::string& separator) const;
    // Appends the first free "newcol_%03d".
    virtual void addNumberedColumn();

    [[nodiscard]] bool hasColumn(std::string_view column) const;
    // The clip table a bin is made of: the name, the columns and a copy of every row, each
    // row's table link set.
    [[nodiscard]] std::unique_ptr<tables::ALETable> toALETable() const&;
    // The same for a table that goes away: name, columns and rows are moved, not copied.
    [[nodiscard]] std::unique_ptr<tables::ALETable> toALETable() &&;

    std::string name;
    std::vector<std::string> cols;
    std::vector<DBEntry> data;
    // Set by the user in the panel; lives in memory only.
    std::map<std::string, double> colwidths;
};

// Where the rows came from; the classes add nothing. A database read back from a project is a CSVTable.
class CSVTable : public DBTable {
public:
    using DBTable::DBTable;
};
class CCCTable : public DBTable {
public:
    using DBTable::DBTable;
};
class EDLTable : public DBTable {
public:
    using DBTable::DBTable;
};
class MHLTable : public DBTable {
public:
    using DBTable::DBTable;
};

} // namespace lumbra::tables
