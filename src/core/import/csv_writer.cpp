#include "import/csv_writer.h"

#include "base/text_helpers.h"
#include "import/table_text.h"

namespace lumbra::import {

using tables::ALETable;

namespace {

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

std::string csvText(const ALETable& table, const std::string& sep, bool withMetadata,
                    const std::vector<std::string>& columns, bool omitFilmFormat) {
    std::string out;
    out.reserve(estimateSize(table.data, (columns.empty() ? table.cols : columns).size()));
    writeCsvText(table, appendingTo(out), sep, withMetadata, columns, omitFilmFormat);
    return out;
}

bool saveCSV(const ALETable& table, const std::string& path, const std::string& sep, bool withMetadata,
             const std::vector<std::string>& columns, bool overwrite, bool omitFilmFormat,
             std::string* reason) {
    return saveText(
        path, overwrite,
        [&](const base::TextSink& sink) {
            return writeCsvText(table, sink, sep, withMetadata, columns, omitFilmFormat);
        },
        "ERROR: couldn't crete directory ", reason);
}

} // namespace lumbra::import
