#pragma once

#include "tables/row_data.h"

#include <QAbstractListModel>
#include <QAbstractTableModel>
#include <memory>
#include <optional>
#include <vector>

namespace lumbra::tables {
class DBTable;
}
namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::shell {

// The names of the project's databases, read from its list in place.
class DatabasesListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    DatabasesListModel(project::SharedStuff& sharedstuff, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    // The database of a row; null past the end.
    [[nodiscard]] std::shared_ptr<tables::DBTable> table(int row) const;
    // The list changed under the model (added, renamed, deleted).
    void reload();

private:
    project::SharedStuff& m_sharedstuff;
};

// The rows of one database, read in place; an edited cell goes into its entry at once.
class DatabaseTableModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    DatabaseTableModel(project::SharedStuff& sharedstuff, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Writes the text into the entry and marks the table changed; false for a cell that is not there.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    // A row without values before `before`, or at the end without one; its row.
    int insertEntry(std::optional<std::size_t> before);
    // False for a row that is not there.
    bool removeEntry(int row);

    // Shows `table` (null for none) with its columns as they stand now.
    void setTable(std::shared_ptr<tables::DBTable> table);
    [[nodiscard]] tables::DBTable* table() const noexcept { return m_table.get(); }
    // The column name of a section; "" past the end.
    [[nodiscard]] std::string columnName(int section) const;

private:
    project::SharedStuff& m_sharedstuff;
    std::shared_ptr<tables::DBTable> m_table;
    // The interned key of each column, so that a cell is one lookup in its row.
    std::vector<tables::ColumnKey> m_keys;
};

} // namespace lumbra::shell
