#pragma once

#include <string>
#include <string_view>

namespace lumbra::base {

// The order of text everywhere in the program: by Unicode scalar value after canonical (NFC)
// normalisation, case-sensitive, digits without numeric order.
[[nodiscard]] int compareText(std::string_view a, std::string_view b);
[[nodiscard]] inline bool textLess(std::string_view a, std::string_view b) {
    return compareText(a, b) < 0;
}

// The NFC form, or the text itself when it is already normalised (ASCII always is).
// Byte order of two such keys is the text order, so sorters compute keys once.
[[nodiscard]] std::string sortKey(std::string_view text);
// True when the text is NFC already and can serve as its own sort key.
[[nodiscard]] bool isSortKey(std::string_view text);

// The order in which people read names, for lists a person orders: letters before their case, numbers by
// value ("day2" before "Day10"). Byte order of two keys is that order.
[[nodiscard]] std::string readingKey(std::string_view text);
[[nodiscard]] bool readingLess(std::string_view a, std::string_view b);

} // namespace lumbra::base
