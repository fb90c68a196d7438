#pragma once

#include <QPointer>
#include <QWidget>
#include <any>
#include <optional>
#include <string>
#include <vector>

namespace lumbra::project {
class Bin;
class SharedStuff;
} // namespace lumbra::project

namespace lumbra::operations {
class PivotTable;
struct CheckDbData;
} // namespace lumbra::operations

namespace lumbra::shell {

class ChainableMaster;

// What one panel of a chain hands the next (or, going back, the one before). The receiver copies
// the project and the master into its own fields; a plain input carries nothing else.
class ChainableInput {
public:
    virtual ~ChainableInput() = default;

    project::SharedStuff* sharedstuff = nullptr; // does not own
    ChainableMaster* master = nullptr;           // does not own
};

class IntChainableInput : public ChainableInput {
public:
    std::optional<int> value;
};

class StringChainableInput : public ChainableInput {
public:
    std::string string;
};

class ViewChainableInput : public ChainableInput {
public:
    QPointer<QWidget> view;
};

class FuseChainableInput : public ChainableInput {
public:
    enum class Action { merge, append };

    std::optional<std::vector<project::Bin*>> bins; // do not own
    std::optional<Action> action;
};

class ReportChainableInput : public ChainableInput {
public:
    std::optional<int> addto;
};

class PivotChainableInput : public ChainableInput {
public:
    std::shared_ptr<operations::PivotTable> pivotTable;
};

class DBChainableInput : public ChainableInput {
public:
    std::shared_ptr<operations::CheckDbData> checkdbdata;
};

class CompareInput : public ChainableInput {
public:
    // Bin 1, bin 2, layout 1, layout 2, id fields 1, id fields 2.
    std::optional<std::vector<std::any>> cdata;
};

class CompareStatsChainableInput : public ChainableInput {
public:
    long equal = 0;
    long commdiff = 0;
    long only1 = 0;
    long only2 = 0;
    std::string bin1Name;
    std::string bin2Name;
    bool result_ok = false;
};

class FindReplaceInput : public ChainableInput {
public:
    std::vector<project::Bin*> bins; // do not own
    std::vector<std::string> columns;
    std::string findstring;
    std::string replacestring;
    bool casesensitive = false;
    bool entireword = false;
    bool excludematches = false;
    bool regex = false;
    bool searchinheaders = false;
};

} // namespace lumbra::shell
