#include "project/bin.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_helpers.h"
#include "tables/background_writer.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::Notifications;
using base::NotificationType;
using base::printLine;

namespace {

void loadingError(const std::string& path, Notifications* notifications) {
    printLine("ERROR loading from " + path);
    if (notifications)
        notifications->emplace_back("Loading error", "Error loading from " + path, NotificationType::KO);
}

// The folder's entries by name, so that "the last one wins" means the same on every disk.
std::optional<std::vector<fs::path>> sortedListing(const std::string& folder) {
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec)
        return std::nullopt;
    std::vector<fs::path> names;
    for (const auto& entry : it)
        names.push_back(entry.path());
    std::sort(names.begin(), names.end());
    return names;
}

// The files a bin folder holds for its bin, and the others that a load passes over.
struct BinFiles {
    std::optional<std::string> ale;
    std::optional<std::string> bin;
    std::optional<std::string> smartbin;
    std::vector<std::string> ignored;
};

// A bin reads the files named after it (its folder's name less " - <uuid>"), so that a stray
// file beside them never replaces them. A folder renamed by hand still loads its only file of each kind.
BinFiles binFilesIn(const std::vector<fs::path>& listing, const std::string& stem) {
    struct Kind {
        std::string_view suffix;
        std::optional<std::string> BinFiles::*file;
    };
    constexpr Kind kinds[] = {
        {".ale", &BinFiles::ale}, {".smartbin", &BinFiles::smartbin}, {".bin", &BinFiles::bin}};
    BinFiles out;
    for (const Kind& kind : kinds) {
        std::vector<const fs::path*> readable;
        for (const auto& entry : listing) {
            std::string name = entry.filename().string();
            if (!base::hasSuffix(name, kind.suffix) ||
                (kind.suffix == ".bin" && base::hasSuffix(name, ".smartbin")))
                continue;
            std::error_code ec;
            // A symbolic link that leads nowhere (or round in a loop) is no file to read.
            if (fs::exists(entry, ec))
                readable.push_back(&entry);
            else
                out.ignored.push_back(entry.filename().string());
        }
        const fs::path* chosen = nullptr;
        for (const fs::path* entry : readable) {
            if (entry->filename().string() == stem + std::string(kind.suffix))
                chosen = entry;
        }
        if (!chosen && readable.size() == 1)
            chosen = readable.front();
        for (const fs::path* entry : readable) {
            if (entry != chosen)
                out.ignored.push_back(entry->filename().string());
        }
        if (chosen)
            out.*kind.file = chosen->string();
    }
    return out;
}

} // namespace

SmartTableLink* smartLink(const Bin& bin) {
    return dynamic_cast<SmartTableLink*>(bin.table());
}

bool BinsHost::writeSmartbinFile(Bin& bin, const std::string& folder, Notifications* notifications) {
    printLine("ERROR: smart bins cannot be written here: " + folder);
    return false;
}

bool BinsHost::readSmartbinFile(Bin& bin, const std::string& path, Notifications* notifications) {
    printLine("ERROR: smart bins cannot be read here: " + path);
    return false;
}

Bin::Bin(BinsHost* sharedstuff)
    : sharedstuff(sharedstuff), layout(sharedstuff ? sharedstuff->baseLayout() : nullptr) {
}

Bin::Bin(std::unique_ptr<tables::ALETable> table, BinsHost* sharedstuff,
         std::shared_ptr<tables::ColumnsLayout> layout, bool headless)
    : Bin(sharedstuff) {
    if (layout)
        this->layout = std::move(layout);
    setTable(std::move(table));
    m_selected = !headless;
    if (!headless && sharedstuff)
        m_box = sharedstuff->makeBox(*this);
}

Bin::~Bin() {
    if (m_table && m_table->bin == this)
        m_table->bin = nullptr;
}

void Bin::setLock(bool locked) {
    if (m_isLock != locked)
        hasChanged = true;
    m_isLock = locked;
}

void Bin::setTable(std::unique_ptr<tables::ALETable> table) {
    m_table = std::move(table);
    if (m_table)
        m_table->bin = this;
    hasChanged = true;
}

BinBoxLink* Bin::box() {
    if (!m_box && sharedstuff)
        m_box = sharedstuff->makeBox(*this);
    return m_box.get();
}

void Bin::setSelected(bool selected) {
    m_selected = selected;
    box();
    if (sharedstuff)
        sharedstuff->showBox(*this, selected);
}

std::string Bin::displayName() const {
    if (m_displayname)
        return *m_displayname;
    return m_table ? m_table->tablename : std::string();
}

void Bin::setDisplayName(std::string name) {
    if (m_isLock)
        return;
    // Only a real change marks the bin, so that a load which names it after its folder does not.
    if (name != displayName())
        hasChanged = true;
    m_displayname = std::move(name);
}

std::optional<std::string> Bin::interpretBinToken(std::string_view token) const {
    if (token == "binname")
        return displayName();
    if (token == "binfps")
        return m_table ? m_table->fps.value_or(std::string()) : std::string();
    return std::nullopt;
}

std::unique_ptr<Bin> Bin::subBin(const std::vector<long>& rows) const {
    auto sub = std::make_unique<Bin>(sharedstuff);
    sub->setTable(std::make_unique<tables::ALETable>());
    sub->setDisplayName("sub-" + displayName());
    if (!m_table)
        return sub;
    auto count = static_cast<long>(m_table->data.size());
    for (long row : rows) {
        // The rows stay the source bin's: pushed as they are, their table link is untouched.
        if (row >= 0 && row < count)
            sub->m_table->data.push_back(m_table->data[static_cast<std::size_t>(row)]);
    }
    return sub;
}

bool Bin::writeSmartbinFile(const std::string& folder, Notifications* notifications) {
    if (!sharedstuff) {
        printLine("ERROR: smart bins cannot be written here: " + folder);
        return false;
    }
    return sharedstuff->writeSmartbinFile(*this, folder, notifications);
}

bool Bin::readSmartbinFile(const std::string& path, Notifications* notifications) {
    if (!sharedstuff) {
        printLine("ERROR: smart bins cannot be read here: " + path);
        return false;
    }
    return sharedstuff->readSmartbinFile(*this, path, notifications);
}

std::string Bin::fileStem() const {
    std::string stem = displayName();
    std::replace(stem.begin(), stem.end(), '/', '_');
    return stem;
}

bool Bin::save(const std::string& folder, bool isCopy, Notifications* notifications) {
    printLine("saving bin " + displayName());
    const std::string name = fileStem();
    // The table goes first and the details last: a save cut short leaves a folder that the next open
    // knows as a broken bin (or a whole one), never one that looks like an empty group.
    if (!createFolder(folder, notifications))
        return false;
    std::string path = (fs::path(folder) / name).string();
    if (smartLink(*this)) {
        // The smart bin's rows are other bins' rows: only its rule and settings are written.
        return writeSmartbinFile(folder, nullptr) && base::Saveable::save(folder, isCopy, notifications);
    }
    const std::string alePath = path + ".ale";
    tables::BackgroundWriter* writer = isCopy || !sharedstuff ? nullptr : sharedstuff->backgroundWriter();
    std::error_code exists;
    // Only a table file already in place is rewritten later: a new or renamed one is written now, after what
    // still waits, so that the clean-up below sees every file of the bin.
    if (writer && !fs::exists(alePath, exists)) {
        writer->waitIdle();
        writer = nullptr;
    }
    // A bin whose table never loaded writes no table over a file that may still hold one.
    if (m_table && writer) {
        writer->write(alePath, m_table->aleText({}, false, true));
    } else if (m_table && !m_table->saveALE(alePath, {}, true, false, nullptr, true)) {
        printLine("ERROR while saving file " + path);
        if (notifications)
            notifications->emplace_back("Error saving", "Error writing to " + path, NotificationType::KO);
        return false;
    }
    if (!writeBinFile(folder, notifications) || !base::Saveable::save(folder, isCopy, notifications))
        return false;
    // Files under an older name would compete with these at the next load: they go.
    if (auto listing = sortedListing(folder)) {
        for (const auto& entry : *listing) {
            std::string file = entry.filename().string();
            bool stale = (base::hasSuffix(file, ".ale") && entry.filename() != fs::path(name + ".ale")) ||
                         (base::hasSuffix(file, ".bin") && entry.filename() != fs::path(name + ".bin"));
            std::error_code ec;
            if (stale && !fs::remove(entry, ec))
                printLine("ERROR removing " + entry.string());
        }
    }
    return true;
}

bool Bin::load(const std::string& folder, Notifications* notifications) {
    if (!base::Saveable::load(folder, notifications)) {
        loadingError(folder, notifications);
        return false;
    }
    auto listing = sortedListing(folder);
    if (!listing) {
        loadingError(folder, notifications);
        return false;
    }
    BinFiles files = binFilesIn(*listing, base::lastComponent(folder, " - " + uuid()));
    if (!files.ignored.empty()) {
        std::string names;
        for (const auto& name : files.ignored)
            names += (names.empty() ? "" : ", ") + name;
        printLine("Warning: files ignored in " + folder + ": " + names);
        if (notifications)
            notifications->emplace_back(
                "Files ignored", "The bin in " + folder + " reads only its own files and ignores " + names,
                NotificationType::WARNING);
    }
    const std::optional<std::string>& aleFile = files.ale;
    const std::optional<std::string>& binFile = files.bin;
    const std::optional<std::string>& smartbinFile = files.smartbin;
    if (!aleFile && !smartbinFile) {
        printLine("ERROR: no .ale or .smartbin file in " + folder);
        if (notifications)
            notifications->emplace_back("Loading error", "No .ale or .smartbin file in " + folder,
                                        NotificationType::KO);
        return false;
    }
    if (!aleFile)
        return readSmartbinFile(*smartbinFile, nullptr);

    setTable(std::make_unique<tables::ALETable>(*aleFile, notifications));
    if (sharedstuff) {
        for (const auto& row : m_table->data)
            row->sharedstuff = sharedstuff->projectLink();
    }
    if (!m_table->state) {
        printLine("ERROR loading " + *aleFile);
        if (notifications)
            notifications->emplace_back("Loading error", "Something went wrong loading " + *aleFile,
                                        NotificationType::WARNING);
    }
    if (binFile) {
        readBinFile(*binFile, notifications);
        hasChanged = false;
        return true;
    }
    printLine("Warning: no bin file, default values used");
    if (notifications)
        notifications->emplace_back("No .bin file",
                                    "No .bin file in " + folder + ". Default values used for bin.",
                                    NotificationType::WARNING);
    writeBinFile(folder, notifications);
    hasChanged = false;
    return true;
}

TransitionBin::TransitionBin(Bin* smartbin, BinsHost* sharedstuff) : Bin(sharedstuff), smartbin(smartbin) {
    setTable(std::make_unique<tables::ALETable>());
    if (!smartbin || !smartbin->table())
        return;
    auto& rows = table()->data;
    rows = smartbin->table()->data;
    std::vector<std::string>& cols = table()->cols;
    std::unordered_set<tables::ColumnKey> seen;
    for (const auto& row : rows) {
        for (const auto& cell : row->data()) {
            if (seen.insert(cell.key).second)
                cols.push_back(tables::ColumnNames::name(cell.key));
        }
    }
}

std::string TransitionBin::displayName() const {
    return smartbin ? smartbin->displayName() : std::string("Unknown");
}

void TransitionBin::setDisplayName(std::string) {
}

} // namespace lumbra::project
