#pragma once

#include "project/bins_tree_entry.h"
#include "tables/columns_layout.h"

#include <memory>
#include <string>
#include <vector>

namespace lumbra::tables {
class DBTable;
}

namespace lumbra::shell {

// What the pickers tell their callers. The tag is the caller's own: one caller with several
// buttons learns which one the answer belongs to.

class BinSettable {
public:
    virtual ~BinSettable() = default;
    virtual void setBin(project::Bin* bin, int tag) = 0;
};

class LayoutSettable {
public:
    virtual ~LayoutSettable() = default;
    virtual void setLayout(const std::shared_ptr<tables::ColumnsLayout>& layout, int tag) = 0;
};

class ColumnSettable {
public:
    virtual ~ColumnSettable() = default;
    virtual void setColumn(const std::string& name, int tag) = 0;
};

class DBSettable {
public:
    virtual ~DBSettable() = default;
    virtual void setDB(const std::shared_ptr<tables::DBTable>& database, int tag) = 0;
};

class BinTreeEntriesSettable {
public:
    virtual ~BinTreeEntriesSettable() = default;
    virtual void setBinTreeEntries(const std::vector<project::TreeNode>& entries) = 0;
};

class LayoutSettableMixed {
public:
    virtual ~LayoutSettableMixed() = default;
    virtual void setLayout(const std::shared_ptr<tables::ColumnsLayout>& layout, int tag) = 0;
    virtual void setBin(project::Bin* bin, int tag) = 0;
    virtual void setColumns(const std::vector<std::string>& columns, int tag, const std::string& name) = 0;
};

} // namespace lumbra::shell
