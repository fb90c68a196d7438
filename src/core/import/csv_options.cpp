#include "import/csv_options.h"

#include "base/text_helpers.h"

#include <algorithm>
#include <array>
#include <limits>

namespace lumbra::import {

namespace {

bool isContinuation(unsigned char byte) noexcept {
    return (byte & 0xC0) == 0x80;
}

// The character that starts at the front of the bytes, with its length; absent for a malformed sequence.
std::optional<char32_t> decodeAt(std::string_view text, std::size_t& length) noexcept {
    if (text.empty())
        return std::nullopt;
    auto lead = static_cast<unsigned char>(text[0]);
    std::size_t n = lead < 0x80             ? 1
                    : (lead & 0xE0) == 0xC0 ? 2
                    : (lead & 0xF0) == 0xE0 ? 3
                    : (lead & 0xF8) == 0xF0 ? 4
                                            : 0;
    if (n == 0 || n > text.size() || !base::isValidUtf8(text.substr(0, n)))
        return std::nullopt;
    char32_t c = n == 1 ? lead : lead & (0x7F >> n);
    for (std::size_t i = 1; i < n; ++i)
        c = (c << 6) | (static_cast<unsigned char>(text[i]) & 0x3F);
    length = n;
    return c;
}

// Byte offset of the character numbered `count` (from 0), or the size when the text is shorter.
std::size_t offsetOfCharacter(std::string_view text, std::size_t count) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isContinuation(static_cast<unsigned char>(text[i]))) {
            if (count == 0)
                return i;
            --count;
        }
    }
    return text.size();
}

std::size_t characterCount(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return !isContinuation(static_cast<unsigned char>(c)); }));
}

constexpr std::array<char32_t, 4> listedSeparators{U',', U'\t', U';', U' '};

} // namespace

std::string utf8Character(char32_t c) {
    std::string out;
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
    return out;
}

std::optional<char32_t> firstCharacter(std::string_view text) noexcept {
    std::size_t length = 0;
    return decodeAt(text, length);
}

std::optional<char32_t> lastCharacter(std::string_view text) noexcept {
    if (text.empty())
        return std::nullopt;
    std::size_t start = text.size() - 1;
    while (start > 0 && text.size() - start < 4 && isContinuation(static_cast<unsigned char>(text[start])))
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
    return text.size() >= sliderMinimumLength && characterCount(text) >= sliderMinimumLength;
}

std::string_view shortenedText(std::string_view text, int sliderValue) noexcept {
    if (!sliderApplies(text))
        return text;
    const std::size_t length = characterCount(text);
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
