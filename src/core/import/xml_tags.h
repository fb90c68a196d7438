#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace lumbra::import {

// The colour and hash list readers scan for tags by name and never check the document: any text
// in which the tags stand reads, and comments or self-closed tags are tags like any other.

// Where one tag stands: `start` is the index of its "<", `end` the index behind its ">".
struct TagBounds {
    std::size_t start = 0;
    std::size_t end = 0;
    bool operator==(const TagBounds&) const = default;
};

// Blanks and tabs at the start skipped, the text must go on with "<"; the name is what follows up
// to the first blank, ">", tab or line feed. "" when the text does not open a tag.
[[nodiscard]] std::string_view tagName(std::string_view text) noexcept;

// The next tag from `from` whose name equals `name` exactly (case counts); absent at the end of
// the text. "/name" finds the closing tag.
[[nodiscard]] std::optional<TagBounds> nextTag(std::string_view text, std::string_view name,
                                               std::size_t from) noexcept;

} // namespace lumbra::import
