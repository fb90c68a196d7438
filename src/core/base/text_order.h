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

} // namespace lumbra::base
