#pragma once

#include "app/fields_selection.h"

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QComboBox;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::shell {

// The column chooser embedded in option views: a source (all columns or a layout) filtered by
// text on the left, the chosen columns in order on the right, and a custom column by name.
class FieldsSelectionInput : public QWidget {
    Q_OBJECT

public:
    explicit FieldsSelectionInput(QWidget* parent = nullptr);

    void setup(project::SharedStuff& sharedstuff);
    // Told the chosen columns at each change; the options view keeps them as its field list.
    void setDelegate(std::function<void(const std::vector<std::string>&)> delegate);
    // Chosen columns handed in again (as saved in an action).
    void setSelectedColumns(const std::vector<std::string>& columns);

    [[nodiscard]] const std::vector<std::string>& selectedColumns() const noexcept {
        return m_selection.selectedColumns;
    }
    [[nodiscard]] QLineEdit* filterTextField() const noexcept { return m_filterTextField; }
    [[nodiscard]] QComboBox* layoutPopup() const noexcept { return m_layoutPopup; }
    [[nodiscard]] QListWidget* unselectedColumnsList() const noexcept { return m_unselectedColumnsList; }
    [[nodiscard]] QListWidget* selectedColumnsList() const noexcept { return m_selectedColumnsList; }
    [[nodiscard]] QPushButton* customColumnButton() const noexcept { return m_customButton; }

    // The custom column prompt; the answer is added when it is not empty.
    void addCustomColumn();

protected:
    // Delete and Backspace in the chosen list take the selected columns out.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void reloadLists();
    void selectionChanged();
    void addColumn(QListWidgetItem* item);
    void removeSelected();

    app::FieldsSelection m_selection;
    project::SharedStuff* m_sharedstuff = nullptr; // does not own
    std::function<void(const std::vector<std::string>&)> m_delegate;
    QLineEdit* m_filterTextField = nullptr;
    QComboBox* m_layoutPopup = nullptr;
    QListWidget* m_unselectedColumnsList = nullptr;
    QListWidget* m_selectedColumnsList = nullptr;
    QPushButton* m_customButton = nullptr;
    QPushButton* m_removeButton = nullptr;
};

} // namespace lumbra::shell
