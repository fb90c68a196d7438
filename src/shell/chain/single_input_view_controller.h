#pragma once

#include "app/fields_selection.h"

#include <QDialog>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QLineEdit;
class QPushButton;

namespace lumbra::project {
class MainWindowLink;
}

namespace lumbra::shell {

// The one-line name prompt: "Done" is enabled only for a text the rules accept; Return confirms
// such a text, cancel gives no answer.
class SingleInputViewController : public QDialog {
    Q_OBJECT

public:
    SingleInputViewController(const std::string& request, const std::string& initialText,
                              const std::string& title, app::SingleInputRules rules,
                              QWidget* parent = nullptr);

    // The confirmed text; absent until "Done" (or after cancel).
    [[nodiscard]] const std::optional<std::string>& stringcontainer() const noexcept { return m_answer; }
    [[nodiscard]] QLineEdit* textField() const noexcept { return m_textField; }
    [[nodiscard]] QPushButton* doneButton() const noexcept { return m_doneButton; }

private:
    void validate();
    void doneButtonPressed();

    QLabel* m_requestLabel = nullptr;
    QLineEdit* m_textField = nullptr;
    QPushButton* m_doneButton = nullptr;
    app::SingleInputRules m_rules;
    std::optional<std::string> m_answer;
};

// Asks for one line of text in a modal window; with a main window its fog is up meanwhile.
// Absent on cancel.
[[nodiscard]] std::optional<std::string>
singleInput(const std::string& request, const std::string& initialText, const std::string& title,
            std::vector<std::string> takenNames, bool canBeEmpty, project::MainWindowLink* mainWindow,
            std::optional<std::vector<std::string>> unusableCharacters = std::nullopt,
            QWidget* parent = nullptr);

} // namespace lumbra::shell
