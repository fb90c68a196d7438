#pragma once

#include "app/layout_editing.h"
#include "chain/settable.h"

#include <QAbstractTableModel>
#include <QDialog>
#include <memory>
#include <string>
#include <vector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTableView;
class QToolButton;

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::shell {

// The first rows of a bin under a list of columns; cells are read when drawn.
class LayoutPreviewModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit LayoutPreviewModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

    // `bin` is not owned; at most `limit` rows are shown.
    void setBin(const project::Bin* bin, std::size_t limit);
    void setColumns(std::vector<std::string> columns);
    [[nodiscard]] std::size_t totalRows() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    const project::Bin* m_bin = nullptr;
    std::size_t m_limit = 0;
    std::vector<std::string> m_columns;
};

// The window in which a bin's column list is put together: a source of columns on the left, the
// layout being built on the right, a preview of the bin below, and the name to save it under.
class LayoutGeneratorViewController : public QDialog, public LayoutSettableMixed {
    Q_OBJECT

public:
    LayoutGeneratorViewController(project::SharedStuff& sharedstuff, QWidget* parent = nullptr);

    void setup(project::Bin& bin);
    // The answer of "Create"/"Update"; null after cancel.
    [[nodiscard]] const std::shared_ptr<tables::ColumnsLayout>& retLayout() const noexcept {
        return m_retLayout;
    }
    [[nodiscard]] const std::vector<std::string>& columns() const noexcept { return m_editor.columns; }

    // LayoutSettableMixed: a new source of columns, named on the source button.
    void setLayout(const std::shared_ptr<tables::ColumnsLayout>& layout, int tag) override;
    void setBin(project::Bin* bin, int tag) override;
    void setColumns(const std::vector<std::string>& columns, int tag, const std::string& name) override;

    // The moves, as the buttons and keys call them.
    void takeOneButtonPressed();
    void takeAllButtonPressed();
    void removeOneButtonPressed();
    void removeAllButtonPressed();
    void moveSelected(long steps);
    void addColumnWithButton(const QString& column);
    void selectFromLayouts();

    [[nodiscard]] QLineEdit* nameTextField() const noexcept { return m_nameTextField; }
    [[nodiscard]] QLineEdit* filterField() const noexcept { return m_filterField; }
    [[nodiscard]] QListWidget* columnsTable() const noexcept { return m_columnsTable; }
    [[nodiscard]] QListWidget* supportTable() const noexcept { return m_supportTable; }
    [[nodiscard]] QPushButton* createButton() const noexcept { return m_createButton; }
    [[nodiscard]] QPushButton* cancelButton() const noexcept { return m_cancelButton; }
    [[nodiscard]] QPushButton* layoutButton() const noexcept { return m_layoutButton; }
    [[nodiscard]] QToolButton* takeOneButton() const noexcept { return m_takeOneButton; }
    [[nodiscard]] QToolButton* takeAllButton() const noexcept { return m_takeAllButton; }
    [[nodiscard]] QToolButton* removeOneButton() const noexcept { return m_removeOneButton; }
    [[nodiscard]] QToolButton* removeAllButton() const noexcept { return m_removeAllButton; }
    [[nodiscard]] QCheckBox* previewCheckbox() const noexcept { return m_previewCheckbox; }
    [[nodiscard]] QLabel* cutLabel() const noexcept { return m_cutLabel; }
    [[nodiscard]] QTableView* previewTableView() const noexcept { return m_previewTableView; }
    [[nodiscard]] const LayoutPreviewModel& previewModel() const noexcept { return *m_previewModel; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void buildWindow();
    void refreshAll(const std::vector<std::size_t>& selectedColumns);
    void refreshSupport();
    void validateName();
    void createButtonPressed();
    [[nodiscard]] std::vector<std::size_t> selectedRows(const QListWidget* list) const;
    void sourceChanged(const std::string& title);

    project::SharedStuff& m_sharedstuff;
    project::Bin* m_bin = nullptr; // does not own
    app::LayoutEditor m_editor;
    std::shared_ptr<tables::ColumnsLayout> m_retLayout;
    bool m_layAlreadyExist = false;

    QLineEdit* m_nameTextField = nullptr;
    QLineEdit* m_filterField = nullptr;
    QPushButton* m_layoutButton = nullptr;
    QListWidget* m_supportTable = nullptr;
    QListWidget* m_columnsTable = nullptr;
    QToolButton* m_takeOneButton = nullptr;
    QToolButton* m_takeAllButton = nullptr;
    QToolButton* m_removeOneButton = nullptr;
    QToolButton* m_removeAllButton = nullptr;
    QPushButton* m_createButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QCheckBox* m_previewCheckbox = nullptr;
    QLabel* m_cutLabel = nullptr;
    QTableView* m_previewTableView = nullptr;
    LayoutPreviewModel* m_previewModel = nullptr;
};

// The bin's layout editor, modal: a confirmed layout joins (or updates) the project's saved
// layouts, the bin uses it, and the layouts are saved. False when cancelled or nothing was saved.
bool openLayoutEditor(project::SharedStuff& sharedstuff, project::Bin* bin, QWidget* parent);

} // namespace lumbra::shell
