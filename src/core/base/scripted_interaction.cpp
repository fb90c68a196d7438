#include "base/scripted_interaction.h"

#include <algorithm>

namespace lumbra::base {

AlertAnswer ScriptedInteraction::alert(const AlertRequest& request) {
    m_alerts.push_back(request);
    const int buttonCount = std::max<int>(1, static_cast<int>(request.buttons.size()));
    const AlertAnswer cancelling{buttonCount - 1, false};
    if (m_alertAnswers.empty()) {
        ++m_unexpected;
        return cancelling;
    }
    const QueuedAlert queued = m_alertAnswers.front();
    m_alertAnswers.pop_front();
    int button = queued.button;
    if (button < 0) {
        const auto found = std::find(request.buttons.begin(), request.buttons.end(), queued.title);
        button = found == request.buttons.end() ? -1 : static_cast<int>(found - request.buttons.begin());
    }
    if (button < 0 || button >= buttonCount) {
        ++m_unexpected;
        return cancelling;
    }
    return {button, request.showApplyToAll && queued.applyToAll};
}

std::optional<std::string> ScriptedInteraction::askText(const TextRequest& request) {
    m_textRequests.push_back(request);
    if (m_textAnswers.empty()) {
        ++m_unexpected;
        return std::nullopt;
    }
    std::optional<std::string> answer = std::move(m_textAnswers.front());
    m_textAnswers.pop_front();
    return answer;
}

std::optional<std::filesystem::path> ScriptedInteraction::chooseFolder(const FolderRequest& request) {
    m_folderRequests.push_back(request);
    if (m_folderAnswers.empty()) {
        ++m_unexpected;
        return std::nullopt;
    }
    std::optional<std::filesystem::path> answer = std::move(m_folderAnswers.front());
    m_folderAnswers.pop_front();
    return answer;
}

CsvOptions ScriptedInteraction::askCsvOptions(const std::string& text, const CsvOptions& initial) {
    m_csvRequests.emplace_back(text, initial);
    if (m_csvAnswers.empty()) {
        ++m_unexpected;
        CsvOptions cancelled = initial;
        cancelled.user_aborted = true;
        return cancelled;
    }
    CsvOptions answer = m_csvAnswers.front();
    m_csvAnswers.pop_front();
    return answer;
}

void ScriptedInteraction::addLog(const std::string& text, bool notify, const std::string& title,
                                 base::NotificationType kind) {
    m_logLines.push_back({text, notify, title, kind});
}

void ScriptedInteraction::notify(const base::Notifications& notifications) {
    m_notifications.insert(m_notifications.end(), notifications.begin(), notifications.end());
}

} // namespace lumbra::base
