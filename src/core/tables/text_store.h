#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::tables {

// The text of a table's cells in a few large chunks that never move or shrink, so that every view it
// hands out stays valid as long as the store lives. Rows share their table's store by shared pointer;
// an edit appends the new value and leaves the old bytes where they are. All use is from one thread.
class TextStore {
public:
    TextStore() = default;
    TextStore(const TextStore&) = delete;
    TextStore& operator=(const TextStore&) = delete;

    // Keeps `text` whole, as a reader's decoded file, so that cells can be views into it.
    std::string_view adopt(std::string text);
    // A copy of `text` that lasts as long as the store.
    std::string_view append(std::string_view text);

private:
    std::vector<std::unique_ptr<std::string>> m_adopted;
    std::vector<std::unique_ptr<char[]>> m_chunks;
    char* m_free = nullptr;
    std::size_t m_freeBytes = 0;
    std::size_t m_lastChunkBytes = 0;
};

} // namespace lumbra::tables
