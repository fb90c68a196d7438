#include "import/table_text.h"

#include "base/console.h"
#include "base/text_helpers.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::import {

std::vector<tables::ColumnKey> keysOf(const std::vector<std::string>& names) {
    std::vector<tables::ColumnKey> keys;
    keys.reserve(names.size());
    for (const auto& n : names)
        keys.push_back(tables::ColumnNames::key(n));
    return keys;
}

void appendValue(std::string& out, std::string_view value, ValueForm form, std::string_view sep) {
    if (form == ValueForm::csvQuoted) {
        out.append(base::standardCsvField(value, sep));
        return;
    }
    if (form == ValueForm::plain) {
        out.append(value);
        return;
    }
    for (char c : value) {
        switch (c) {
        case '\\':
            out.append("\\\\");
            break;
        case '\n':
            out.append("\\n");
            break;
        case '\r':
            out.append("\\r");
            break;
        case '\t':
            out.append("\\t");
            break;
        case '"':
            out.append("\\q");
            break;
        default:
            out.push_back(c);
        }
    }
}

void appendRow(std::string& out, const tables::RowData& row, const std::vector<tables::ColumnKey>& keys,
               std::string_view sep, ValueForm form) {
    // A file's columns usually have rising keys, so one walk along the row's cells (kept in key order) finds
    // every value; a key below the last one starts the walk again.
    auto cell = row.begin();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i > 0) {
            out.append(sep);
            if (keys[i] < keys[i - 1])
                cell = row.begin();
        }
        while (cell != row.end() && cell->key < keys[i])
            ++cell;
        if (cell != row.end() && cell->key == keys[i])
            appendValue(out, cell->value(), form, sep);
    }
}

void appendJoined(std::string& out, const std::vector<std::string>& names, std::string_view sep,
                  ValueForm form) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            out.append(sep);
        appendValue(out, names[i], form, sep);
    }
}

std::size_t estimateSize(const std::vector<tables::EntryPtr>& rows, std::size_t columns) {
    std::size_t total = 256;
    for (std::size_t i = 0; i < rows.size() && i < 64; ++i) {
        for (const auto& c : rows[i]->data())
            total += c.size;
    }
    if (!rows.empty())
        total = total * rows.size() / std::min<std::size_t>(rows.size(), 64) + rows.size() * (columns + 1);
    return total;
}

namespace {

// Rows go to the sink in parts of about this size, so a large table is never held as one text as well.
constexpr std::size_t partBytes = std::size_t(1) << 20;

} // namespace

base::TextSink appendingTo(std::string& out) {
    return [&out](std::string_view part) {
        out.append(part);
        return true;
    };
}

bool passFullPart(std::string& out, const base::TextSink& sink) {
    if (out.size() < partBytes)
        return true;
    const bool ok = sink(out);
    out.clear();
    return ok;
}

namespace {

// Prints the writer's message and hands it to the caller that asked for it; false.
bool refuse(const std::string& message, std::string* reason) {
    base::printLine(message);
    if (reason)
        *reason = message;
    return false;
}

// Creates the folder of a path that names one; false (with the caller's message) on failure.
bool makeParentFolder(const std::string& path, const std::string& message, std::string* reason) {
    auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return true;
    std::string folder = path.substr(0, slash);
    if (folder.empty())
        return true;
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec || !std::filesystem::is_directory(folder, ec))
        return refuse(message + folder, reason);
    return true;
}

// Checked before the text is built, so a refused save costs nothing.
bool refusedOverwrite(const std::string& path, bool overwrite, std::string* reason) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec) || overwrite)
        return false;
    refuse("ERROR: file exists, but overwrite is set to false", reason);
    return true;
}

} // namespace

bool saveText(const std::string& path, bool overwrite, const base::TextProducer& produce,
              const std::string& folderMessage, std::string* reason, std::optional<std::size_t> size) {
    if (refusedOverwrite(path, overwrite, reason))
        return false;
    if (!makeParentFolder(path, folderMessage, reason))
        return false;
    if (!(size ? base::writeFileAtomically(path, *size, produce) : base::writeFileAtomically(path, produce)))
        return refuse("ERROR while saving file " + path, reason);
    return true;
}

} // namespace lumbra::import
