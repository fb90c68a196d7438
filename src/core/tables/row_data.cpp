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
        set(k, v);
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

std::optional<std::string_view> RowData::find(ColumnKey key) const {
    auto it = lowerBound(key);
    if (it != m_cells.end() && it->key == key)
        return it->value();
    return std::nullopt;
}

std::optional<std::string_view> RowData::find(std::string_view column) const {
    auto key = ColumnNames::find(column);
    return key ? find(*key) : std::nullopt;
}

std::string_view RowData::valueOr(std::string_view column) const {
    return find(column).value_or(std::string_view());
}

std::string_view RowData::valueOr(ColumnKey key) const {
    return find(key).value_or(std::string_view());
}

std::string_view RowData::stored(std::string_view value) {
    if (!m_store)
        m_store = std::make_shared<TextStore>();
    return m_store->append(value);
}

void RowData::set(ColumnKey key, std::string_view value) {
    setStored(key, stored(value));
}

void RowData::setStored(ColumnKey key, std::string_view storedText) {
    Cell cell{storedText.data(), static_cast<std::uint32_t>(storedText.size()), key};
    auto it = lowerBound(key);
    if (it != m_cells.end() && it->key == key)
        *it = cell;
    else
        m_cells.insert(it, cell);
}

void RowData::set(std::string_view column, std::string_view value) {
    set(ColumnNames::key(column), value);
}

bool RowData::erase(ColumnKey key) {
    auto it = lowerBound(key);
    if (it == m_cells.end() || it->key != key)
        return false;
    m_cells.erase(it);
    return true;
}

bool RowData::erase(std::string_view column) {
    auto key = ColumnNames::find(column);
    return key && erase(*key);
}

void RowData::appendUnordered(ColumnKey key, std::string_view value) {
    std::string_view text = stored(value);
    m_cells.push_back({text.data(), static_cast<std::uint32_t>(text.size()), key});
}

void RowData::finishAppending() {
    auto byKey = [](const Cell& a, const Cell& b) { return a.key < b.key; };
    if (!std::is_sorted(m_cells.begin(), m_cells.end(), byKey))
        std::sort(m_cells.begin(), m_cells.end(), byKey);
}

RowData RowData::movedTo(const std::shared_ptr<TextStore>& store) && {
    if (!store || store == m_store)
        return std::move(*this);
    RowData out(store);
    out.m_cells = std::move(m_cells);
    for (auto& cell : out.m_cells) {
        std::string_view text = store->append(cell.value());
        cell.text = text.data();
    }
    return out;
}

std::map<std::string, std::string> RowData::toMap() const {
    std::map<std::string, std::string> out;
    for (const auto& c : m_cells)
        out.emplace(ColumnNames::name(c.key), c.value());
    return out;
}

bool RowData::operator==(const RowData& other) const {
    return std::equal(m_cells.begin(), m_cells.end(), other.m_cells.begin(), other.m_cells.end(),
                      [](const Cell& a, const Cell& b) { return a.key == b.key && a.value() == b.value(); });
}

} // namespace lumbra::tables
