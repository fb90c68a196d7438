#pragma once

#include "base/notification.h"
#include "base/saveable.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::tables {

// The project's rule for a column that has no stored width.
enum class ColumnsDefaultWidth { fittoheader = 0, fittocontent = 1, fixed = 2, asneeded = 3 };

inline constexpr ColumnsDefaultWidth defaultColumnsDefaultWidth = ColumnsDefaultWidth::asneeded;
// Points, for the `fixed` rule.
inline constexpr double defaultColumnsFixedWidth = 100.0;

// Which columns a bin shows, in which order, and how wide. A table keeps all its columns;
// a layout only selects, and may name columns a table does not have.
// On disk a folder `<name> - <uuid>` with `lumbra_details` and `<name>.layout`.
class ColumnsLayout : public base::Saveable {
public:
    explicit ColumnsLayout(std::string name);
    ColumnsLayout(std::string name, std::vector<std::string> columns);

    // Base save, then `<name>.layout` written whole; false with a message and an
    // "Error saving layout" notification when the file cannot be written.
    bool save(const std::string& folder, bool isCopy, base::Notifications* notifications) override;
    // Base load, then the first `.layout` file of the folder; false with an "Error loading layout"
    // notification when there is none or it cannot be read (the layout is then left empty).
    bool load(const std::string& folder, base::Notifications* notifications) override;

    // Equal columns in equal order; the name and the widths play no part.
    [[nodiscard]] bool operator==(const ColumnsLayout& other) const { return columns == other.columns; }

    // Name, columns and widths from the text of a `.layout` file; what was there before goes.
    void readLayoutText(std::string_view text);
    // The name line, then one line per column with a tab and its width where one is stored.
    [[nodiscard]] std::string layoutText() const;
    // `<name>.layout`, with any "/" of the name standing as "_".
    [[nodiscard]] std::string fileName() const;
    // `<name> - <uuid>`, with any "/" of the name standing as "_"; makes the uuid if needed.
    [[nodiscard]] std::string folderName();

    std::string name;
    std::vector<std::string> columns;
    std::map<std::string, double> colwidths;

    static constexpr std::string_view fileSuffix = ".layout";
};

using LayoutList = std::vector<std::shared_ptr<ColumnsLayout>>;

// A list of texts as it prints in messages: ["Name", "Start"].
[[nodiscard]] std::string printedList(const std::vector<std::string>& items);

// The columns of the "System" layout, in order.
inline constexpr std::array<const char*, 10> systemLayoutColumns = {
    "Name",  "Start",   "End",     "Duration", "Tracks",
    "Video", "ASC_SOP", "ASC_SAT", "Comments", "Lumbra_Color_Tag"};

// Everything a project knows about layouts: the saved list the user manages, the four standing
// layouts that are never in it, and the rules for columns without a stored width.
class ProjectLayouts {
public:
    ProjectLayouts();

    // "System", made on first request; each request puts its ten columns back, so a bin that
    // edited the shared object cannot change what the system default means.
    [[nodiscard]] const std::shared_ptr<ColumnsLayout>& systemLayout();

    // The first of base + "_01", "_02", ... that no saved layout is named; the bare base never.
    [[nodiscard]] std::string uniqueLayoutName(std::string_view base) const;
    // The name of the first saved layout holding exactly these columns in any order; otherwise a
    // new saved layout "Lay_NN" with them (and "Lumbra_Color_Tag"), logged with a "Layout Added"
    // notification.
    std::string layoutNamed(const std::vector<std::string>& columns, base::Notifications* notifications);
    // By name in the program's text order, smallest first; equal names keep their order.
    void sortLayouts();

    LayoutList layouts;
    // "Default": the project's current default, used by every bin without a layout of its own.
    std::shared_ptr<ColumnsLayout> baseLayout;
    // "Project Default": the default the project began with.
    std::shared_ptr<ColumnsLayout> projectLayout;
    // A copy of the layout last chosen as default; null until one is chosen.
    std::shared_ptr<ColumnsLayout> lastSelectedDefault;
    // Held by the running project only: nothing on disk records them, so a reopened project pins none.
    std::vector<std::string> pinnedColumns;
    ColumnsDefaultWidth columnsdefaultwidth = defaultColumnsDefaultWidth;
    double columnsfixedwidth = defaultColumnsFixedWidth;

private:
    std::shared_ptr<ColumnsLayout> m_systemLayout;
};

} // namespace lumbra::tables
