#include "base/text_order.h"

#include "base/text_helpers.h"

#include <memory>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace lumbra::base {

namespace {

const icu::Normalizer2* nfc() {
    UErrorCode status = U_ZERO_ERROR;
    static const icu::Normalizer2* instance = icu::Normalizer2::getNFCInstance(status);
    return U_SUCCESS(status) ? instance : nullptr;
}

// The root locale's collator, numbers by value; its const calls are safe from any thread.
const icu::Collator* readingCollator() {
    static const std::unique_ptr<icu::Collator> instance = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> collator(
            icu::Collator::createInstance(icu::Locale::getRoot(), status));
        if (U_SUCCESS(status) && collator)
            collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        return U_SUCCESS(status) ? std::move(collator) : nullptr;
    }();
    return instance.get();
}

int byteCompare(std::string_view a, std::string_view b) {
    int c = a.compare(b);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

} // namespace

bool isSortKey(std::string_view text) {
    if (isAscii(text))
        return true;
    const auto* n = nfc();
    if (!n)
        return true;
    UErrorCode status = U_ZERO_ERROR;
    auto u = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    bool normalised = n->isNormalized(u, status);
    return U_FAILURE(status) || normalised;
}

std::string sortKey(std::string_view text) {
    if (isAscii(text))
        return std::string(text);
    const auto* n = nfc();
    if (!n)
        return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    auto u = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    icu::UnicodeString normalised = n->normalize(u, status);
    if (U_FAILURE(status))
        return std::string(text);
    std::string out;
    normalised.toUTF8String(out);
    return out;
}

int compareText(std::string_view a, std::string_view b) {
    // UTF-8 byte order is scalar-value order, so normalised texts compare as bytes.
    if (isSortKey(a) && isSortKey(b))
        return byteCompare(a, b);
    return byteCompare(sortKey(a), sortKey(b));
}

std::string readingKey(std::string_view text) {
    const icu::Collator* collator = readingCollator();
    if (!collator)
        return sortKey(text);
    auto u = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    std::string key(static_cast<std::size_t>(collator->getSortKey(u, nullptr, 0)), '\0');
    collator->getSortKey(u, reinterpret_cast<uint8_t*>(key.data()), static_cast<int32_t>(key.size()));
    return key;
}

bool readingLess(std::string_view a, std::string_view b) {
    return readingKey(a) < readingKey(b);
}

} // namespace lumbra::base
