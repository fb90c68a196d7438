#pragma once

#include "table_test_support.h"
#include "tables/columns_layout.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <unistd.h>

namespace lumbra::tables::testing {

// Runs a scope without the rights of the super-user, so that the test's folders are read-only.
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

// Makes the folder read-only for as long as it lives (for a user without the super-user's rights).
class ReadOnly {
public:
    explicit ReadOnly(std::filesystem::path folder) : m_folder(std::move(folder)) {
        std::filesystem::permissions(m_folder,
                                     std::filesystem::perms::owner_write |
                                         std::filesystem::perms::group_write |
                                         std::filesystem::perms::others_write,
                                     std::filesystem::perm_options::remove);
    }
    ~ReadOnly() {
        std::error_code ec;
        std::filesystem::permissions(m_folder, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add, ec);
    }
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

private:
    std::filesystem::path m_folder;
};

// Every path under the folder, relative to it, folders with a "/" at the end.
inline std::set<std::string> listTree(const std::filesystem::path& root) {
    std::set<std::string> out;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        std::string rel = std::filesystem::relative(entry.path(), root).string();
        out.insert(entry.is_directory() ? rel + "/" : rel);
    }
    return out;
}

// Sets every file under the folder to a time long past and returns them all, so that a later
// comparison shows any file written since, however fast the test runs.
inline std::map<std::string, std::filesystem::file_time_type> ageFiles(const std::filesystem::path& root) {
    std::map<std::string, std::filesystem::file_time_type> out;
    auto past = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 400);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            std::filesystem::last_write_time(entry.path(), past);
            out.emplace(entry.path().string(), past);
        }
    }
    return out;
}

inline std::map<std::string, std::filesystem::file_time_type> fileTimes(const std::filesystem::path& root) {
    std::map<std::string, std::filesystem::file_time_type> out;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file())
            out.emplace(entry.path().string(), entry.last_write_time());
    }
    return out;
}

// A layout folder written by hand: details with the uuid and `<file>` with the text.
inline std::string writeLayoutFolder(const TempDir& dir, const std::string& folder, const std::string& uuid,
                                     const std::string& file, const std::string& text) {
    dir.write(folder + "/lumbra_details", uuid + "\n1700000000.0\n1700000100.5\nRed\n0.1");
    dir.write(folder + "/" + file, text);
    return dir.file(folder);
}

} // namespace lumbra::tables::testing
