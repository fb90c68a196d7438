#pragma once

#include "base/user_interaction.h"
#include "csv_options_flags.h"

namespace lumbra::cli {

// How the command answers the questions of the core: "--yes", "--no", or not at all.
enum class AnswerPolicy { ask, affirm, cancel };

// Exit status of a command stopped by a question nobody answered; nothing was written before it.
inline constexpr int exitQuestion = 2;

// The user of a command line run: log lines and notifications go to standard output; questions
// take the first (affirmative) or the last (cancelling) button by policy. With no policy a question
// prints its title and text on standard error and ends the process with exitQuestion, which leaves
// the project as it was, since the core asks before it writes.
class PolicyInteraction final : public base::UserInteraction {
public:
    explicit PolicyInteraction(AnswerPolicy policy) : m_policy(policy) {}
    // The answer to every question about the layout of a delimited file.
    void setCsvFlags(const CsvFlags& flags) { m_csvFlags = flags; }

    base::AlertAnswer alert(const base::AlertRequest& request) override;
    std::optional<std::string> askText(const base::TextRequest& request) override;
    std::optional<std::filesystem::path> chooseFolder(const base::FolderRequest& request) override;
    void addLog(const std::string& text, bool notify, const std::string& title,
                base::NotificationType kind) override;
    void notify(const base::Notifications& notifications) override;
    // The flags over the options the question starts from; never asks, whatever the policy.
    base::CsvOptions askCsvOptions(const std::string& text, const base::CsvOptions& initial) override;

private:
    [[noreturn]] static void stop(const std::string& title, const std::string& text);

    AnswerPolicy m_policy;
    CsvFlags m_csvFlags;
};

// "OK", "WARNING" or "KO".
[[nodiscard]] const char* kindName(base::NotificationType kind);

} // namespace lumbra::cli
