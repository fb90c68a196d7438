#include "tables/text_store.h"

#include <algorithm>
#include <cstring>

namespace lumbra::tables {

namespace {

// A free-standing row starts small; a table that is edited a lot soon appends into large chunks.
constexpr std::size_t firstChunkBytes = 64;
constexpr std::size_t largestChunkBytes = std::size_t{1} << 20;

} // namespace

std::string_view TextStore::adopt(std::string text) {
    return *m_adopted.emplace_back(std::make_unique<std::string>(std::move(text)));
}

std::string_view TextStore::append(std::string_view text) {
    if (text.empty())
        return {};
    if (text.size() > m_freeBytes) {
        std::size_t bytes = std::clamp(m_lastChunkBytes * 2, firstChunkBytes, largestChunkBytes);
        bytes = std::max(bytes, text.size());
        m_free = m_chunks.emplace_back(std::make_unique_for_overwrite<char[]>(bytes)).get();
        m_freeBytes = bytes;
        m_lastChunkBytes = bytes;
    }
    char* at = m_free;
    std::memcpy(at, text.data(), text.size());
    m_free += text.size();
    m_freeBytes -= text.size();
    return {at, text.size()};
}

} // namespace lumbra::tables
