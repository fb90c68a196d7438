#include "tables/ale_table.h"

#include "base/console.h"
#include "base/text_helpers.h"
#include "tables/ale_sorter.h"

#include <algorithm>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>

namespace lumbra::tables {

ALETable::ALETable() = default;

ALETable::~ALETable() = default;

ALETable::ALETable(ALETable&& other) noexcept
    : field_delim(std::move(other.field_delim)), video_format(std::move(other.video_format)),
      fps(std::move(other.fps)), audio_format(std::move(other.audio_format)),
      film_format(std::move(other.film_format)), tape(std::move(other.tape)), bin(other.bin),
      cols(std::move(other.cols)), data(std::move(other.data)), tablename(std::move(other.tablename)),
      state(other.state), valueEscapes(other.valueEscapes), m_ownsRows(other.m_ownsRows),
      m_textStore(std::move(other.m_textStore)) {
    repointRows(&other);
}

ALETable& ALETable::operator=(ALETable&& other) noexcept {
    if (this == &other)
        return *this;
    field_delim = std::move(other.field_delim);
    video_format = std::move(other.video_format);
    fps = std::move(other.fps);
    audio_format = std::move(other.audio_format);
    film_format = std::move(other.film_format);
    tape = std::move(other.tape);
    bin = other.bin;
    cols = std::move(other.cols);
    data = std::move(other.data);
    tablename = std::move(other.tablename);
    state = other.state;
    valueEscapes = other.valueEscapes;
    m_ownsRows = other.m_ownsRows;
    m_textStore = std::move(other.m_textStore);
    repointRows(&other);
    return *this;
}

void ALETable::repointRows(ALETable* from) {
    for (auto& row : data) {
        if (row->table == from)
            row->table = this;
    }
}

void ALETable::copyInto(ALETable& clone, bool keepSharedStuff) const {
    clone.field_delim = field_delim;
    clone.video_format = video_format;
    clone.fps = fps;
    clone.audio_format = audio_format;
    clone.film_format = film_format;
    clone.tape = tape;
    clone.cols = cols;
    clone.state = state;
    clone.valueEscapes = valueEscapes;
    clone.tablename = tablename + "_cl";
    clone.m_textStore = m_textStore;
    clone.data.reserve(data.size());
    for (const auto& row : data) {
        auto c = row->copy(keepSharedStuff);
        c->table = &clone;
        clone.data.push_back(std::move(c));
    }
}

std::unique_ptr<ALETable> ALETable::copy(bool keepSharedStuff) const {
    auto clone = std::make_unique<ALETable>();
    copyInto(*clone, keepSharedStuff);
    return clone;
}

bool ALETable::hasColumn(std::string_view name) const {
    return columnIndex(name) >= 0;
}

long ALETable::columnIndex(std::string_view name) const {
    auto it = std::find(cols.begin(), cols.end(), name);
    return it == cols.end() ? -1 : static_cast<long>(it - cols.begin());
}

void ALETable::appendEntry(EntryPtr entry) {
    entry->table = m_ownsRows ? this : nullptr;
    data.push_back(std::move(entry));
}

EntryPtr ALETable::findEntry(const RowData& criteria) const {
    for (const auto& row : data) {
        if (matches(*row, criteria))
            return row;
    }
    return nullptr;
}

std::vector<EntryPtr> ALETable::findEntries(const RowData& criteria) const {
    std::vector<EntryPtr> out;
    for (const auto& row : data) {
        if (matches(*row, criteria))
            out.push_back(row);
    }
    return out;
}

void ALETable::removeEntry(const ALEEntry* entry) {
    auto it = std::find_if(data.begin(), data.end(), [entry](const EntryPtr& r) { return r.get() == entry; });
    if (it != data.end())
        data.erase(it);
}

std::optional<std::vector<std::string>>
ALETable::rowValues(long index, const std::optional<std::vector<std::string>>& columns) const {
    if (index < 0 || index >= static_cast<long>(data.size()))
        return std::nullopt;
    const auto& names = columns ? *columns : cols;
    const RowData& row = data[static_cast<std::size_t>(index)]->data();
    std::vector<std::string> out;
    out.reserve(names.size());
    for (const auto& c : names)
        out.emplace_back(row.valueOr(c));
    return out;
}

bool ALETable::deleteColumn(const std::string& name) {
    long i = columnIndex(name);
    if (i < 0)
        return false;
    cols.erase(cols.begin() + i);
    const ColumnKey key = ColumnNames::key(name);
    for (auto& row : data) {
        if (row->data().find(key))
            row->edit([&](RowData& d) { d.erase(key); });
    }
    return true;
}

bool ALETable::swapColumns(long i, long j) {
    auto n = static_cast<long>(cols.size());
    if (i < 0 || j < 0 || i >= n || j >= n)
        return false;
    std::swap(cols[static_cast<std::size_t>(i)], cols[static_cast<std::size_t>(j)]);
    return true;
}

bool ALETable::swapColumns(const std::string& a, const std::string& b) {
    long i = columnIndex(a);
    long j = columnIndex(b);
    if (i < 0 || j < 0)
        return false;
    return swapColumns(i, j);
}

std::optional<long> ALETable::moveColumn(long from, long to) {
    auto n = static_cast<long>(cols.size());
    if (from < 0 || from >= n) {
        base::printLine("ERROR: index out of bound: " + std::to_string(from));
        return std::nullopt;
    }
    long at = from;
    while (at < to && at + 1 < n) {
        swapColumns(at, at + 1);
        ++at;
    }
    while (at > to && at > 0) {
        swapColumns(at, at - 1);
        --at;
    }
    return at;
}

std::optional<long> ALETable::moveColumn(const std::string& name, long to) {
    long i = columnIndex(name);
    if (i < 0)
        return std::nullopt;
    return moveColumn(i, to);
}

std::optional<std::pair<std::string, std::string>> ALETable::renameColumn(const std::string& oldName,
                                                                          const std::string& newName) {
    long i = columnIndex(oldName);
    if (i < 0) {
        base::printLine("ERROR: " + oldName + " is not a column of this ALEtable " + tablename);
        return std::nullopt;
    }
    if (oldName == newName)
        return std::pair{oldName, newName};
    if (hasColumn(newName)) {
        base::printLine("ERROR: there is another column named " + newName);
        return std::nullopt;
    }
    cols[static_cast<std::size_t>(i)] = newName;
    const ColumnKey from = ColumnNames::key(oldName);
    const ColumnKey to = ColumnNames::key(newName);
    // Two writes, as a person would make them: the value under the new name, then the old name gone. The
    // value's text stays where it is.
    for (auto& row : data) {
        auto v = row->data().find(from);
        if (!v)
            continue;
        row->edit([&](RowData& d) { d.setStored(to, *v); });
        row->edit([&](RowData& d) { d.erase(from); });
    }
    return std::pair{oldName, newName};
}

int ALETable::updateEntry(const RowData& incoming, const std::vector<std::string>& ids,
                          const std::map<std::string, std::string>& columnMap,
                          const std::map<std::string, bool>& priorities) {
    if (priorities.size() != incoming.size()) {
        base::printLine(
            "ERROR: cannot update entry as the priorities array has a number of entries different from the "
            "number of columns");
        return -1;
    }
    auto target = [&](const std::string& name) -> const std::string& {
        auto it = columnMap.find(name);
        return it == columnMap.end() ? name : it->second;
    };
    RowData criteria;
    for (const auto& id : ids) {
        const std::string& tableSide = target(id);
        std::string incomingName = id;
        for (const auto& [from, to] : columnMap) {
            if (to == id)
                incomingName = from;
        }
        if (auto v = incoming.find(incomingName))
            criteria.set(tableSide, *v);
        else
            criteria.erase(tableSide);
    }
    int result = 1;
    EntryPtr row = findEntry(criteria);
    if (!row) {
        row = std::make_shared<ALEEntry>(RowData(m_textStore));
        appendEntry(row);
        result = 2;
    }
    for (const auto& cell : incoming) {
        const std::string& col = ColumnNames::name(cell.key);
        const std::string& to = target(col);
        auto priority = priorities.find(col);
        // A priorities map without this key counts as "keep what the row has".
        bool overwrite = priority != priorities.end() && priority->second;
        if (row->data().contains(to) && !overwrite)
            continue;
        row->setValue(to, cell.value());
    }
    return result;
}

void ALETable::sortEntries(const std::string& column, bool ascending) {
    if (!hasColumn(column))
        return;
    ALESorter sorter(data, {column}, ascending);
    sorter.sort();
    data = sorter.sortedRows();
}

bool ALETable::columnIsConstant(const std::string& name) const {
    if (!hasColumn(name))
        return false;
    if (data.empty())
        return true;
    std::string_view first = data.front()->data().valueOr(name);
    return std::all_of(data.begin(), data.end(),
                       [&](const EntryPtr& row) { return row->data().valueOr(name) == first; });
}

bool ALETable::definesId(const std::vector<std::string>& fields, bool allowMissing) const {
    std::size_t real = 0;
    for (const auto& f : fields) {
        if (hasColumn(f))
            ++real;
        else if (!allowMissing)
            return false;
    }
    if (real == 0)
        return false;
    ALESorter sorter(data, fields, true);
    sorter.sort();
    for (std::size_t i = 0; i + 1 < data.size(); ++i) {
        if (sorter.compareAt(i, i + 1) == 0)
            return false;
    }
    return true;
}

bool ALETable::remapColumns(const std::map<std::string, std::string>& mapping) {
    std::map<std::string, std::string> working = mapping;
    for (const auto& c : cols)
        working.emplace(c, c);
    std::unordered_map<std::string, std::string> byTarget;
    for (const auto& [from, to] : working) {
        auto [it, fresh] = byTarget.emplace(to, from);
        if (!fresh) {
            base::printLine("ERROR: trying to remap both '" + it->second + "' and '" + from + "' to '" + to +
                            "'. Remapping cancelled.");
            return false;
        }
    }
    for (auto& row : data) {
        // The values stay where they are in the store; only the keys change.
        RowData d(row->data().store());
        for (const auto& [from, to] : working) {
            if (auto v = row->data().find(from))
                d.setStored(ColumnNames::key(to), *v);
        }
        row->setData(std::move(d));
    }
    for (auto& c : cols) {
        auto it = working.find(c);
        if (it != working.end())
            c = it->second;
    }
    return true;
}

ALECompareResult ALETable::compare(const ALETable& other, const std::vector<std::string>& ids) const {
    ALECompareResult result;
    const std::pair<const char*, const std::optional<std::string> ALETable::*> headings[] = {
        {"field_delim", &ALETable::field_delim},
        {"video_format", &ALETable::video_format},
        {"fps", &ALETable::fps},
        {"audio_format", &ALETable::audio_format},
        {"film_format", &ALETable::film_format}};
    for (const auto& [name, field] : headings) {
        if (this->*field != other.*field)
            result.conflicts.emplace_back(name);
    }
    // The first row here that holds every id key, by the joined id values.
    auto joined = [&](const RowData& row, std::string& out) {
        out.clear();
        for (const auto& id : ids) {
            auto v = row.find(id);
            if (!v)
                return false;
            out += std::to_string(v->size());
            out += ':';
            out += *v;
        }
        return true;
    };
    std::unordered_set<std::string> firstRows;
    std::string key;
    for (const auto& row : data) {
        if (joined(row->data(), key))
            firstRows.insert(key);
    }
    for (const auto& row : other.data) {
        // A row of the other table that lacks an id key matches none here.
        bool found = joined(row->data(), key) && firstRows.count(key) > 0;
        (found ? result.found_entries : result.new_entries).push_back(row);
    }
    for (const auto& c : cols) {
        if (!other.hasColumn(c))
            result.columns_missing.push_back(c);
    }
    for (const auto& c : other.cols) {
        if (!hasColumn(c))
            result.columns_new.push_back(c);
    }
    return result;
}

bool ALETable::canDeriveTimecodes(const std::string& a, const std::string& b, const std::string& c) const {
    auto rate = fps ? base::parseDecimal(*fps) : std::nullopt;
    if (!rate || *rate < 1.0)
        return false;
    for (const auto& row : data) {
        int usable = 0;
        for (const auto* name : {&a, &b, &c}) {
            auto v = row->data().find(*name);
            if (v && base::parseTimecode(*v))
                ++usable;
        }
        if (usable < 2)
            return false;
    }
    return true;
}

std::vector<long> ALETable::duplicateRows(const std::string& column) const {
    std::vector<long> out;
    if (!hasColumn(column))
        return out;
    ALESorter sorter(data, {column}, true);
    sorter.sort();
    const auto& idxs = sorter.idxs();
    std::unordered_set<std::string_view> seen;
    std::size_t n = idxs.size();
    for (std::size_t i = 0; i < n;) {
        std::string_view v = sorter.keyAt(0, i);
        if (seen.count(v)) {
            out.push_back(idxs[i]);
            i += 1;
        } else if (i + 1 < n && sorter.keyAt(0, i + 1) == v) {
            seen.insert(v);
            out.push_back(idxs[i]);
            out.push_back(idxs[i + 1]);
            i += 2;
        } else {
            i += 1;
        }
    }
    return out;
}

void ALETable::addNumberedColumn() {
    char name[32];
    for (int n = 1;; ++n) {
        std::snprintf(name, sizeof name, "newcol_%03d", n);
        if (!hasColumn(name)) {
            cols.emplace_back(name);
            return;
        }
    }
}

} // namespace lumbra::tables
