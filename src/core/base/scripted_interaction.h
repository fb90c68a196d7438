#pragma once

#include "base/user_interaction.h"

#include <deque>

namespace lumbra::base {

// A UserInteraction for tests: answers are queued in advance, every question is recorded.
// A question with no queued answer is counted as unexpected and gets the cancelling answer:
// the last button of an alert, an absent text or folder.
class ScriptedInteraction final : public UserInteraction {
public:
    struct LogLine {
        std::string text;
        bool notify = false;
        std::string title;
        base::NotificationType kind = base::NotificationType::OK;

        bool operator==(const LogLine&) const = default;
    };

    void queueAlert(int button, bool applyToAll = false) {
        m_alertAnswers.push_back({button, {}, applyToAll});
    }
    // Presses the button with this title; an alert without it counts as unexpected and is cancelled.
    void queueAlert(const std::string& buttonTitle, bool applyToAll = false) {
        m_alertAnswers.push_back({-1, buttonTitle, applyToAll});
    }
    void queueText(std::optional<std::string> answer) { m_textAnswers.push_back(std::move(answer)); }
    void queueFolder(std::optional<std::filesystem::path> answer) {
        m_folderAnswers.push_back(std::move(answer));
    }
    void queueCsvOptions(CsvOptions answer) { m_csvAnswers.push_back(answer); }

    AlertAnswer alert(const AlertRequest& request) override;
    std::optional<std::string> askText(const TextRequest& request) override;
    std::optional<std::filesystem::path> chooseFolder(const FolderRequest& request) override;
    void addLog(const std::string& text, bool notify, const std::string& title,
                base::NotificationType kind) override;
    void notify(const base::Notifications& notifications) override;
    // Unexpected without a queued answer, which cancels: user_aborted set.
    CsvOptions askCsvOptions(const std::string& text, const CsvOptions& initial) override;

    [[nodiscard]] const std::vector<AlertRequest>& alerts() const noexcept { return m_alerts; }
    [[nodiscard]] const std::vector<TextRequest>& textRequests() const noexcept { return m_textRequests; }
    [[nodiscard]] const std::vector<FolderRequest>& folderRequests() const noexcept {
        return m_folderRequests;
    }
    // The texts the options question was asked on, with the options it started from.
    [[nodiscard]] const std::vector<std::pair<std::string, CsvOptions>>& csvRequests() const noexcept {
        return m_csvRequests;
    }
    [[nodiscard]] const std::vector<LogLine>& logLines() const noexcept { return m_logLines; }
    [[nodiscard]] const base::Notifications& notifications() const noexcept { return m_notifications; }
    // Questions asked with no answer queued, and answers that named a button the alert did not have.
    [[nodiscard]] int unexpected() const noexcept { return m_unexpected; }
    // Answers queued but never asked for.
    [[nodiscard]] std::size_t pendingAnswers() const noexcept {
        return m_alertAnswers.size() + m_textAnswers.size() + m_folderAnswers.size() + m_csvAnswers.size();
    }

private:
    // A queued answer names its button by index, or by title when the index is negative.
    struct QueuedAlert {
        int button = 0;
        std::string title;
        bool applyToAll = false;
    };

    std::deque<QueuedAlert> m_alertAnswers;
    std::deque<std::optional<std::string>> m_textAnswers;
    std::deque<std::optional<std::filesystem::path>> m_folderAnswers;
    std::deque<CsvOptions> m_csvAnswers;
    std::vector<std::pair<std::string, CsvOptions>> m_csvRequests;
    std::vector<AlertRequest> m_alerts;
    std::vector<TextRequest> m_textRequests;
    std::vector<FolderRequest> m_folderRequests;
    std::vector<LogLine> m_logLines;
    base::Notifications m_notifications;
    int m_unexpected = 0;
};

} // namespace lumbra::base
