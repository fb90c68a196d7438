#pragma once

#include "tables/ale_table.h"
#include "tables/table_links.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace lumbra::tables::testing {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::random_device seed;
        m_path = std::filesystem::temp_directory_path() /
                 ("lumbra-tables-" + std::to_string(seed()) + "-" + std::to_string(seed()));
        std::filesystem::create_directories(m_path);
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const { return (m_path / name).string(); }
    [[nodiscard]] std::string path() const { return m_path.string(); }

    // Writes the bytes as they are and returns the file's path.
    std::string write(const std::string& name, const std::string& bytes) const {
        std::string p = file(name);
        std::filesystem::create_directories(std::filesystem::path(p).parent_path());
        std::ofstream out(p, std::ios::binary | std::ios::trunc);
        out << bytes;
        return p;
    }

private:
    std::filesystem::path m_path;
};

inline std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A bin whose lock the test turns on and off.
class FakeBin : public BinLink {
public:
    [[nodiscard]] bool isLocked() const override { return locked; }
    bool locked = false;
};

// A project that records every row it is told about.
class RecordingProject : public ProjectLink {
public:
    void rowChanged(ALEEntry& row) override { changed.push_back(&row); }
    [[nodiscard]] long callsFor(const ALEEntry* row) const {
        return std::count(changed.begin(), changed.end(), row);
    }
    std::vector<const ALEEntry*> changed;
};

using Cells = std::vector<std::pair<std::string, std::string>>;

// A table with the given columns and rows, each row holding only the cells given.
inline ALETable makeTable(std::vector<std::string> cols, const std::vector<Cells>& rows,
                          ProjectLink* project = nullptr) {
    ALETable table;
    table.tablename = "T";
    table.cols = std::move(cols);
    for (const auto& cells : rows) {
        RowData d;
        for (const auto& [k, v] : cells)
            d.set(k, v);
        table.appendEntry(std::make_shared<ALEEntry>(std::move(d), project));
    }
    return table;
}

// One column of every row, missing values as "(missing)" so they differ from "".
inline std::vector<std::string> columnOf(const ALETable& table, const std::string& column) {
    std::vector<std::string> out;
    for (const auto& row : table.data) {
        auto v = row->value(column);
        out.push_back(v ? *v : "(missing)");
    }
    return out;
}

} // namespace lumbra::tables::testing
