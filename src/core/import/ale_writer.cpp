#include "import/ale_writer.h"

#include "import/ale_keys.h"
#include "import/table_text.h"

#include <algorithm>

namespace lumbra::import {

using tables::ALETable;

namespace {

// The characters that would cut a value of an ALE file or lose it to the reader's quote handling.
constexpr std::string_view unkeptCharacters = "\n\r\t\"";

// Only a table with such a value needs the escapes: every other file stays plain ALE.
bool needsEscapes(const std::vector<tables::EntryPtr>& rows, const std::vector<std::string>& names) {
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

// What the ALE text is made of: the columns and their keys, the heading through "Data", and whether values
// carry the escapes of a bin's own file.
struct AleParts {
    const std::vector<std::string>& names;
    std::vector<tables::ColumnKey> keys;
    bool escaped;
    std::string head;
};

AleParts aleParts(const ALETable& table, const std::vector<std::string>& columns, bool omitFilmFormat,
                  bool escapeValues) {
    const auto& names = columns.empty() ? table.cols : columns;
    AleParts parts{names, keysOf(names), escapeValues && needsEscapes(table.data, names), {}};
    std::string& out = parts.head;
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
    if (parts.escaped)
        out += std::string(valueEscapesKey) + "\tBACKSLASH\n";
    out += "\nColumn\n";
    appendJoined(out, names, "\t", parts.escaped ? ValueForm::escaped : ValueForm::plain);
    out += "\n\nData";
    return parts;
}

bool writeAleText(const ALETable& table, const base::TextSink& sink, const AleParts& parts) {
    std::string out = parts.head;
    for (const auto& row : table.data) {
        out += '\n';
        appendRow(out, row->data(), parts.keys, "\t", parts.escaped ? ValueForm::escaped : ValueForm::plain);
        if (!passFullPart(out, sink))
            return false;
    }
    out += '\n';
    return sink(out);
}

// The length of the text writeAleText makes, counted from the cells without making it, so that a save
// makes the text once.
std::size_t aleTextSize(const ALETable& table, const AleParts& parts) {
    // How often each key is written: a column may be asked for twice.
    std::vector<std::size_t> uses;
    for (tables::ColumnKey key : parts.keys) {
        uses.resize(std::max<std::size_t>(uses.size(), key + 1));
        ++uses[key];
    }
    const std::size_t separators = parts.keys.empty() ? 0 : parts.keys.size() - 1;
    std::size_t size = parts.head.size() + 1 + table.data.size() * (1 + separators);
    for (const auto& row : table.data) {
        for (const auto& cell : row->data()) {
            if (cell.key >= uses.size() || uses[cell.key] == 0)
                continue;
            std::size_t length = cell.size;
            if (parts.escaped)
                length += std::count_if(cell.value().begin(), cell.value().end(), [](char c) {
                    return c == '\\' || unkeptCharacters.find(c) != std::string_view::npos;
                });
            size += uses[cell.key] * length;
        }
    }
    return size;
}

} // namespace

std::string aleText(const ALETable& table, const std::vector<std::string>& columns, bool omitFilmFormat,
                    bool escapeValues) {
    const AleParts parts = aleParts(table, columns, omitFilmFormat, escapeValues);
    std::string out;
    out.reserve(aleTextSize(table, parts));
    writeAleText(table, appendingTo(out), parts);
    return out;
}

bool saveALE(const ALETable& table, const std::string& path, const std::vector<std::string>& columns,
             bool overwrite, bool omitFilmFormat, std::string* reason, bool escapeValues) {
    const AleParts parts = aleParts(table, columns, omitFilmFormat, escapeValues);
    return saveText(
        path, overwrite, [&](const base::TextSink& sink) { return writeAleText(table, sink, parts); },
        "ERROR: couldn't create directory ", reason, aleTextSize(table, parts));
}

} // namespace lumbra::import
