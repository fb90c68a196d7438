#pragma once

#include "base/text_file.h"
#include "tables/ale_table.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::import {

// What the table writers share: values of rows in column order, the text passed on in parts, and the
// save of a text to a path.

// How a value goes into a row: as it is, quoted as standard CSV, or with the escapes of a bin's own file.
enum class ValueForm { plain, csvQuoted, escaped };

[[nodiscard]] std::vector<tables::ColumnKey> keysOf(const std::vector<std::string>& names);
void appendValue(std::string& out, std::string_view value, ValueForm form, std::string_view sep);
// The row's values under `keys`, `sep` between them; a missing value is empty.
void appendRow(std::string& out, const tables::RowData& row, const std::vector<tables::ColumnKey>& keys,
               std::string_view sep, ValueForm form = ValueForm::plain);
void appendJoined(std::string& out, const std::vector<std::string>& names, std::string_view sep,
                  ValueForm form = ValueForm::plain);

// About the size of the table's text, from its first rows, for one reservation.
[[nodiscard]] std::size_t estimateSize(const std::vector<tables::EntryPtr>& rows, std::size_t columns);

// A sink that appends every part to `out`.
[[nodiscard]] base::TextSink appendingTo(std::string& out);
// Hands `out` to the sink once it holds a part's worth, so a large table is never held as one text as
// well; false when the sink failed.
bool passFullPart(std::string& out, const base::TextSink& sink);

// Writes what `produce` makes to the path, making its folder first; a known `size` spares the producer
// a measuring run. False, with the message printed and put in `reason` when given, when the file exists
// and `overwrite` is off ("ERROR: file exists, but overwrite is set to false"), the folder cannot be made
// (`folderMessage` + folder) or the write fails.
bool saveText(const std::string& path, bool overwrite, const base::TextProducer& produce,
              const std::string& folderMessage, std::string* reason,
              std::optional<std::size_t> size = std::nullopt);

} // namespace lumbra::import
