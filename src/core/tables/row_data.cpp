#include "tables/row_data.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

namespace lumbra::tables {

namespace {

struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const noexcept { return std::hash<std::string_view>{}(s); }
};

struct Register {
    std::deque<std::string> names;
    std::unordered_map<std::string_view, ColumnKey, NameHash, std::equal_to<>> keys;
};

Register& reg() {
    static Register r;
    return r;
}

const std::string emptyText;

} // namespace

ColumnKey ColumnNames::key(std::string_view name) {
    auto& r = reg();
    if (auto it = r.keys.find(name); it != r.keys.end())
        return it->second;
    auto key = static_cast<ColumnKey>(r.names.size());
    const std::string& stored = r.names.emplace_back(name);
    r.keys.emplace(std::string_view(stored), key);
    return key;
}

std::optional<ColumnKey> ColumnNames::find(std::string_view name) {
    auto& r = reg();
    if (auto it = r.keys.find(name); it != r.keys.end())
        return it->second;
    return std::nullopt;
}

const std::string& ColumnNames::name(ColumnKey key) {
    return reg().names.at(key);
}

RowData::RowData(std::initializer_list<std::pair<std::string_view, std::string_view>> cells) {
    for (const auto& [k, v] : cells)
        set(k, std::string(v));
}

RowData RowData::fromMap(const std::map<std::string, std::string>& map) {
    RowData row;
    row.reserve(map.size());
    for (const auto& [k, v] : map)
        row.appendUnordered(ColumnNames::key(k), v);
    row.finishAppending();
    return row;
}

std::vector<RowData::Cell>::iterator RowData::lowerBound(ColumnKey key) {
    return std::lower_bound(m_cells.begin(), m_cells.end(), key,
                            [](const Cell& c, ColumnKey k) { return c.key < k; });
}

std::vector<RowData::Cell>::const_iterator RowData::lowerBound(ColumnKey key) const {
    return std::lower_bound(m_cells.begin(), m_cells.end(), key,
                            [](const Cell& c, ColumnKey k) { return c.key < k; });
}

const std::string* RowData::find(ColumnKey key) const {
    auto it = lowerBound(key);
    return it != m_cells.end() && it->key == key ? &it->value : nullptr;
}

const std::string* RowData::find(std::string_view column) const {
    auto key = ColumnNames::find(column);
    return key ? find(*key) : nullptr;
}

const std::string& RowData::valueOr(std::string_view column) const {
    const std::string* v = find(column);
    return v ? *v : emptyText;
}

const std::string& RowData::valueOr(ColumnKey key) const {
    const std::string* v = find(key);
    return v ? *v : emptyText;
}

void RowData::set(ColumnKey key, std::string value) {
    auto it = lowerBound(key);
    if (it != m_cells.end() && it->key == key)
        it->value = std::move(value);
    else
        m_cells.insert(it, Cell{key, std::move(value)});
}

void RowData::set(std::string_view column, std::string value) {
    set(ColumnNames::key(column), std::move(value));
}

bool RowData::erase(std::string_view column) {
    auto key = ColumnNames::find(column);
    if (!key)
        return false;
    auto it = lowerBound(*key);
    if (it == m_cells.end() || it->key != *key)
        return false;
    m_cells.erase(it);
    return true;
}

void RowData::finishAppending() {
    if (!std::is_sorted(m_cells.begin(), m_cells.end(),
                        [](const Cell& a, const Cell& b) { return a.key < b.key; }))
        std::sort(m_cells.begin(), m_cells.end(), [](const Cell& a, const Cell& b) { return a.key < b.key; });
}

std::map<std::string, std::string> RowData::toMap() const {
    std::map<std::string, std::string> out;
    for (const auto& c : m_cells)
        out.emplace(ColumnNames::name(c.key), c.value);
    return out;
}

} // namespace lumbra::tables
