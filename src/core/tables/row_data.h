#pragma once

#include "tables/text_store.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumbra::tables {

// A column name interned once per process; rows store keys, not copies of the names.
using ColumnKey = std::uint32_t;

// The process-wide register of column names. All use is from the main thread.
class ColumnNames {
public:
    [[nodiscard]] static ColumnKey key(std::string_view name);
    // Absent for a name no row has ever used.
    [[nodiscard]] static std::optional<ColumnKey> find(std::string_view name);
    [[nodiscard]] static const std::string& name(ColumnKey key);
};

// The map of one row, column name to value, kept as a vector ordered by key. The values are views into a
// TextStore that the row shares with its table (a free-standing row makes a small one of its own), so a
// copy of a row copies no text and a changed value is appended to the store.
// A missing key and an empty value read the same to callers that ask with valueOr.
class RowData {
public:
    struct Cell {
        const char* text;
        std::uint32_t size;
        ColumnKey key;
        [[nodiscard]] std::string_view value() const noexcept { return {text, size}; }
    };

    RowData() = default;
    // An empty row whose values will go to `store`.
    explicit RowData(std::shared_ptr<TextStore> store) : m_store(std::move(store)) {}
    RowData(std::initializer_list<std::pair<std::string_view, std::string_view>> cells);
    [[nodiscard]] static RowData fromMap(const std::map<std::string, std::string>& map);

    [[nodiscard]] std::optional<std::string_view> find(std::string_view column) const;
    [[nodiscard]] std::optional<std::string_view> find(ColumnKey key) const;
    [[nodiscard]] bool contains(std::string_view column) const { return find(column).has_value(); }
    // The value, or "" when the key is missing.
    [[nodiscard]] std::string_view valueOr(std::string_view column) const;
    [[nodiscard]] std::string_view valueOr(ColumnKey key) const;

    // Copies `value` into the row's store.
    void set(std::string_view column, std::string_view value);
    void set(ColumnKey key, std::string_view value);
    // The same for text that already lies in store(), which is not copied.
    void setStored(ColumnKey key, std::string_view storedText);
    // Returns whether the key was there.
    bool erase(std::string_view column);
    bool erase(ColumnKey key);

    // For builders that add keys in any order and sort once; keys must be distinct.
    void appendUnordered(ColumnKey key, std::string_view value);
    // The same for text that already lies in store() (a reader's adopted file), which is not copied.
    void appendStored(ColumnKey key, std::string_view storedText) {
        m_cells.push_back({storedText.data(), static_cast<std::uint32_t>(storedText.size()), key});
    }
    void finishAppending();

    [[nodiscard]] std::size_t size() const noexcept { return m_cells.size(); }
    [[nodiscard]] bool empty() const noexcept { return m_cells.empty(); }
    void reserve(std::size_t n) { m_cells.reserve(n); }
    [[nodiscard]] auto begin() const noexcept { return m_cells.begin(); }
    [[nodiscard]] auto end() const noexcept { return m_cells.end(); }

    // The store the values live in; made on the first value of a row that had none.
    [[nodiscard]] const std::shared_ptr<TextStore>& store() const noexcept { return m_store; }
    // This row's keys and values, with its text in `store` (values copied when it is another store).
    [[nodiscard]] RowData movedTo(const std::shared_ptr<TextStore>& store) &&;

    [[nodiscard]] std::map<std::string, std::string> toMap() const;

    // Same keys and values, wherever the text lies.
    bool operator==(const RowData& other) const;

private:
    std::vector<Cell>::iterator lowerBound(ColumnKey key);
    std::vector<Cell>::const_iterator lowerBound(ColumnKey key) const;
    std::string_view stored(std::string_view value);

    std::vector<Cell> m_cells;
    std::shared_ptr<TextStore> m_store;
};

} // namespace lumbra::tables
