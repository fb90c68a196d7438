#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "tables/ale_table.h"

#include <algorithm>
#include <filesystem>

namespace lumbra::tables {

namespace {

std::vector<ColumnKey> keysOf(const std::vector<std::string>& names) {
    std::vector<ColumnKey> keys;
    keys.reserve(names.size());
    for (const auto& n : names)
        keys.push_back(ColumnNames::key(n));
    return keys;
}

// The characters that would cut a value of an ALE file or lose it to the reader's quote handling.
constexpr std::string_view unkeptCharacters = "\n\r\t\"";

// How a value goes into a row: as it is, quoted as standard CSV, or with the escapes of a bin's own file.
enum class ValueForm { plain, csvQuoted, escaped };

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

void appendRow(std::string& out, const RowData& row, const std::vector<ColumnKey>& keys, std::string_view sep,
               ValueForm form = ValueForm::plain) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (i > 0)
            out.append(sep);
        if (auto v = row.find(keys[i]))
            appendValue(out, *v, form, sep);
    }
}

void appendJoined(std::string& out, const std::vector<std::string>& names, std::string_view sep,
                  ValueForm form = ValueForm::plain) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            out.append(sep);
        appendValue(out, names[i], form, sep);
    }
}

// Only a table with such a value needs the escapes: every other file stays plain ALE.
bool needsEscapes(const std::vector<EntryPtr>& rows, const std::vector<std::string>& names) {
    auto unkept = [](std::string_view text) {
        return text.find_first_of(unkeptCharacters) != std::string_view::npos;
    };
    if (std::any_of(names.begin(), names.end(), unkept))
        return true;
    for (const auto& row : rows) {
        for (const auto& cell : row->data()) {
            if (unkept(cell.value()))
                return true;
        }
    }
    return false;
}

std::size_t estimateSize(const std::vector<EntryPtr>& rows, std::size_t columns) {
    std::size_t total = 256;
    for (std::size_t i = 0; i < rows.size() && i < 64; ++i) {
        for (const auto& c : rows[i]->data())
            total += c.size;
    }
    if (!rows.empty())
        total = total * rows.size() / std::min<std::size_t>(rows.size(), 64) + rows.size() * (columns + 1);
    return total;
}

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

bool saveText(const std::string& path, const base::TextProducer& produce, const std::string& folderMessage,
              std::string* reason) {
    if (!makeParentFolder(path, folderMessage, reason))
        return false;
    if (!base::writeFileAtomically(path, produce))
        return refuse("ERROR while saving file " + path, reason);
    return true;
}

// Rows go to the sink in parts of about this size, so a large table is never held as one text as well.
constexpr std::size_t partBytes = std::size_t(1) << 20;

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

bool writeAleText(const ALETable& table, const base::TextSink& sink, const std::vector<std::string>& columns,
                  bool omitFilmFormat, bool escapeValues) {
    const auto& names = columns.empty() ? table.cols : columns;
    auto keys = keysOf(names);
    const bool escaped = escapeValues && needsEscapes(table.data, names);
    std::string out;
    out += "Heading\n";
    if (table.field_delim)
        out += "FIELD_DELIM\t" + *table.field_delim + "\n";
    if (table.video_format)
        out += "VIDEO_FORMAT\t" + *table.video_format + "\n";
    if (table.fps)
        out += "FPS\t" + *table.fps + "\n";
    if (table.audio_format)
        out += "AUDIO_FORMAT\t" + *table.audio_format + "\n";
    if (table.film_format && !omitFilmFormat)
        out += "FILM_FORMAT\t" + *table.film_format + "\n";
    if (table.tape && !table.tape->empty())
        out += "TAPE\t" + *table.tape + "\n";
    if (escaped)
        out += std::string(valueEscapesKey) + "\tBACKSLASH\n";
    out += "\nColumn\n";
    appendJoined(out, names, "\t", escaped ? ValueForm::escaped : ValueForm::plain);
    out += "\n\nData";
    for (const auto& row : table.data) {
        out += '\n';
        appendRow(out, row->data(), keys, "\t", escaped ? ValueForm::escaped : ValueForm::plain);
        if (!passFullPart(out, sink))
            return false;
    }
    out += '\n';
    return sink(out);
}

bool writeCsvText(const ALETable& table, const base::TextSink& sink, const std::string& sep,
                  bool withMetadata, const std::vector<std::string>& columns, bool omitFilmFormat) {
    const auto& names = columns.empty() ? table.cols : columns;
    auto keys = keysOf(names);
    std::string out;
    // Values are quoted as standard CSV, so that a separator or line feed inside one reads back in place.
    auto field = [&](const std::string& value) { return base::standardCsvField(value, sep); };
    if (withMetadata) {
        out += "Metadata\n";
        if (table.video_format)
            out += "VIDEO_FORMAT" + sep + field(*table.video_format) + "\n";
        if (table.fps)
            out += "FPS" + sep + field(*table.fps) + "\n";
        if (table.audio_format)
            out += "AUDIO_FORMAT" + sep + field(*table.audio_format) + "\n";
        if (table.film_format && !omitFilmFormat)
            out += "FILM_FORMAT" + sep + field(*table.film_format) + "\n";
        if (table.tape && !table.tape->empty())
            out += "TAPE" + sep + field(*table.tape) + "\n";
        out += "Column\n";
    }
    appendJoined(out, names, sep, ValueForm::csvQuoted);
    out += '\n';
    for (const auto& row : table.data) {
        out += '\n';
        appendRow(out, row->data(), keys, sep, ValueForm::csvQuoted);
        if (!passFullPart(out, sink))
            return false;
    }
    return sink(out);
}

} // namespace

std::string ALETable::aleText(const std::vector<std::string>& columns, bool omitFilmFormat,
                              bool escapeValues) const {
    std::string out;
    out.reserve(estimateSize(data, (columns.empty() ? cols : columns).size()));
    writeAleText(*this, appendingTo(out), columns, omitFilmFormat, escapeValues);
    return out;
}

std::string ALETable::csvText(const std::string& sep, bool withMetadata,
                              const std::vector<std::string>& columns, bool omitFilmFormat) const {
    std::string out;
    out.reserve(estimateSize(data, (columns.empty() ? cols : columns).size()));
    writeCsvText(*this, appendingTo(out), sep, withMetadata, columns, omitFilmFormat);
    return out;
}

bool ALETable::saveALE(const std::string& path, const std::vector<std::string>& columns, bool overwrite,
                       bool omitFilmFormat, std::string* reason, bool escapeValues) const {
    if (refusedOverwrite(path, overwrite, reason))
        return false;
    return saveText(
        path,
        [&](const base::TextSink& sink) {
            return writeAleText(*this, sink, columns, omitFilmFormat, escapeValues);
        },
        "ERROR: couldn't create directory ", reason);
}

bool ALETable::saveCSV(const std::string& path, const std::string& sep, bool withMetadata,
                       const std::vector<std::string>& columns, bool overwrite, bool omitFilmFormat,
                       std::string* reason) const {
    if (refusedOverwrite(path, overwrite, reason))
        return false;
    return saveText(
        path,
        [&](const base::TextSink& sink) {
            return writeCsvText(*this, sink, sep, withMetadata, columns, omitFilmFormat);
        },
        "ERROR: couldn't crete directory ", reason);
}

} // namespace lumbra::tables
