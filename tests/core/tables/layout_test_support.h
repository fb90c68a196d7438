#pragma once

#include "core/project/project_test_support.h"
#include "table_test_support.h"
#include "tables/columns_layout.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace lumbra::tables::testing {

using project::testing::fileTimes;
using project::testing::listTree;
using project::testing::Unprivileged;

// The folder is read-only for as long as this lives, and the scope runs without the super-user's
// rights so that it is read-only for root too.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(std::filesystem::path folder) : m_folder(std::move(folder)) {
        std::filesystem::permissions(m_folder, writeBits, std::filesystem::perm_options::remove);
        m_user.emplace();
    }
    ~ReadOnlyFolder() {
        m_user.reset();
        std::error_code ec;
        std::filesystem::permissions(m_folder, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add, ec);
    }
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

private:
    static constexpr auto writeBits = std::filesystem::perms::owner_write |
                                      std::filesystem::perms::group_write |
                                      std::filesystem::perms::others_write;
    std::filesystem::path m_folder;
    std::optional<Unprivileged> m_user;
};

// Sets every file under the folder to a time long past and returns the times, so that a later
// comparison shows any file written since, however fast the test runs.
inline auto ageFiles(const std::filesystem::path& root) {
    auto past = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 400);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file())
            std::filesystem::last_write_time(entry.path(), past);
    }
    return fileTimes(root);
}

// A layout folder written by hand: details with the uuid and `<file>` with the text.
inline std::string writeLayoutFolder(const TempDir& dir, const std::string& folder, const std::string& uuid,
                                     const std::string& file, const std::string& text) {
    dir.write(folder + "/lumbra_details", uuid + "\n1700000000.0\n1700000100.5\nRed\n0.1");
    dir.write(folder + "/" + file, text);
    return dir.file(folder);
}

// A layout in one line: its name, then each column with its width where it has one, "Cuts|Name|Start=100.5";
// widths of columns it does not list follow as "|~Absent=12".
inline std::string shownLayout(const ColumnsLayout& layout) {
    auto withWidth = [&](const std::string& column) {
        auto it = layout.colwidths.find(column);
        if (it == layout.colwidths.end())
            return column;
        char digits[32];
        return column + "=" + std::string(digits, std::to_chars(digits, digits + 32, it->second).ptr);
    };
    std::string out = layout.name;
    for (const auto& column : layout.columns)
        out += "|" + withWidth(column);
    for (const auto& [column, width] : layout.colwidths) {
        if (std::find(layout.columns.begin(), layout.columns.end(), column) == layout.columns.end())
            out += "|~" + withWidth(column);
    }
    return out;
}

} // namespace lumbra::tables::testing
