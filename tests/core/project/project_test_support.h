#pragma once

#include "base/saveable.h"
#include "base/text_file.h"
#include "import/ale_reader.h"
#include "project/bin.h"
#include "project/bins_tree_entry.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace lumbra::project::testing {

namespace fs = std::filesystem;

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

} // namespace lumbra::project::testing
