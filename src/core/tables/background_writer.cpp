#include "tables/background_writer.h"

#include "base/text_file.h"

namespace lumbra::tables {

BackgroundWriter::BackgroundWriter(FailureHandler onFailure)
    : m_onFailure(std::move(onFailure)), m_thread([this] { run(); }) {
}

BackgroundWriter::~BackgroundWriter() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void BackgroundWriter::write(std::string path, std::string text) {
    {
        std::lock_guard lock(m_mutex);
        auto [place, added] = m_pending.try_emplace(path);
        place->second = std::move(text);
        if (added)
            m_order.push_back(std::move(path));
    }
    m_wake.notify_one();
}

void BackgroundWriter::waitIdle() {
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_order.empty() && !m_writing; });
}

void BackgroundWriter::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !m_order.empty(); });
        if (m_order.empty())
            return;
        std::string path = std::move(m_order.front());
        m_order.pop_front();
        auto pending = m_pending.find(path);
        std::string text = std::move(pending->second);
        m_pending.erase(pending);
        m_writing = true;
        lock.unlock();
        const bool written = base::writeFileAtomically(path, text);
        if (!written && m_onFailure)
            m_onFailure(path);
        lock.lock();
        m_writing = false;
        if (m_order.empty())
            m_idle.notify_all();
    }
}

} // namespace lumbra::tables
