#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
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

// The map of one row, column name to value, kept as a vector ordered by key.
// A missing key and an empty value read the same to callers that ask with valueOr.
class RowData {
public:
    struct Cell {
        ColumnKey key;
        std::string value;
        bool operator==(const Cell&) const = default;
    };

    RowData() = default;
    RowData(std::initializer_list<std::pair<std::string_view, std::string_view>> cells);
    [[nodiscard]] static RowData fromMap(const std::map<std::string, std::string>& map);

    [[nodiscard]] const std::string* find(std::string_view column) const;
    [[nodiscard]] const std::string* find(ColumnKey key) const;
    [[nodiscard]] bool contains(std::string_view column) const { return find(column) != nullptr; }
    // The value, or "" when the key is missing.
    [[nodiscard]] const std::string& valueOr(std::string_view column) const;
    [[nodiscard]] const std::string& valueOr(ColumnKey key) const;

    void set(std::string_view column, std::string value);
    void set(ColumnKey key, std::string value);
    // Returns whether the key was there.
    bool erase(std::string_view column);

    // For builders that add keys in any order and sort once; keys must be distinct.
    void appendUnordered(ColumnKey key, std::string value) { m_cells.push_back({key, std::move(value)}); }
    void finishAppending();

    [[nodiscard]] std::size_t size() const noexcept { return m_cells.size(); }
    [[nodiscard]] bool empty() const noexcept { return m_cells.empty(); }
    void reserve(std::size_t n) { m_cells.reserve(n); }
    [[nodiscard]] auto begin() const noexcept { return m_cells.begin(); }
    [[nodiscard]] auto end() const noexcept { return m_cells.end(); }

    [[nodiscard]] std::map<std::string, std::string> toMap() const;

    bool operator==(const RowData&) const = default;

private:
    std::vector<Cell>::iterator lowerBound(ColumnKey key);
    std::vector<Cell>::const_iterator lowerBound(ColumnKey key) const;

    std::vector<Cell> m_cells;
};

} // namespace lumbra::tables
