#include "db/db_column_tools.h"

#include "base/saveable.h"
#include "base/text_helpers.h"
#include "import/csv_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <unicode/utf8.h>
#include <unordered_map>

namespace lumbra::db {

namespace {

constexpr std::string_view digestAlphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVZ0123456789";
static_assert(digestAlphabet.size() == 59);

// One character of UTF-8 text: its code and its bytes. A byte that begins no character stands for itself.
struct Character {
    char32_t code;
    std::string_view bytes;
};

Character characterAt(std::string_view text, std::size_t at) {
    std::int32_t length = 0;
    UChar32 code = 0;
    U8_NEXT(text.data() + at, length,
            static_cast<std::int32_t>(std::min<std::size_t>(text.size() - at, U8_MAX_LENGTH)), code);
    if (code < 0)
        return {static_cast<unsigned char>(text[at]), text.substr(at, 1)};
    return {static_cast<char32_t>(code), text.substr(at, static_cast<std::size_t>(length))};
}

std::vector<Character> characters(std::string_view text) {
    std::vector<Character> out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        Character c = characterAt(text, at);
        at += c.bytes.size();
        out.push_back(c);
    }
    return out;
}

// Marks that join the character before them into one character as the user sees it.
bool joinsPrevious(char32_t code) {
    return (code >= 0x300 && code <= 0x36F) || (code >= 0xFE00 && code <= 0xFE0F) || code == 0x200D ||
           (code >= 0x1F3FB && code <= 0x1F3FF) || (code >= 0xE0100 && code <= 0xE01EF);
}

// The code of each character as the user sees it; absent for one made of several scalars.
std::vector<std::optional<char32_t>> visibleCharacters(std::string_view text) {
    std::vector<std::optional<char32_t>> out;
    bool joinNext = false;
    for (const Character& c : characters(text)) {
        if (!out.empty() && (joinNext || joinsPrevious(c.code)))
            out.back() = std::nullopt;
        else
            out.emplace_back(c.code);
        joinNext = c.code == 0x200D;
    }
    return out;
}

std::string uniqueColumn(const tables::DBTable& table, std::string name) {
    while (table.hasColumn(name))
        name += '_';
    return name;
}

// A new column right behind `after`, filled from the values of `source`; its name.
template <typename Derive>
std::string insertDerivedColumn(tables::DBTable& table, const std::string& after, const std::string& source,
                                const std::string& name, Derive derive) {
    std::string added = uniqueColumn(table, name);
    table.cols.insert(std::find(table.cols.begin(), table.cols.end(), after) + 1, added);
    const tables::ColumnKey from = tables::ColumnNames::key(source);
    const tables::ColumnKey to = tables::ColumnNames::key(added);
    for (auto& entry : table.data)
        entry.data.set(to, derive(entry.data.valueOr(from)));
    table.modified = base::nowSeconds();
    table.hasChanged = true;
    return added;
}

} // namespace

std::string lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    if (path == "/")
        return "/";
    auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string deletingLastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    auto slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return "";
    if (slash == 0)
        return "/";
    return std::string(path.substr(0, slash));
}

std::string pathExtension(std::string_view path) {
    std::string name = lastPathComponent(path);
    auto dot = name.rfind('.');
    // A name that starts with its only dot is a hidden file, not an extension.
    if (dot == std::string::npos || dot == 0)
        return "";
    return name.substr(dot + 1);
}

std::string deletingPathExtension(std::string_view path) {
    std::string extension = pathExtension(path);
    if (extension.empty())
        return std::string(path);
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path.substr(0, path.size() - extension.size() - 1));
}

std::string suppressedSequence(std::string_view value) {
    std::string extension = pathExtension(value);
    const bool counts = !extension.empty() && std::all_of(extension.begin(), extension.end(),
                                                          [](char c) { return c >= '0' && c <= 'z'; });
    const std::string stem = counts ? deletingPathExtension(value) : std::string(value);
    std::size_t end = stem.size();
    while (end > 0 && stem[end - 1] >= '0' && stem[end - 1] <= '9')
        --end;
    if (end == 0 || (stem[end - 1] != '_' && stem[end - 1] != '.'))
        return std::string(value);
    return stem.substr(0, end - 1) + (counts ? "." + extension : std::string());
}

std::string combine(std::string_view a, std::string_view b) {
    auto left = visibleCharacters(a);
    auto right = visibleCharacters(b);
    const std::size_t length = std::max(left.size(), right.size());
    std::string out;
    out.reserve(length);
    for (std::size_t p = 0; p < length; ++p) {
        std::uint64_t x = p < left.size() && left[p] ? *left[p] + 1ULL : 1ULL;
        std::uint64_t y = p < right.size() && right[p] ? *right[p] : 0ULL;
        out += import::utf8Character(static_cast<char32_t>((x + y) % 255));
    }
    return out;
}

// FNV-1a over the character's bytes: cheap, and it spreads neighbouring codes over the alphabet.
std::string digest(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        Character c = characterAt(text, at);
        at += c.bytes.size();
        std::uint32_t hash = 2166136261U;
        for (char byte : c.bytes)
            hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
        out += digestAlphabet[hash % digestAlphabet.size()];
    }
    return out;
}

std::string formatFloat(float value) {
    char buffer[64];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, error == std::errc() ? end : buffer);
    if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::vector<std::string> inferPath(tables::DBTable& table, const std::string& column) {
    if (!table.hasColumn(column))
        return {};
    std::string filename = insertDerivedColumn(
        table, column, column, "filename", [](std::string_view value) { return lastPathComponent(value); });
    std::string path = insertDerivedColumn(table, filename, column, "path", [](std::string_view value) {
        return deletingLastPathComponent(value);
    });
    return {filename, path};
}

std::optional<std::string> trimExtension(tables::DBTable& table, const std::string& column) {
    if (!table.hasColumn(column))
        return std::nullopt;
    return insertDerivedColumn(table, column, column, column + "_noext",
                               [](std::string_view value) { return deletingPathExtension(value); });
}

std::optional<std::string> suppressSequence(tables::DBTable& table, const std::string& column) {
    if (!table.hasColumn(column))
        return std::nullopt;
    return insertDerivedColumn(table, column, column, column + "_noseq",
                               [](std::string_view value) { return suppressedSequence(value); });
}

bool groupBy(tables::DBTable& table, const std::string& column) {
    if (!table.hasColumn(column))
        return false;
    const tables::ColumnKey keyColumn = tables::ColumnNames::key(column);
    std::vector<tables::ColumnKey> others;
    for (const auto& name : table.cols) {
        if (name != column)
            others.push_back(tables::ColumnNames::key(name));
    }
    // The rows of each key in order: the first row of a key takes the others, from the last one back,
    // as a walk over every pair of rows would, in one pass.
    std::unordered_map<std::string_view, std::size_t> groupOfKey;
    std::vector<std::vector<std::size_t>> groups;
    groupOfKey.reserve(table.data.size());
    for (std::size_t i = 0; i < table.data.size(); ++i) {
        auto [it, added] = groupOfKey.try_emplace(table.data[i].data.valueOr(keyColumn), groups.size());
        if (added)
            groups.emplace_back();
        groups[it->second].push_back(i);
    }
    std::vector<bool> removed(table.data.size(), false);
    bool any = false;
    for (const auto& rows : groups) {
        if (rows.size() < 2)
            continue;
        any = true;
        tables::RowData& kept = table.data[rows.front()].data;
        std::vector<std::string> merged;
        merged.reserve(others.size());
        for (tables::ColumnKey c : others)
            merged.emplace_back(kept.valueOr(c));
        std::vector<bool> changed(others.size(), false);
        for (auto j = rows.rbegin(); j + 1 != rows.rend(); ++j) {
            const tables::RowData& row = table.data[*j].data;
            for (std::size_t c = 0; c < others.size(); ++c) {
                std::string_view b = row.valueOr(others[c]);
                auto x = base::parseFloat(merged[c]);
                auto y = base::parseFloat(b);
                if (x && y) {
                    merged[c] = formatFloat(*x + *y);
                    changed[c] = true;
                } else {
                    merged[c] = combine(merged[c], b);
                    changed[c] = changed[c] || b != kept.valueOr(others[c]);
                }
            }
            removed[*j] = true;
        }
        for (std::size_t c = 0; c < others.size(); ++c) {
            if (changed[c])
                kept.set(others[c], base::parseFloat(merged[c]) ? std::move(merged[c]) : digest(merged[c]));
        }
    }
    if (!any)
        return true;
    std::size_t next = 0;
    for (std::size_t i = 0; i < table.data.size(); ++i) {
        if (!removed[i]) {
            if (next != i)
                table.data[next] = std::move(table.data[i]);
            ++next;
        }
    }
    table.data.resize(next);
    table.modified = base::nowSeconds();
    table.hasChanged = true;
    return true;
}

} // namespace lumbra::db
