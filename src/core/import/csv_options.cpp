#include "import/csv_options.h"

#include "base/text_helpers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <unicode/utf8.h>

namespace lumbra::import {

namespace {

bool isContinuation(char byte) noexcept {
    return U8_IS_TRAIL(static_cast<unsigned char>(byte));
}

// The character that starts at the front of the bytes, with its length; absent for a malformed sequence.
std::optional<char32_t> decodeAt(std::string_view text, std::size_t& length) noexcept {
    if (text.empty())
        return std::nullopt;
    std::int32_t end = 0;
    UChar32 c = 0;
    U8_NEXT(text.data(), end, static_cast<std::int32_t>(std::min<std::size_t>(text.size(), U8_MAX_LENGTH)),
            c);
    if (c < 0)
        return std::nullopt;
    length = static_cast<std::size_t>(end);
    return static_cast<char32_t>(c);
}

// Byte offset of the character numbered `count` (from 0), or the size when the text is shorter.
std::size_t offsetOfCharacter(std::string_view text, std::size_t count) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isContinuation(text[i])) {
            if (count == 0)
                return i;
            --count;
        }
    }
    return text.size();
}

constexpr std::array<char32_t, 4> listedSeparators{U',', U'\t', U';', U' '};

} // namespace

std::string utf8Character(char32_t c) {
    char bytes[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, c);
    return {bytes, static_cast<std::size_t>(length)};
}

std::optional<char32_t> firstCharacter(std::string_view text) noexcept {
    std::size_t length = 0;
    return decodeAt(text, length);
}

std::optional<char32_t> lastCharacter(std::string_view text) noexcept {
    if (text.empty())
        return std::nullopt;
    std::size_t start = text.size() - 1;
    while (start > 0 && text.size() - start < 4 && isContinuation(text[start]))
        --start;
    std::size_t length = 0;
    auto c = decodeAt(text.substr(start), length);
    if (!c || start + length != text.size())
        return std::nullopt;
    return c;
}

namespace sheet {

char32_t separatorForTag(int tag, std::string_view otherText) noexcept {
    if (tag >= 0 && tag < static_cast<int>(listedSeparators.size()))
        return listedSeparators[static_cast<std::size_t>(tag)];
    return firstCharacter(otherText).value_or(U',');
}

int tagForSeparator(char32_t separator) noexcept {
    auto it = std::find(listedSeparators.begin(), listedSeparators.end(), separator);
    return it == listedSeparators.end() ? otherSeparatorTag : static_cast<int>(it - listedSeparators.begin());
}

std::string separatorFieldText(std::string_view typed) {
    if (typed.empty())
        return ",";
    auto last = lastCharacter(typed);
    return last ? utf8Character(*last) : std::string(",");
}

char32_t delimiterForTag(int tag) noexcept {
    return tag == 1 ? U'\'' : U'"';
}

int tagForDelimiter(char32_t delimiter) noexcept {
    return delimiter == U'\'' ? 1 : 0;
}

int delimiterTag(const CsvOptions& options) noexcept {
    return options.standard_csv ? standardCsvTag : tagForDelimiter(options.delimiter);
}

void setDelimiterTag(CsvOptions& options, int tag) noexcept {
    options.standard_csv = tag == standardCsvTag;
    options.delimiter = delimiterForTag(tag);
}

int firstLineNumberFromText(std::string_view text) noexcept {
    auto number = base::parseInteger(text);
    if (!number || *number < 1)
        return 1;
    return static_cast<int>(std::min<long long>(*number, std::numeric_limits<int>::max()));
}

bool sliderApplies(std::string_view text) noexcept {
    // Bytes are never fewer than characters: most short texts need no count.
    return text.size() >= sliderMinimumLength && base::characterCount(text) >= sliderMinimumLength;
}

std::string_view shortenedText(std::string_view text, int sliderValue) noexcept {
    if (!sliderApplies(text))
        return text;
    const std::size_t length = base::characterCount(text);
    std::size_t characters = 0;
    switch (sliderValue) {
    case 1:
        characters = std::min<std::size_t>(length / 4, 20000);
        break;
    case 2:
        characters = std::min<std::size_t>(length * 2 / 4, 100000);
        break;
    case 3:
        characters = std::min<std::size_t>(length * 3 / 4, 300000);
        break;
    default:
        return text;
    }
    std::size_t cut = text.find('\n', offsetOfCharacter(text, characters));
    return cut == std::string_view::npos ? text : text.substr(0, cut);
}

} // namespace sheet

} // namespace lumbra::import
