#include "import/standard_csv.h"

namespace lumbra::import {

namespace {

bool endsField(std::string_view text, std::size_t i, std::string_view separator) noexcept {
    return i == text.size() || text[i] == '\n' ||
           (!separator.empty() && text[i] == separator.front() && text.substr(i).starts_with(separator));
}

// One walk for both uses: the value is built only when asked for.
std::size_t scanField(std::string_view text, std::size_t from, std::string_view separator,
                      std::string* value) noexcept {
    if (from >= text.size() || text[from] != '"') {
        std::size_t i = from;
        while (!endsField(text, i, separator))
            ++i;
        if (value)
            value->assign(text.substr(from, i - from));
        return i;
    }
    if (value)
        value->clear();
    std::size_t i = from + 1;
    while (i < text.size()) {
        std::size_t quote = text.find('"', i);
        if (quote == std::string_view::npos)
            quote = text.size();
        if (value)
            value->append(text.substr(i, quote - i));
        if (quote == text.size() || endsField(text, quote + 1, separator))
            return quote == text.size() ? quote : quote + 1;
        // A doubled quote is one quote; a lone one inside the field stays as written.
        if (value)
            value->push_back('"');
        i = text[quote + 1] == '"' ? quote + 2 : quote + 1;
    }
    return text.size();
}

} // namespace

std::size_t readStandardField(std::string_view text, std::size_t from, std::string_view separator,
                              std::string& value) {
    return scanField(text, from, separator, &value);
}

std::size_t endOfStandardField(std::string_view text, std::size_t from, std::string_view separator) noexcept {
    return scanField(text, from, separator, nullptr);
}

std::size_t endOfStandardRecord(std::string_view text, std::size_t from,
                                std::string_view separator) noexcept {
    std::size_t end = endOfStandardField(text, from, separator);
    while (end < text.size() && text[end] != '\n')
        end = endOfStandardField(text, end + separator.size(), separator);
    return end;
}

} // namespace lumbra::import
