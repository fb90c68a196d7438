#pragma once

#include "base/saveable.h"
#include "project/bins_host.h"
#include "tables/ale_table.h"
#include "tables/table_links.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {

// The named, saveable holder of one clip table: what the user does with the table in a
// project (name, layout, open or closed, locks, free tags, the heading values it came with).
// On disk a folder with `lumbra_details`, `<name>.ale` and `<name>.bin`, or a `.smartbin`.
class Bin : public base::Saveable, public tables::BinLink {
public:
    // No table; the project's default layout.
    explicit Bin(BinsHost* sharedstuff);
    // Takes the table and becomes its bin. Open at once with a box, unless headless.
    Bin(std::unique_ptr<tables::ALETable> table, BinsHost* sharedstuff,
        std::shared_ptr<tables::ColumnsLayout> layout, bool headless);
    ~Bin() override;
    Bin(const Bin&) = delete;
    Bin& operator=(const Bin&) = delete;

    // A locked bin drops every row write and every rename.
    [[nodiscard]] bool isLocked() const override { return m_isLock; }
    [[nodiscard]] bool isLock() const noexcept { return m_isLock; }
    void setLock(bool locked);

    [[nodiscard]] tables::ALETable* table() const noexcept { return m_table.get(); }
    // Owns the table from now on and becomes its bin.
    void setTable(std::unique_ptr<tables::ALETable> table);

    // The box, made on first request; nullptr where the project makes none.
    BinBoxLink* box();
    [[nodiscard]] bool selected() const noexcept { return m_selected; }
    // Opens (true) or closes the bin's box on the main window.
    void setSelected(bool selected);

    // The name given, else the table's name.
    [[nodiscard]] virtual std::string displayName() const;
    // Ignored while the bin is locked.
    virtual void setDisplayName(std::string name);
    // The name of the bin's own files: the display name with any "/" standing as "_", since a "/" would
    // open a folder of its own; the name itself is kept inside the .bin file.
    [[nodiscard]] std::string fileStem() const;

    // "binname" and "binfps" for clever strings; absent for any other token.
    [[nodiscard]] virtual std::optional<std::string> interpretBinToken(std::string_view token) const;
    // A new bin "sub-<name>" whose table holds the very rows (not copies) at these numbers;
    // numbers past the end are left out.
    [[nodiscard]] virtual std::unique_ptr<Bin> subBin(const std::vector<long>& rows) const;

    // The .bin file; false when it cannot be written, with no message of its own.
    virtual bool writeBinFile(const std::string& folder, base::Notifications* notifications);
    virtual bool writeSmartbinFile(const std::string& folder, base::Notifications* notifications);
    // False (defaults kept, warning added) when the file cannot be read.
    virtual bool readBinFile(const std::string& path, base::Notifications* notifications);
    virtual bool readSmartbinFile(const std::string& path, base::Notifications* notifications);

    // Writes details, .bin and .ale (or the .smartbin); false with a notification on failure.
    bool save(const std::string& folder, bool isCopy, base::Notifications* notifications) override;
    // Reads the folder back; a faulty table or missing .bin file only warns.
    bool load(const std::string& folder, base::Notifications* notifications) override;

    BinsHost* sharedstuff = nullptr; // does not own
    std::vector<std::string> tags;
    std::shared_ptr<tables::ColumnsLayout> layout;
    std::vector<std::string> lockedColumns;
    std::optional<std::string> originalmeta_fps;
    std::optional<std::string> originalmeta_filmformat;
    std::optional<std::string> originalmeta_videoformat;
    std::optional<std::string> originalmeta_audioformat;
    std::optional<std::string> originalmeta_tape;

private:
    bool m_isLock = false;
    std::unique_ptr<tables::ALETable> m_table;
    std::unique_ptr<BinBoxLink> m_box;
    bool m_selected = false;
    std::optional<std::string> m_displayname;
};

// A bin that lives for one operation only and never enters a tree.
class TmpBin : public Bin {
public:
    using Bin::Bin;
};

// A plain bin standing for a smart bin while an operation needs one: its table lists the
// smart bin's rows themselves, its name is the smart bin's.
class TransitionBin : public Bin {
public:
    TransitionBin(Bin* smartbin, BinsHost* sharedstuff);

    // The smart bin's name, or "Unknown" without one.
    [[nodiscard]] std::string displayName() const override;
    // The name belongs to the smart bin: nothing happens.
    void setDisplayName(std::string name) override;

    Bin* smartbin = nullptr; // does not own
};

// Hands a bin from one window to another.
struct BinContainer {
    Bin* bin = nullptr; // does not own
};

} // namespace lumbra::project
