#pragma once

#include "import/csv_options.h"
#include "tables/db_table.h"
#include "tables/row_data.h"

#include <QAbstractTableModel>
#include <QDialog>
#include <memory>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSlider;
class QTableView;

namespace lumbra::shell {

// The first rows of a delimited text as they would be read: one column per column of the table.
class CsvPreviewModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    // Shows another table (not owned; null for none) in one reset.
    void setTable(const tables::DBTable* table);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const tables::DBTable* m_table = nullptr;
    std::vector<tables::ColumnKey> m_keys;
};

// The sheet that asks how a delimited file is laid out, over a live preview of the text. Its controls
// carry their names as object names: popupSeparator, textSeparator, popupDelimiter,
// checkboxIgnoreorientedquotes, popupColumnslist, textColumnslist, previewTable, previewSlider,
// previewSliderLabel.
class CsvImportOptionsSelector final : public QDialog {
    Q_OBJECT

public:
    // A sheet of the parent window when there is one, otherwise a modal window of its own. It first proposes
    // the initial options, or standard CSV when the text reads as that and not as they say.
    CsvImportOptionsSelector(std::string text, const base::CsvOptions& initial, QWidget* parent = nullptr);
    ~CsvImportOptionsSelector() override;

    // The options as the controls state them; user_aborted once the sheet was cancelled.
    [[nodiscard]] const base::CsvOptions& options() const noexcept { return m_options; }
    [[nodiscard]] const tables::CSVTable* csvtable() const noexcept { return m_csvtable.get(); }

    void reject() override;

private:
    void buildControls();
    void showOptions(const base::CsvOptions& options);
    // Re-reads the controls into the options and rebuilds the preview.
    void controlsChanged();
    void shortenText();
    void rebuildPreview();

    base::CsvOptions m_options;
    std::unique_ptr<tables::CSVTable> m_csvtable;
    std::string m_originalText;
    std::string m_shortenedText;
    CsvPreviewModel* m_previewModel = nullptr;

    QComboBox* m_popupSeparator = nullptr;
    QLineEdit* m_textSeparator = nullptr;
    QComboBox* m_popupDelimiter = nullptr;
    QCheckBox* m_checkboxIgnoreorientedquotes = nullptr;
    QComboBox* m_popupColumnslist = nullptr;
    QLineEdit* m_textColumnslist = nullptr;
    QTableView* m_previewTable = nullptr;
    QSlider* m_previewSlider = nullptr;
    QLabel* m_previewSliderLabel = nullptr;
    bool m_showing = false;
};

} // namespace lumbra::shell
