#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumbra::import {

// Fields of standard CSV: a field that begins with a double quote runs to the quote that stands before the
// separator, a line feed or the end, and a doubled quote inside it is one quote; any other field runs to the
// separator or the line feed, its quotes kept. Never fails: an unclosed quote runs to the end of the text.

// The field at `from` unquoted into `value`; the index of the separator, line feed or end that ends it.
std::size_t readStandardField(std::string_view text, std::size_t from, std::string_view separator,
                              std::string& value);
// The same without the value.
[[nodiscard]] std::size_t endOfStandardField(std::string_view text, std::size_t from,
                                             std::string_view separator) noexcept;
// The line feed that ends the record at `from` (line feeds inside quoted fields do not), or the end.
[[nodiscard]] std::size_t endOfStandardRecord(std::string_view text, std::size_t from,
                                              std::string_view separator) noexcept;

} // namespace lumbra::import
