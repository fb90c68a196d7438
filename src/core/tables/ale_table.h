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

// The heading key of an ALE file whose values carry backslash escapes (see ALETable::aleText).
inline constexpr std::string_view valueEscapesKey = "VALUE_ESCAPES";

// The clip table: ordered column names, ordered rows, and the heading values of an ALE file.
class ALETable {
public:
    // The empty table.
    ALETable();
    // Reads an ALE file; the result is always a table and `state` tells whether it is good.
    explicit ALETable(const std::string& path, base::Notifications* notifications = nullptr);
    virtual ~ALETable();

    // A move re-points the rows' back links; copies are explicit, through copy().
    ALETable(ALETable&& other) noexcept;
    ALETable& operator=(ALETable&& other) noexcept;
    ALETable(const ALETable&) = delete;
    ALETable& operator=(const ALETable&) = delete;

    // Parses text as the reader has it after decoding; `tablename` is taken as given.
    [[nodiscard]] static ALETable fromText(std::string text, std::string tablename);

    // A deep clone: "_cl" appended to the name, no bin, rows copied and pointing at the clone.
    [[nodiscard]] virtual std::unique_ptr<ALETable> copy(bool keepSharedStuff) const;

    void parseHeadingLine(std::string_view line);
    // From `from`, the index of the first separator or line feed of `datastring`, or its end.
    [[nodiscard]] std::size_t endOfField(std::size_t from) const;

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

    // The ALE text; an empty `columns` list means `cols`. With `escapeValues` (a bin's own file) a
    // value or column name holding a line break, a tab or a double quote is kept through escapes that
    // the reader undoes; other files keep the ALE rules and leave values as they are.
    [[nodiscard]] std::string aleText(const std::vector<std::string>& columns, bool omitFilmFormat,
                                      bool escapeValues = false) const;
    // False (with a message, also put in `reason` when given) when the file exists and overwrite is
    // off, or the write fails.
    bool saveALE(const std::string& path, const std::vector<std::string>& columns, bool overwrite,
                 bool omitFilmFormat, std::string* reason = nullptr, bool escapeValues = false) const;
    [[nodiscard]] std::string csvText(const std::string& separator, bool withMetadata,
                                      const std::vector<std::string>& columns, bool omitFilmFormat) const;
    bool saveCSV(const std::string& path, const std::string& separator, bool withMetadata,
                 const std::vector<std::string>& columns, bool overwrite, bool omitFilmFormat,
                 std::string* reason = nullptr) const;

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
    bool state = true;
    // Why `state` is false, in the words the user is shown after the file's name ("no Column line"); empty
    // while the table is good.
    std::string refusal;
    char32_t delimiter = U'"';
    char separator = '\t';
    // The clip lines as read: a view into textStore(), where the rows' values lie.
    std::string_view datastring;
    bool inDelimiter = false;
    static constexpr char32_t openQuotes = U'\u201C';
    static constexpr char32_t closedQuotes = U'\u201D';
    bool inQuotes = false;
    // The heading said that values are escaped (see aleText); the reader has undone the escapes.
    bool valueEscapes = false;

protected:
    explicit ALETable(bool ownsRows) : m_ownsRows(ownsRows) {}
    void readFile(const std::string& path, base::Notifications* notifications);
    void parseText(std::string text);
    void copyInto(ALETable& clone, bool keepSharedStuff) const;

private:
    void readClipLines();
    void repointRows(ALETable* from);

    bool m_ownsRows = true;
    std::shared_ptr<TextStore> m_textStore = std::make_shared<TextStore>();
};

} // namespace lumbra::tables
