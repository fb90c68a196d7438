#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::base {

// Character lists are given as UTF-8 text whose every character is one member of the list.

// Drops characters from the start while they are in the list; nothing left gives "".
[[nodiscard]] std::string trimLeft(std::string_view text, std::string_view characters);
// Drops characters from the end while they are in the list.
[[nodiscard]] std::string trimRight(std::string_view text, std::string_view characters);
// Splits on the first separator (later ones stand for it); double quotes group and are dropped.
// Never empty: an empty text gives one empty token.
[[nodiscard]] std::vector<std::string> tokenise(std::string_view text, std::string_view separators);

// Full Unicode case mapping, with a fast path for ASCII.
[[nodiscard]] std::string lowercased(std::string_view text);
[[nodiscard]] std::string uppercased(std::string_view text);

// The number of characters (code points) of UTF-8 text.
[[nodiscard]] std::size_t characterCount(std::string_view text) noexcept;
// The text less its last n characters (code points); shorter texts give "".
[[nodiscard]] std::string dropLastCharacters(std::string_view text, std::size_t n);

// A value as a delimited text file carries it: in double quotes when it holds a line feed or the
// separator outside straight and curly quotes; inner quotes stay as they are.
[[nodiscard]] std::string quotifyField(std::string_view value, std::string_view separator);
// A value as standard CSV writes it, so that it reads back as it is: in double quotes with each inner quote
// doubled when it holds the separator, a double quote, a line feed or a carriage return; else as it stands.
[[nodiscard]] std::string standardCsvField(std::string_view value, std::string_view separator);

[[nodiscard]] bool isAscii(std::string_view text) noexcept;
// True when the bytes are well-formed UTF-8.
[[nodiscard]] bool isValidUtf8(std::string_view text) noexcept;

// "HH:MM:SS:FF" split on ":": the first four parts must be decimal integers.
struct Timecode {
    long long H = 0;
    long long M = 0;
    long long S = 0;
    long long F = 0;
    bool operator==(const Timecode&) const = default;
};
[[nodiscard]] std::optional<Timecode> parseTimecode(std::string_view text);

// A whole decimal integer with an optional sign, nothing around it; absent on overflow.
[[nodiscard]] std::optional<long long> parseInteger(std::string_view text) noexcept;
// A decimal number ("25", "23.976", "-1e2"), nothing around it; "nan" and "inf" are none.
[[nodiscard]] std::optional<double> parseDecimal(std::string_view text) noexcept;
// The same as a 32-bit number holds it; absent beyond its range.
[[nodiscard]] std::optional<float> parseFloat(std::string_view text) noexcept;

} // namespace lumbra::base
