#include "base/text_helpers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>
#include <utility>

namespace lumbra::base {

namespace {

std::vector<std::string_view> splitCharacters(std::string_view text) {
    std::vector<std::string_view> out;
    for (std::size_t i = 0; i < text.size();) {
        // The lead byte tells the length; a byte that leads nothing stands alone.
        const auto lead = static_cast<std::uint8_t>(text[i]);
        std::size_t n = std::min<std::size_t>(U8_COUNT_TRAIL_BYTES(lead) + 1, text.size() - i);
        out.push_back(text.substr(i, n));
        i += n;
    }
    return out;
}

bool startsWithAny(std::string_view text, const std::vector<std::string_view>& chars, std::size_t& length) {
    for (auto c : chars) {
        if (text.substr(0, c.size()) == c) {
            length = c.size();
            return true;
        }
    }
    return false;
}

bool endsWithAny(std::string_view text, const std::vector<std::string_view>& chars, std::size_t& length) {
    for (auto c : chars) {
        if (text.size() >= c.size() && text.substr(text.size() - c.size()) == c) {
            length = c.size();
            return true;
        }
    }
    return false;
}

std::string mapCase(std::string_view text, bool upper) {
    if (isAscii(text)) {
        std::string out(text);
        for (char& c : out) {
            if (upper && c >= 'a' && c <= 'z')
                c = static_cast<char>(c - 'a' + 'A');
            else if (!upper && c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        }
        return out;
    }
    icu::UnicodeString u =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    if (upper)
        u.toUpper(icu::Locale::getRoot());
    else
        u.toLower(icu::Locale::getRoot());
    std::string out;
    u.toUTF8String(out);
    return out;
}

} // namespace

std::string trimLeft(std::string_view text, std::string_view characters) {
    auto chars = splitCharacters(characters);
    std::size_t n = 0;
    while (!text.empty() && startsWithAny(text, chars, n))
        text.remove_prefix(n);
    return std::string(text);
}

std::string trimRight(std::string_view text, std::string_view characters) {
    auto chars = splitCharacters(characters);
    std::size_t n = 0;
    while (!text.empty() && endsWithAny(text, chars, n))
        text.remove_suffix(n);
    return std::string(text);
}

std::vector<std::string> tokenise(std::string_view text, std::string_view separators) {
    auto seps = splitCharacters(separators);
    std::string replaced;
    if (seps.size() >= 2) {
        replaced.reserve(text.size());
        std::size_t n = 0;
        std::vector<std::string_view> later(seps.begin() + 1, seps.end());
        for (std::size_t i = 0; i < text.size();) {
            if (startsWithAny(text.substr(i), later, n)) {
                replaced.append(seps.front());
                i += n;
            } else {
                replaced.push_back(text[i]);
                ++i;
            }
        }
        text = replaced;
    }
    std::string_view first = seps.empty() ? std::string_view() : seps.front();
    std::vector<std::string> tokens;
    std::string token;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size();) {
        char c = text[i];
        if (c == '"') {
            quoted = !quoted;
            ++i;
        } else if (!first.empty() && text.substr(i, first.size()) == first) {
            if (quoted)
                token.append(first);
            else
                tokens.push_back(std::exchange(token, std::string()));
            i += first.size();
        } else {
            token.push_back(c);
            ++i;
        }
    }
    tokens.push_back(std::move(token));
    return tokens;
}

std::string lowercased(std::string_view text) {
    return mapCase(text, false);
}

std::string uppercased(std::string_view text) {
    return mapCase(text, true);
}

std::size_t characterCount(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return !U8_IS_TRAIL(static_cast<unsigned char>(c)); }));
}

std::string dropLastCharacters(std::string_view text, std::size_t n) {
    std::size_t end = text.size();
    for (std::size_t dropped = 0; dropped < n; ++dropped) {
        if (end == 0)
            return {};
        --end;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end;
    }
    return std::string(text.substr(0, end));
}

bool isAscii(std::string_view text) noexcept {
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    }
    return true;
}

bool isValidUtf8(std::string_view text) noexcept {
    const auto* s = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t n = text.size();
    std::size_t i = 0;
    while (i < n) {
        // Eight ASCII bytes at a time: clip text is mostly ASCII.
        std::uint64_t block = 0;
        if (i + 8 <= n && (std::memcpy(&block, s + i, 8), (block & 0x8080808080808080ULL) == 0)) {
            i += 8;
            continue;
        }
        // One character at a time otherwise, within its longest length: ICU's indices are 32-bit.
        std::int32_t length = 0;
        UChar32 c = 0;
        U8_NEXT(s + i, length, static_cast<std::int32_t>(std::min<std::size_t>(n - i, U8_MAX_LENGTH)), c);
        if (c < 0)
            return false;
        i += static_cast<std::size_t>(length);
    }
    return true;
}

namespace {

// An optional "+", then the number to its last character; one sign only: "+-5" is no number.
template <typename Number> std::optional<Number> parseSignedNumber(std::string_view text) noexcept {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-')
            return std::nullopt;
    }
    if (text.empty() || text.front() == '+')
        return std::nullopt;
    Number value{};
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// "nan" and "inf" read as numbers but no rate, width or date is one, and a NaN breaks every comparison.
template <typename Number> std::optional<Number> finiteNumber(std::string_view text) noexcept {
    const std::optional<Number> value = parseSignedNumber<Number>(text);
    if (value && !std::isfinite(*value))
        return std::nullopt;
    return value;
}

} // namespace

std::optional<long long> parseInteger(std::string_view text) noexcept {
    return parseSignedNumber<long long>(text);
}

std::optional<double> parseDecimal(std::string_view text) noexcept {
    return finiteNumber<double>(text);
}

std::optional<float> parseFloat(std::string_view text) noexcept {
    return finiteNumber<float>(text);
}

std::optional<Timecode> parseTimecode(std::string_view text) {
    auto parts = tokenise(text, ":");
    if (parts.size() < 4)
        return std::nullopt;
    Timecode tc;
    long long* fields[] = {&tc.H, &tc.M, &tc.S, &tc.F};
    for (std::size_t i = 0; i < 4; ++i) {
        auto v = parseInteger(parts[i]);
        if (!v)
            return std::nullopt;
        *fields[i] = *v;
    }
    return tc;
}

std::string quotifyField(std::string_view value, std::string_view separator) {
    constexpr std::string_view openCurly = "\u201C";
    constexpr std::string_view closeCurly = "\u201D";
    bool inStraight = false;
    bool inCurly = false;
    bool marked = false;
    for (std::size_t i = 0; i < value.size() && !marked;) {
        std::string_view rest = value.substr(i);
        if (rest.front() == '"') {
            inStraight = !inStraight;
        } else if (rest.starts_with(openCurly)) {
            inCurly = true;
            i += openCurly.size();
            continue;
        } else if (rest.starts_with(closeCurly)) {
            inCurly = false;
            i += closeCurly.size();
            continue;
        } else if (!inStraight && !inCurly &&
                   (rest.front() == '\n' || (!separator.empty() && rest.starts_with(separator)))) {
            marked = true;
        }
        ++i;
    }
    if (!marked)
        return std::string(value);
    std::string out;
    out.reserve(value.size() + 2);
    out += '"';
    out += value;
    out += '"';
    return out;
}

std::string standardCsvField(std::string_view value, std::string_view separator) {
    const bool quoted = value.find_first_of("\"\n\r") != std::string_view::npos ||
                        (!separator.empty() && value.find(separator) != std::string_view::npos);
    if (!quoted)
        return std::string(value);
    std::string out;
    out.reserve(value.size() + 4);
    out += '"';
    for (char c : value) {
        if (c == '"')
            out += '"';
        out += c;
    }
    out += '"';
    return out;
}

} // namespace lumbra::base
