#pragma once

#include "base/notification.h"
#include "tables/ale_entry.h"

#include <memory>
#include <string>

namespace lumbra::tables {
class BackgroundWriter;
class ColumnsLayout;
class ProjectLink;
} // namespace lumbra::tables

namespace lumbra::project {

class Bin;
class BinsTreeEntry;

// The on-screen box of a bin; the shell's box derives from it, the core only holds it.
class BinBoxLink {
public:
    virtual ~BinBoxLink() = default;
    // Shows the bin's rows again after they changed behind the box.
    virtual void refresh() {}
};

// What the bins tree asks of a smart table; the smart bins code implements it on its table.
class SmartTableLink {
public:
    virtual ~SmartTableLink() = default;
    // True when the smart table looks only in some nodes of the bins tree.
    [[nodiscard]] virtual bool hasDomain() const = 0;
    // True when the node itself is one of the nodes the smart table looks in.
    [[nodiscard]] virtual bool domainHolds(const BinsTreeEntry& node) const = 0;
    // Tests one row again: it enters or leaves the smart table.
    virtual void reEvaluate(const tables::EntryPtr& entry) = 0;
    // Tests every row of a source bin again.
    virtual void reEvaluateAll(Bin& bin) = 0;
    // Turns the uuids read from the file into nodes of the bins tree; unknown ones are dropped.
    virtual void resolveDomain(BinsTreeEntry& bins) = 0;
};

// The smart side of a bin's table, or nullptr for a plain table.
[[nodiscard]] SmartTableLink* smartLink(const Bin& bin);

// What bins and the bins tree need from the project that holds them; the project implements
// it. Every default does nothing, which is what a project without windows wants.
class BinsHost {
public:
    virtual ~BinsHost() = default;

    // The layout of a bin that has none of its own; absent before the project is loaded.
    [[nodiscard]] virtual std::shared_ptr<tables::ColumnsLayout> baseLayout() const { return nullptr; }
    // Where the rows of the project's tables report their changes.
    [[nodiscard]] virtual tables::ProjectLink* projectLink() { return nullptr; }
    // A new on-screen box for the bin; nullptr where there is no screen.
    [[nodiscard]] virtual std::unique_ptr<BinBoxLink> makeBox(Bin& bin) { return nullptr; }
    // The bin's box enters (true) or leaves (false) the main window; leaving also ends the
    // bin's being the active one. Nothing happens while no main window stands.
    virtual void showBox(Bin& bin, bool shown) {}
    // A bin that was open when the project was saved; the main window opens it once it stands.
    virtual void openAfterLoading(Bin& bin) {}

    [[nodiscard]] virtual BinsTreeEntry* binsTree() { return nullptr; }
    [[nodiscard]] virtual BinsTreeEntry* smartbinsTree() { return nullptr; }
    // Makes the colour tag trees again after the trees changed.
    virtual void rebuildTagTrees() {}
    // Where a save hands the rewrite of a bin's table when it may happen after the save returns; nullptr
    // writes it at once.
    [[nodiscard]] virtual tables::BackgroundWriter* backgroundWriter() { return nullptr; }

    // The .smartbin file of a bin, read and written by the smart bins code. Without it a
    // smart bin can be neither read nor written: false, with a message.
    virtual bool writeSmartbinFile(Bin& bin, const std::string& folder, base::Notifications* notifications);
    virtual bool readSmartbinFile(Bin& bin, const std::string& path, base::Notifications* notifications);
};

} // namespace lumbra::project
