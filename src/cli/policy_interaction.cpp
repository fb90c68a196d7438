#include "policy_interaction.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace lumbra::cli {

const char* kindName(base::NotificationType kind) {
    switch (kind) {
    case base::NotificationType::OK:
        return "OK";
    case base::NotificationType::WARNING:
        return "WARNING";
    case base::NotificationType::KO:
        return "KO";
    }
    return "KO";
}

namespace {

// A notification logged without a title takes the one of its kind, as in the main window's log.
std::string shownTitle(const base::NotificationData& notification) {
    if (!notification.title.empty())
        return notification.title;
    switch (notification.type) {
    case base::NotificationType::OK:
        return "Operation executed";
    case base::NotificationType::WARNING:
        return "Warning";
    case base::NotificationType::KO:
        break;
    }
    return "Operation not executed";
}

// The invitation a window card ends with; on a terminal nothing can be clicked, so it is left out.
std::string_view printedBody(std::string_view body) {
    constexpr std::string_view clickHint = " Click here to view/correct";
    if (body.ends_with(clickHint))
        body.remove_suffix(clickHint.size());
    return body;
}

} // namespace

void PolicyInteraction::stop(const std::string& title, const std::string& text) {
    std::cout.flush();
    std::cerr << "Question: " << title << ": " << text << "\n"
              << "Answer it with --yes or --no; nothing was changed.\n";
    std::cerr.flush();
    std::exit(exitQuestion);
}

base::AlertAnswer PolicyInteraction::alert(const base::AlertRequest& request) {
    // A message with one button asks nothing: it is told, and goes on.
    if (request.buttons.size() <= 1) {
        std::cout << request.title << ": " << request.text << '\n';
        return {};
    }
    if (m_policy == AnswerPolicy::ask)
        stop(request.title, request.text);
    int button = m_policy == AnswerPolicy::affirm ? 0 : static_cast<int>(request.buttons.size()) - 1;
    std::cout << request.title << ": " << request.text << " -> " << request.buttons[button] << '\n';
    return {button, false};
}

std::optional<std::string> PolicyInteraction::askText(const base::TextRequest& request) {
    if (m_policy == AnswerPolicy::ask)
        stop(request.title, request.text);
    if (m_policy == AnswerPolicy::cancel)
        return std::nullopt;
    return request.defaultValue;
}

std::optional<std::filesystem::path> PolicyInteraction::chooseFolder(const base::FolderRequest& request) {
    if (m_policy == AnswerPolicy::ask)
        stop(request.title, "a folder must be chosen");
    // A command line has no folder to offer: the choice is cancelled.
    return std::nullopt;
}

base::CsvOptions PolicyInteraction::askCsvOptions(const std::string&, const base::CsvOptions& initial) {
    // The layout is stated before the run with its own flags, and the defaults fit most files: a
    // missing flag is no reason to stop as an unanswered question does.
    return m_csvFlags.applyTo(initial);
} // namespace lumbra::cli

void PolicyInteraction::addLog(const std::string& text, bool notify, const std::string& title,
                               base::NotificationType kind) {
    std::cout << text << '\n';
    if (notify)
        this->notify({{title, text, kind}});
}

void PolicyInteraction::notify(const base::Notifications& notifications) {
    for (const auto& notification : notifications)
        std::cout << '[' << kindName(notification.type) << "] " << shownTitle(notification) << ": "
                  << printedBody(notification.body) << '\n';
}

} // namespace lumbra::cli
