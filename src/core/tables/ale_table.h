#pragma once

#include "base/notification.h"
#include "tables/ale_compare_result.h"
#include "tables/ale_entry.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumbra::tables {

class BinLink;

// The clip table: ordered column names, ordered rows, and the heading values of an ALE file. The
// formats' readers and writers (import/) fill and write it.
class ALETable {
public:
    // The empty table.
    ALETable();
    virtual ~ALETable();

    // A move re-points the rows' back links; copies are explicit, through copy().
    ALETable(ALETable&& other) noexcept;
    ALETable& operator=(ALETable&& other) noexcept;
    ALETable(const ALETable&) = delete;
    ALETable& operator=(const ALETable&) = delete;

    // A deep clone: "_cl" appended to the name, no bin, rows copied and pointing at the clone.
    [[nodiscard]] virtual std::unique_ptr<ALETable> copy(bool keepSharedStuff) const;

    [[nodiscard]] EntryPtr findEntry(const RowData& criteria) const;
    [[nodiscard]] std::vector<EntryPtr> findEntries(const RowData& criteria) const;
    // Removes the row that is the same object; nothing if it is not here.
    virtual void removeEntry(const ALEEntry* entry);
    // Values in the order of `columns` (of `cols` when absent); absent for an index out of range.
    [[nodiscard]] std::optional<std::vector<std::string>>
    rowValues(long index, const std::optional<std::vector<std::string>>& columns = std::nullopt) const;

    // False if it is not a column; the key leaves every row through its write.
    bool deleteColumn(const std::string& name);
    bool swapColumns(long i, long j);
    bool swapColumns(const std::string& a, const std::string& b);
    // The place reached; absent (with a message) when `from` is out of range.
    std::optional<long> moveColumn(long from, long to);
    std::optional<long> moveColumn(const std::string& name, long to);
    // The pair (old, new), or absent with a message when old is unknown or new is taken.
    std::optional<std::pair<std::string, std::string>> renameColumn(const std::string& oldName,
                                                                    const std::string& newName);
    // Merges one incoming record: -1 on error, 1 updated an existing row, 2 added a row.
    int updateEntry(const RowData& data, const std::vector<std::string>& ids,
                    const std::map<std::string, std::string>& columnMap,
                    const std::map<std::string, bool>& priorities);
    // Reorders `data` for good; `ascending` false puts the smallest value first.
    void sortEntries(const std::string& column, bool ascending);

    [[nodiscard]] bool columnIsConstant(const std::string& name) const;
    [[nodiscard]] bool definesId(const std::vector<std::string>& fields, bool allowMissing) const;
    // Renames columns in one step; false (nothing changed) when two columns would get one name.
    bool remapColumns(const std::map<std::string, std::string>& mapping);
    [[nodiscard]] ALECompareResult compare(const ALETable& other, const std::vector<std::string>& ids) const;
    [[nodiscard]] bool canDeriveTimecodes(const std::string& a, const std::string& b,
                                          const std::string& c) const;
    // Row numbers that share a value in the column, in sorted order.
    [[nodiscard]] std::vector<long> duplicateRows(const std::string& column) const;
    // Appends the first free "newcol_%03d" to `cols`.
    void addNumberedColumn();

    [[nodiscard]] bool hasColumn(std::string_view name) const;
    // The place in `cols`, or -1.
    [[nodiscard]] long columnIndex(std::string_view name) const;
    // Appends a row with its table link set (absent for tables that list other bins' rows).
    void appendEntry(EntryPtr entry);
    // False for tables whose rows belong to other bins.
    [[nodiscard]] bool ownsRows() const noexcept { return m_ownsRows; }
    // The text of the rows' values, shared with the rows and with copies of the table.
    [[nodiscard]] const std::shared_ptr<TextStore>& textStore() const noexcept { return m_textStore; }

    std::optional<std::string> field_delim;
    std::optional<std::string> video_format;
    std::optional<std::string> fps;
    std::optional<std::string> audio_format;
    std::optional<std::string> film_format;
    std::optional<std::string> tape;
    BinLink* bin = nullptr; // does not own
    std::vector<std::string> cols;
    std::vector<EntryPtr> data;
    std::string tablename;
    // False after a file read that failed; the reader's failure says why.
    bool state = true;
    // The heading said that values are escaped (see import::aleText); the reader has undone the escapes.
    bool valueEscapes = false;

protected:
    explicit ALETable(bool ownsRows) : m_ownsRows(ownsRows) {}
    void copyInto(ALETable& clone, bool keepSharedStuff) const;

private:
    void repointRows(ALETable* from);

    bool m_ownsRows = true;
    std::shared_ptr<TextStore> m_textStore = std::make_shared<TextStore>();
};

} // namespace lumbra::tables
