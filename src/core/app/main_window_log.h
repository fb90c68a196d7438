#pragma once

#include "base/notification.h"

#include <ctime>
#include <deque>
#include <string>

namespace lumbra::app {

// The title a notification of that kind gets when its sender gave none.
[[nodiscard]] std::string defaultNotificationTitle(base::NotificationType kind);

// The main window's log: lines with their time, newest first. Past 3000 lines the oldest 1000 go
// and a marker line says so.
class MainWindowLog {
public:
    static constexpr std::size_t trimAt = 3001;
    static constexpr std::size_t trimCount = 1000;
    static constexpr const char* trimMarker = "-- LONG LOG: TAIL CLEARED --";

    // Prefixes the time ("%02d:%02d:%02d - ") and puts the line on top; returns the stored line.
    const std::string& add(const std::string& text, const std::tm& now);
    // The same at the current local time.
    const std::string& add(const std::string& text);

    [[nodiscard]] const std::deque<std::string>& lines() const noexcept { return m_lines; }
    // Every line, newest first, joined by line feeds.
    [[nodiscard]] std::string text() const;

private:
    std::deque<std::string> m_lines;
};

// The notification a log line with notify makes: the title given, else the kind's default.
[[nodiscard]] base::NotificationData logNotification(const std::string& text, const std::string& title,
                                                     base::NotificationType kind);

} // namespace lumbra::app
