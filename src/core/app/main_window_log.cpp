#include "app/main_window_log.h"

#include <cstdio>

namespace lumbra::app {

std::string defaultNotificationTitle(base::NotificationType kind) {
    switch (kind) {
    case base::NotificationType::OK:
        return "Operation executed";
    case base::NotificationType::WARNING:
        return "Warning";
    default:
        return "Operation not executed";
    }
}

const std::string& MainWindowLog::add(const std::string& text, const std::tm& now) {
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "%02d:%02d:%02d - ", now.tm_hour, now.tm_min, now.tm_sec);
    m_lines.push_front(prefix + text);
    if (m_lines.size() >= trimAt) {
        m_lines.erase(m_lines.end() - static_cast<std::ptrdiff_t>(trimCount), m_lines.end());
        m_lines.insert(m_lines.begin() + 1, trimMarker);
    }
    return m_lines.front();
}

const std::string& MainWindowLog::add(const std::string& text) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return add(text, local);
}

std::string MainWindowLog::text() const {
    std::size_t size = 0;
    for (const auto& line : m_lines)
        size += line.size() + 1;
    std::string joined;
    joined.reserve(size);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (i > 0)
            joined += '\n';
        joined += m_lines[i];
    }
    return joined;
}

base::NotificationData logNotification(const std::string& text, const std::string& title,
                                       base::NotificationType kind) {
    return {title.empty() ? defaultNotificationTitle(kind) : title, text, kind};
}

} // namespace lumbra::app
