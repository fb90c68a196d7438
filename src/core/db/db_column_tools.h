#pragma once

#include "tables/db_table.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::db {

// The tools of a database's column header. Each adds its columns right behind the source column,
// named uniquely by appending "_" until no column has the name, and marks the table changed. A
// column that is not in the table changes nothing and gives no name.

// "filename" and "path": the value's last path component and what stands before it.
std::vector<std::string> inferPath(tables::DBTable& table, const std::string& column);
// `<column>_noext`: the value less its extension.
std::optional<std::string> trimExtension(tables::DBTable& table, const std::string& column);
// `<column>_noseq`: the value less the frame number before its extension (see suppressedSequence).
std::optional<std::string> suppressSequence(tables::DBTable& table, const std::string& column);
// Merges the rows that share the value of `column` into the first of them: numbers are summed,
// texts that differ become a code that stands for the set of values (see combine and digest).
// False when `column` is no column.
bool groupBy(tables::DBTable& table, const std::string& column);

// The path's last component; trailing "/" do not count, and "/" alone is its own last component.
[[nodiscard]] std::string lastPathComponent(std::string_view path);
// The path less its last component, as written ("" for a bare name, "/" for a name under the root).
[[nodiscard]] std::string deletingLastPathComponent(std::string_view path);
// The text after the last "." of the last component; "" when there is none or the name starts there.
[[nodiscard]] std::string pathExtension(std::string_view path);
// The path less "." and its extension; a path without one as it is.
[[nodiscard]] std::string deletingPathExtension(std::string_view path);
// "A001_0012.dpx" -> "A001.dpx", "clip.0012.dpx" -> "clip.dpx"; a value whose digits are not behind
// "_" or "." stands as it is.
[[nodiscard]] std::string suppressedSequence(std::string_view value);
// Character by character over the longer text: (code of a + 1) + code of b, modulo 255.
[[nodiscard]] std::string combine(std::string_view a, std::string_view b);
// One letter or digit per character, from a hash of the character.
[[nodiscard]] std::string digest(std::string_view text);
// The shortest text that reads back as the same single-precision number; whole numbers end in ".0".
[[nodiscard]] std::string formatFloat(float value);

} // namespace lumbra::db
