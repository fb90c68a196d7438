#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>

namespace lumbra::tables {

// Writes files on a thread of its own, each whole or not at all (writeFileAtomically), one at a time, in the
// order their paths were first asked for. A newer text for a path still waiting replaces the older one.
class BackgroundWriter {
public:
    // Told of each path that could not be written; called on the writer's thread.
    using FailureHandler = std::function<void(const std::string& path)>;

    explicit BackgroundWriter(FailureHandler onFailure = {});
    // Writes what is still waiting, then ends the thread.
    ~BackgroundWriter();
    BackgroundWriter(const BackgroundWriter&) = delete;
    BackgroundWriter& operator=(const BackgroundWriter&) = delete;

    void write(std::string path, std::string text);
    // Returns once nothing is waiting and nothing is being written.
    void waitIdle();

private:
    void run();

    FailureHandler m_onFailure;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::deque<std::string> m_order;
    std::unordered_map<std::string, std::string> m_pending;
    bool m_writing = false;
    bool m_stopping = false;
    // Last, so that it starts once everything it reads stands.
    std::thread m_thread;
};

} // namespace lumbra::tables
