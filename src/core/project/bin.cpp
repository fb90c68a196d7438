#include "project/bin.h"

#include "tables/background_writer.h"
#include "tables/console.h"
#include "tables/text_helpers.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

namespace lumbra::project {

namespace fs = std::filesystem;
using tables::Notifications;
using tables::NotificationType;
using tables::printLine;

namespace {

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

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
    bool wasChanged = hasChanged;
    if (!Saveable::save(folder, isCopy, notifications))
        return false;
    // A file that fails leaves the bin marked, so that the next save tries again.
    auto failed = [&] {
        hasChanged = hasChanged || wasChanged;
        return false;
    };
    std::string path = (fs::path(folder) / name).string();
    if (smartLink(*this)) {
        // The smart bin's rows are other bins' rows: only its rule and settings are written.
        return writeSmartbinFile(folder, nullptr) || failed();
    }
    if (!writeBinFile(folder, notifications))
        return failed();
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
        writer->write(alePath, m_table->aleText({}, false));
    } else if (m_table && !m_table->saveALE(alePath, {}, true, false)) {
        printLine("ERROR while saving file " + path);
        if (notifications)
            notifications->emplace_back("Error saving", "Error writing to " + path, NotificationType::KO);
        return failed();
    }
    // Files under an older name would compete with these at the next load: they go.
    if (auto listing = sortedListing(folder)) {
        for (const auto& entry : *listing) {
            std::string lower = tables::lowercased(entry.filename().string());
            bool stale = (endsWith(lower, ".ale") && entry.filename() != fs::path(name + ".ale")) ||
                         (endsWith(lower, ".bin") && entry.filename() != fs::path(name + ".bin"));
            std::error_code ec;
            if (stale && !fs::remove(entry, ec))
                printLine("ERROR removing " + entry.string());
        }
    }
    return true;
}

bool Bin::load(const std::string& folder, Notifications* notifications) {
    if (!Saveable::load(folder, notifications)) {
        loadingError(folder, notifications);
        return false;
    }
    auto listing = sortedListing(folder);
    if (!listing) {
        loadingError(folder, notifications);
        return false;
    }
    std::optional<std::string> aleFile;
    std::optional<std::string> binFile;
    std::optional<std::string> smartbinFile;
    for (const auto& entry : *listing) {
        std::string lower = tables::lowercased(entry.filename().string());
        if (endsWith(lower, ".ale"))
            aleFile = entry.string();
        else if (endsWith(lower, ".smartbin"))
            smartbinFile = entry.string();
        else if (endsWith(lower, ".bin"))
            binFile = entry.string();
    }
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
