#pragma once

#include "base/user_interaction.h"

#include <QObject>
#include <QString>

namespace lumbra::shell {

// The user interaction of the desktop: alerts, prompts and folder choices as modal Qt dialogs.
class QtUserInteraction final : public QObject, public base::UserInteraction {
    Q_OBJECT

public:
    explicit QtUserInteraction(QObject* parent = nullptr);

    base::AlertAnswer alert(const base::AlertRequest& request) override;
    std::optional<std::string> askText(const base::TextRequest& request) override;
    std::optional<std::filesystem::path> chooseFolder(const base::FolderRequest& request) override;
    void addLog(const std::string& text, bool notify, const std::string& title,
                base::NotificationType kind) override;
    void notify(const base::Notifications& notifications) override;
    // The options sheet with its preview, over the active window.
    base::CsvOptions askCsvOptions(const std::string& text, const base::CsvOptions& initial) override;

signals:
    // The project window shows these; until one listens they go to standard output only.
    void logAdded(const QString& text, bool notify, const QString& title, int kind);
    void notificationAdded(const QString& title, const QString& body, int type);
};

} // namespace lumbra::shell
