#pragma once

#include <map>
#include <string>
#include <vector>

namespace lumbra::base {

// The level of a notification, also the kind of a log line.
enum class NotificationType { OK = 0, WARNING = 1, KO = 2 };

// One message for the user: load and save operations append these to an optional list.
struct NotificationData {
    std::string title;
    std::string body;
    NotificationType type = NotificationType::OK;
    std::map<std::string, std::string> links{{"", ""}};
    bool hasLinks = false;

    NotificationData() = default;
    NotificationData(std::string title, std::string body, NotificationType type)
        : title(std::move(title)), body(std::move(body)), type(type) {}
    NotificationData(std::string title, std::string body, NotificationType type,
                     std::map<std::string, std::string> links)
        : title(std::move(title)), body(std::move(body)), type(type), links(std::move(links)),
          hasLinks(true) {}

    bool operator==(const NotificationData&) const = default;
};

using Notifications = std::vector<NotificationData>;

} // namespace lumbra::base
