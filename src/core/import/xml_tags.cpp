#include "import/xml_tags.h"

namespace lumbra::import {

namespace {

constexpr bool endsTagName(char c) noexcept {
    return c == ' ' || c == '>' || c == '\t' || c == '\n';
}

} // namespace

std::string_view tagName(std::string_view text) noexcept {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    if (i == text.size() || text[i] != '<')
        return {};
    std::size_t begin = ++i;
    while (i < text.size() && !endsTagName(text[i]))
        ++i;
    return text.substr(begin, i - begin);
}

std::optional<TagBounds> nextTag(std::string_view text, std::string_view name, std::size_t from) noexcept {
    std::optional<std::size_t> open;
    for (std::size_t i = from; i < text.size(); ++i) {
        if (text[i] == '<') {
            open = i;
        } else if (text[i] == '>' && open) {
            if (tagName(text.substr(*open, i - *open)) == name)
                return TagBounds{*open, i + 1};
            open.reset();
        }
    }
    return std::nullopt;
}

} // namespace lumbra::import
