#pragma once

#include "base/console.h"
#include "base/saveable.h"
#include "base/text_file.h"
#include "import/ale_reader.h"
#include "project/bin.h"
#include "project/bins_tree_entry.h"
#include "project/shared_stuff.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace lumbra::project::testing {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class TempFolder {
public:
    TempFolder() {
        path = fs::temp_directory_path() / ("lumbra-project-" + base::makeUuid());
        fs::create_directories(path);
    }
    ~TempFolder() {
        std::error_code ec;
        for (auto it = fs::recursive_directory_iterator(path, ec);
             !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
        fs::permissions(path, fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(path, ec);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    [[nodiscard]] std::string str() const { return path.string(); }
    fs::path path;
};

inline void writeFile(const fs::path& p, const std::string& text) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << text;
}

// The parts of "a|b|c"; none for an empty text.
inline Names split(const std::string& spec) {
    Names out;
    for (std::size_t start = 0; start < spec.size();) {
        std::size_t end = std::min(spec.find('|', start), spec.size());
        out.push_back(spec.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

// Writes "path=text|path=text" under the folder; a text of "/" makes a folder.
inline void writeFiles(const fs::path& root, const std::string& spec) {
    for (const auto& item : split(spec)) {
        const std::size_t eq = item.find('=');
        if (item.substr(eq + 1) == "/")
            fs::create_directories(root / item.substr(0, eq));
        else
            writeFile(root / item.substr(0, eq), item.substr(eq + 1));
    }
}

inline std::string readFile(const fs::path& p) {
    return base::readFileBytes(p.string()).value_or("<none>");
}

// Every path under the folder, relative to it, folders with a "/" at the end.
inline std::set<std::string> listTree(const fs::path& root) {
    std::set<std::string> out;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::string rel = fs::relative(entry.path(), root).string();
        out.insert(entry.is_directory() ? rel + "/" : rel);
    }
    return out;
}

// Every file under the folder with its modification time.
inline std::vector<std::pair<std::string, fs::file_time_type>> fileTimes(const fs::path& root) {
    std::vector<std::pair<std::string, fs::file_time_type>> out;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file())
            out.emplace_back(entry.path().string(), entry.last_write_time());
    }
    return out;
}

// Runs a scope without the rights of the super-user, so that a read-only folder is one.
class Unprivileged {
public:
    Unprivileged() : m_wasRoot(::geteuid() == 0) {
        if (m_wasRoot && ::seteuid(65534) != 0)
            m_wasRoot = false;
    }
    ~Unprivileged() {
        if (m_wasRoot)
            static_cast<void>(::seteuid(0));
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    bool m_wasRoot;
};

inline std::string aleText(const std::vector<std::string>& names) {
    std::string text =
        "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\n\nColumn\nName\tTape\n\nData\n";
    for (const auto& name : names)
        text += name + "\tA001\n";
    return text;
}

// A table as the reader gives it, named `tablename`, one row per clip name.
inline std::unique_ptr<tables::ALETable> makeTable(const std::string& tablename,
                                                   const std::vector<std::string>& clips = {"c1", "c2"}) {
    return import::parseALEText(aleText(clips), tablename).table;
}

inline std::shared_ptr<Bin> makeBin(const std::string& tablename, BinsHost* host = nullptr) {
    return std::make_shared<Bin>(makeTable(tablename), host, nullptr, true);
}

inline TreeNode makeGroup(const std::string& id, std::vector<TreeNode> children = {}) {
    return std::make_shared<BinsTreeEntry>(id, nullptr, std::move(children));
}

inline TreeNode makeLeaf(const std::string& tablename, BinsHost* host = nullptr) {
    return std::make_shared<BinsTreeEntry>(tablename, makeBin(tablename, host));
}

// A project without windows that records what the bins ask of it.
class RecordingHost : public BinsHost {
public:
    [[nodiscard]] std::shared_ptr<tables::ColumnsLayout> baseLayout() const override { return base; }
    void showBox(Bin& bin, bool shown) override { shownBoxes.emplace_back(bin.displayName(), shown); }
    void openAfterLoading(Bin& bin) override { toOpen.push_back(&bin); }
    BinsTreeEntry* binsTree() override { return bins.get(); }
    BinsTreeEntry* smartbinsTree() override { return smartbins.get(); }
    void rebuildTagTrees() override { ++tagTreeRebuilds; }

    std::shared_ptr<tables::ColumnsLayout> base;
    std::vector<std::pair<std::string, bool>> shownBoxes;
    std::vector<Bin*> toOpen;
    TreeNode bins = makeGroup("root");
    TreeNode smartbins = makeGroup("smartbins");
    int tagTreeRebuilds = 0;
};

// A smart table that records what it is asked to test; it looks only in the nodes of its domain, if any.
class RecordingSmartTable : public tables::ALETable, public SmartTableLink {
public:
    [[nodiscard]] bool hasDomain() const override { return !domain.empty(); }
    [[nodiscard]] bool domainHolds(const BinsTreeEntry& node) const override {
        return std::find(domain.begin(), domain.end(), &node) != domain.end();
    }
    void reEvaluate(const tables::EntryPtr& entry) override { rows.push_back(entry.get()); }
    void reEvaluateAll(Bin& bin) override { bins.push_back(&bin); }
    void resolveDomain(BinsTreeEntry& tree) override {
        for (const auto& uuid : domainUuids) {
            if (auto* node = tree.entryByUuid(uuid))
                domain.push_back(node);
        }
    }

    std::vector<const BinsTreeEntry*> domain;
    Names domainUuids;
    std::vector<const tables::ALEEntry*> rows;
    std::vector<Bin*> bins;
};

inline RecordingSmartTable& smartTable(Bin& bin) {
    return dynamic_cast<RecordingSmartTable&>(*bin.table());
}

// A smart bin in a leaf, with empty rows.
inline TreeNode makeSmartLeaf(const std::string& id, int rows = 0, BinsHost* host = nullptr) {
    auto table = std::make_unique<RecordingSmartTable>();
    table->tablename = id;
    for (int i = 0; i < rows; ++i)
        table->data.push_back(std::make_shared<tables::ALEEntry>());
    return std::make_shared<BinsTreeEntry>(id, std::make_shared<Bin>(std::move(table), host, nullptr, true));
}

// The display names of bins, in order.
inline Names namesOf(const std::vector<Bin*>& bins) {
    Names out;
    for (const Bin* bin : bins)
        out.push_back(bin->displayName());
    return out;
}

// The names of a node's children, in order.
inline Names childNames(const BinsTreeEntry& node) {
    Names out;
    for (const auto& child : node.children)
        out.push_back(child->name());
    return out;
}

// Whether a printed line holds the text.
inline bool printed(const base::PrintCapture& capture, const std::string& text) {
    return std::any_of(capture.lines().begin(), capture.lines().end(),
                       [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

// A project "Film" in a temporary folder, without autosave, not saved yet.
struct FilmProject {
    explicit FilmProject(base::UserInteraction* interaction = nullptr) : s(interaction) {
        s.currentFolder = dir.str();
        s.projectName = "Film";
        s.autosave = false;
    }
    [[nodiscard]] fs::path folder() const { return dir.path / "Film"; }

    TempFolder dir;
    SharedStuff s;
};

} // namespace lumbra::project::testing
