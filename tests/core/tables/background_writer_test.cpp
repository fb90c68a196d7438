#include "base/text_file.h"
#include "table_test_support.h"
#include "tables/background_writer.h"

#include <future>
#include <gtest/gtest.h>
#include <mutex>

namespace lumbra::tables {
namespace {

using testing::fileBytes;
using testing::TempDir;

// The first write holds the writer's thread while the test asks for more: a path still waiting gets only its
// latest text, every write happens on the writer's thread, and a refused file reaches the failure handler.
TEST(BackgroundWriter, WritesOnItsOwnThreadAndTheLatestTextWins) {
    TempDir dir;
    std::mutex mutex;
    std::vector<std::pair<std::string, std::thread::id>> writes;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    base::setWriteFailureHook([&](const std::string& path) {
        std::size_t count = 0;
        {
            std::lock_guard lock(mutex);
            writes.emplace_back(std::filesystem::path(path).filename().string(), std::this_thread::get_id());
            count = writes.size();
        }
        if (count == 1)
            released.wait();
        return path.ends_with("refused.txt");
    });
    std::vector<std::string> failures;
    {
        BackgroundWriter writer([&](const std::string& path) { failures.push_back(path); });
        writer.write(dir.file("a.txt"), "first");
        for (bool started = false; !started; std::this_thread::yield()) {
            std::lock_guard lock(mutex);
            started = !writes.empty();
        }
        writer.write(dir.file("a.txt"), "second");
        writer.write(dir.file("b.txt"), "other");
        writer.write(dir.file("a.txt"), "third");
        writer.write(dir.file("refused.txt"), "never");
        release.set_value();
        writer.waitIdle();
        EXPECT_EQ(fileBytes(dir.file("a.txt")), "third");
        EXPECT_EQ(fileBytes(dir.file("b.txt")), "other");
        EXPECT_FALSE(std::filesystem::exists(dir.file("refused.txt")));
        EXPECT_EQ(failures, std::vector<std::string>{dir.file("refused.txt")});
    }
    base::setWriteFailureHook({});
    const std::vector<std::string> order{"a.txt", "a.txt", "b.txt", "refused.txt"};
    ASSERT_EQ(writes.size(), order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(writes[i].first, order[i]);
        EXPECT_NE(writes[i].second, std::this_thread::get_id());
    }
}

} // namespace
} // namespace lumbra::tables
