#pragma once

#include "base/csv_layout.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lumbra::import {

using base::CsvOptions;
using base::FirstLineStyle;

// One character as UTF-8.
[[nodiscard]] std::string utf8Character(char32_t character);
// The first character of UTF-8 text; absent for "" and for a stray byte.
[[nodiscard]] std::optional<char32_t> firstCharacter(std::string_view text) noexcept;
// The last character of UTF-8 text (the one typed last into a field); absent as above.
[[nodiscard]] std::optional<char32_t> lastCharacter(std::string_view text) noexcept;

// The rules of the options sheet, apart from its widgets.
namespace sheet {

// Tags of the separator list: 0 ",", 1 tab, 2 ";", 3 blank, 4 the first character of the text field.
inline constexpr int otherSeparatorTag = 4;
// The separator of a tag; for otherSeparatorTag, the field's first character, "," when it is empty.
[[nodiscard]] char32_t separatorForTag(int tag, std::string_view otherText) noexcept;
// The tag that shows a separator: otherSeparatorTag for any but the four listed.
[[nodiscard]] int tagForSeparator(char32_t separator) noexcept;
// What the "other" field keeps of an entry: "," for an empty one, else its last typed character.
[[nodiscard]] std::string separatorFieldText(std::string_view typed);

// Tag 1 is the single quote; every other tag the double quote.
[[nodiscard]] char32_t delimiterForTag(int tag) noexcept;
[[nodiscard]] int tagForDelimiter(char32_t delimiter) noexcept;
// The third entry of the delimiter list: standard CSV.
inline constexpr int standardCsvTag = 2;
// The entry of the delimiter list that shows the options, and the options as an entry states them.
[[nodiscard]] int delimiterTag(const CsvOptions& options) noexcept;
void setDelimiterTag(CsvOptions& options, int tag) noexcept;

// The number of the custom first line: not a number, empty, or below 1 gives 1.
[[nodiscard]] int firstLineNumberFromText(std::string_view text) noexcept;

// Texts shorter than this (in characters) have no preview slider: the whole text is shown.
inline constexpr std::size_t sliderMinimumLength = 10000;
[[nodiscard]] bool sliderApplies(std::string_view text) noexcept;
// The part of the text the preview parses at a slider value: 1, 2 and 3 a quarter, a half and three
// quarters of it, at most 20,000, 100,000 and 300,000 characters, then on to the next line feed
// (kept out) so that no row is cut in half; any other value, and a short text, the whole text.
[[nodiscard]] std::string_view shortenedText(std::string_view text, int sliderValue) noexcept;

} // namespace sheet

} // namespace lumbra::import
