#pragma once

#include "base/csv_layout.h"
#include "base/notification.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumbra::base {

// How an alert presents itself; the shell picks the matching icon.
enum class AlertStyle { Informational = 0, Warning = 1, Critical = 2 };

// A question or a message with buttons, in the order the user reads them.
struct AlertRequest {
    std::string title;
    std::string text;
    AlertStyle style = AlertStyle::Informational;
    std::vector<std::string> buttons;
    // A question that can recur in a run carries the "Apply to all" box.
    bool showApplyToAll = false;

    bool operator==(const AlertRequest&) const = default;
};

// The button pressed, by index into the request's buttons, and the state of "Apply to all".
struct AlertAnswer {
    int button = 0;
    bool applyToAll = false;

    bool operator==(const AlertAnswer&) const = default;
};

// A one-line text prompt; a name listed in takenNames cannot be confirmed.
struct TextRequest {
    std::string title;
    std::string text;
    std::string defaultValue;
    std::vector<std::string> takenNames;

    bool operator==(const TextRequest&) const = default;
};

// A choice of one existing folder.
struct FolderRequest {
    std::string title;
    std::filesystem::path startFolder;
    // A line under the folder list that says why the choice is asked for; empty for none.
    std::string message;

    bool operator==(const FolderRequest&) const = default;
};

// Everything the core asks or tells the user passes through here; the shell shows windows, tests script
// answers.
class UserInteraction {
public:
    virtual ~UserInteraction() = default;

    // Shows the alert and waits; an alert without buttons gets a single "OK" at index 0.
    virtual AlertAnswer alert(const AlertRequest& request) = 0;
    // Absent when the user cancels.
    virtual std::optional<std::string> askText(const TextRequest& request) = 0;
    // Absent when the user cancels.
    virtual std::optional<std::filesystem::path> chooseFolder(const FolderRequest& request) = 0;
    // One line of the log; with notify it also becomes a notification with that title.
    virtual void addLog(const std::string& text, bool notify, const std::string& title,
                        base::NotificationType kind) = 0;
    // Hands the collected notices of an operation to the user.
    virtual void notify(const base::Notifications& notifications) = 0;
    // How a delimited text is laid out, asked on its text with a preview and starting from `initial`;
    // the answer has user_aborted set when the user cancels. With nobody to ask, `initial` stands.
    virtual CsvOptions askCsvOptions(const std::string& text, const CsvOptions& initial) { return initial; }

    // A single-button message; the common case of alert.
    void showInfo(const std::string& title, const std::string& text,
                  AlertStyle style = AlertStyle::Informational) {
        alert({title, text, style, {"OK"}, false});
    }
};

} // namespace lumbra::base
