#pragma once

#include "base/console.h"
#include "core/corpus_files.h"
#include "tables/ale_table.h"
#include "tables/db_table.h"
#include "tables/table_links.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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

inline std::string joined(const std::vector<std::string>& parts, const std::string& glue = "|") {
    std::string out;
    for (const auto& part : parts)
        out += (&part == parts.data() ? "" : glue) + part;
    return out;
}

// A row as "column=value|...", in the order of `cols` and then of any key outside them.
inline std::string shownRow(const RowData& row, const std::vector<std::string>& cols) {
    std::map<std::string, std::string> cells = row.toMap();
    std::vector<std::string> parts;
    for (const auto& col : cols) {
        if (auto it = cells.find(col); it != cells.end()) {
            parts.push_back(col + "=" + it->second);
            cells.erase(it);
        }
    }
    for (const auto& [col, value] : cells)
        parts.push_back(col + "=" + value);
    return joined(parts);
}

// A table in one line: its columns, then each row in brackets, "A|B [A=1|B=2] [A=3]".
inline std::string shown(const DBTable& table) {
    std::string out = joined(table.cols);
    for (const auto& entry : table.data)
        out += " [" + shownRow(entry.data, table.cols) + "]";
    return out;
}

// Reads every file of a folder (under the corpus, or a full path) quietly and compares its table with what
// `<folder>.expected` beside it, written by hand, says: "== <file>", then "name", "rows", "cols",
// "row <n> <shownRow>" (from 1) and "filled <column> <rows holding it>" lines, backslash-t for a tab. A file
// not described still gives rows; a described file missing fails.
template <typename Read> void expectTables(const std::string& folder, Read read) {
    std::map<std::string, std::vector<std::pair<std::string, std::string>>> described;
    std::ifstream in(lumbra::testing::corpusFile("", folder + ".expected"));
    std::string file;
    for (std::string line; std::getline(in, line);) {
        for (std::size_t at; (at = line.find("\\t")) != std::string::npos;)
            line.replace(at, 2, "\t");
        const std::size_t space = std::min(line.find(' '), line.size());
        const std::string key = line.substr(0, space), value = line.substr(std::min(space + 1, line.size()));
        if (key == "==")
            described[file = value];
        else if (!key.empty() && key[0] != '#')
            described[file].emplace_back(key, value);
    }
    for (const auto& path : lumbra::testing::corpusEntries(folder)) {
        const std::string name = path.filename().string();
        SCOPED_TRACE(name);
        base::PrintCapture capture;
        auto table = read(path.string());
        if (!table) {
            ADD_FAILURE() << "no table";
            continue;
        }
        EXPECT_TRUE(capture.lines().empty());
        auto it = described.find(name);
        EXPECT_TRUE(it != described.end() || !table->data.empty());
        for (const auto& [key, value] : it == described.end() ? decltype(it->second){} : it->second) {
            const std::size_t space = value.rfind(' ');
            if (key == "name")
                EXPECT_EQ(table->name, value);
            else if (key == "rows")
                EXPECT_EQ(std::to_string(table->data.size()), value);
            else if (key == "cols")
                EXPECT_EQ(joined(table->cols), value);
            else if (key == "filled")
                EXPECT_EQ(
                    std::count_if(table->data.begin(), table->data.end(),
                                  [&](const auto& e) { return e.data.contains(value.substr(0, space)); }),
                    std::stol(value.substr(space + 1)));
            else if (const std::size_t n = key == "row" ? std::stoul(value) : 0;
                     n == 0 || n > table->data.size())
                ADD_FAILURE() << "no row or an unknown line: " << key << " " << value;
            else
                EXPECT_EQ(shownRow(table->data[n - 1].data, table->cols),
                          value.substr(std::min(value.find(' '), value.size() - 1) + 1));
        }
        if (it != described.end())
            described.erase(it);
    }
    for (const auto& [name, lines] : described)
        ADD_FAILURE() << "described but missing: " << name;
}

} // namespace lumbra::tables::testing
