#pragma once

#include "chain/settable.h"

#include <QFrame>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QVBoxLayout;

namespace lumbra::project {
class SharedStuff;
}

namespace lumbra::shell {

// A small transient window next to the button that opened it: it closes when the user clicks
// elsewhere or presses Escape, and after it has given its answer. It deletes itself on closing.
class PickerPopup : public QFrame {
    Q_OBJECT

public:
    explicit PickerPopup(QWidget* parent = nullptr);

    // Shows the picker below `anchor` (at the cursor without one) with the keyboard in its search field.
    void popUp(QWidget* anchor);
    [[nodiscard]] QLineEdit* searchField() const noexcept { return m_searchField; }

protected:
    [[nodiscard]] QVBoxLayout* body() const noexcept { return m_body; }
    // The search text changed.
    virtual void searchChanged() {}
    // Return in the search field: the first row that is shown answers.
    virtual void chooseFirst() {}

private:
    QVBoxLayout* m_body = nullptr;
    QLineEdit* m_searchField = nullptr;
};

// A picker of one name out of a flat list; the search field keeps the rows whose names contain it.
class ListPicker : public PickerPopup {
    Q_OBJECT

public:
    explicit ListPicker(QWidget* parent = nullptr);

    [[nodiscard]] QListWidget* list() const noexcept { return m_list; }

protected:
    // The rows, in order; each answers with its index into this list.
    void setRows(const std::vector<std::string>& titles);
    void addFixedRow(const QString& title, const QIcon& icon, int index);
    // The row of that index was chosen; the picker closes afterwards.
    virtual void choose(int index) = 0;
    void searchChanged() override;
    void chooseFirst() override;

private:
    void chooseItem(QListWidgetItem* item);

    QListWidget* m_list = nullptr;
};

// The saved layouts of the project, or those the caller lists.
class LayoutSetter : public ListPicker {
    Q_OBJECT

public:
    explicit LayoutSetter(QWidget* parent = nullptr);
    // Without `layouts` the project's saved layouts are listed.
    void setup(project::SharedStuff& sharedstuff, LayoutSettable* caller, int tag,
               const tables::LayoutList* layouts = nullptr);

protected:
    void choose(int index) override;

private:
    project::SharedStuff* m_sharedstuff = nullptr; // does not own
    LayoutSettable* m_layoutsettableViewController = nullptr;
    int m_rettag = 0;
    tables::LayoutList m_layouts;
};

// One column out of a list.
class ColumnSetter : public ListPicker {
    Q_OBJECT

public:
    explicit ColumnSetter(QWidget* parent = nullptr);
    void setup(std::vector<std::string> cols, ColumnSettable* caller, int tag);

protected:
    void choose(int index) override;

private:
    std::vector<std::string> m_cols;
    ColumnSettable* m_columnsettableViewController = nullptr;
    int m_rettag = 0;
};

// One of the project's databases, or one read from a file ("< Load from File >").
class DBSetter : public ListPicker {
    Q_OBJECT

public:
    // Reads a file as a database; null when it cannot.
    using DatabaseReader = std::function<std::shared_ptr<tables::DBTable>(const std::string& path)>;

    explicit DBSetter(QWidget* parent = nullptr);
    void setup(project::SharedStuff& sharedstuff, DBSettable* caller, int tag);
    // The reader of "< Load from File >"; the database import installs it.
    static void setDatabaseReader(DatabaseReader reader);
    // Asks for a file and hands the database read from it to the caller like a row of the list.
    void loadFromFile();

protected:
    void choose(int index) override;

private:
    project::SharedStuff* m_sharedstuff = nullptr; // does not own
    DBSettable* m_dbsettableViewController = nullptr;
    int m_rettag = 0;
    std::vector<std::shared_ptr<tables::DBTable>> m_databases;
};

} // namespace lumbra::shell
