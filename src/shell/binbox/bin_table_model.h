#pragma once

#include "app/bin_box_columns.h"
#include "tables/row_data.h"

#include <QAbstractTableModel>
#include <functional>
#include <optional>
#include <vector>

namespace lumbra::project {
class Bin;
}

namespace lumbra::shell {

// One of a bin box's two tables over the bin's own rows: no copy of the data, one lookup per cell
// asked for. The columns are those the box built; an edit goes to `onEdit`, which owns the rules.
class BinTableModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit BinTableModel(project::Bin& bin, QObject* parent = nullptr);

    // New columns or a new row count reset the model; the same ones only repaint it, so editors
    // and selections survive a refresh.
    void setColumns(std::vector<app::ColumnSpec> specs);
    [[nodiscard]] const std::vector<app::ColumnSpec>& columns() const noexcept { return m_specs; }
    // One cell's value changed: only that cell repaints. A row of -1 stands for a row whose place in this
    // table is not known: the column repaints, still without a row being read.
    void cellChanged(int row, int column);
    // The place of a column by its exact name, or -1.
    [[nodiscard]] int columnOf(const std::string& identifier) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    // Called with the row, the column name and the typed text; answers whether the row changed.
    std::function<bool(int, const std::string&, const std::string&)> onEdit;

private:
    // The data source's one failure: a row past the table's end answers nothing and says so.
    void reportRowOutOfRange(int row) const;

    project::Bin& m_bin;
    std::vector<app::ColumnSpec> m_specs;
    std::vector<std::optional<tables::ColumnKey>> m_keys;
    int m_rows = 0;
};

} // namespace lumbra::shell
