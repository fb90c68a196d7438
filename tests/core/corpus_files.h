#pragma once

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <system_error>
#include <vector>

namespace lumbra::testing {

// The real-world files kept with the sources; a clone with a file or folder missing fails, never crashes.
inline const std::filesystem::path kCorpus = LUMBRA_CORPUS_DIR;

// The entries of a corpus folder ("" for the corpus itself), sorted; a missing or empty folder fails the
// test.
inline std::vector<std::filesystem::path> corpusEntries(const std::string& folder) {
    const std::filesystem::path dir = kCorpus / folder;
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator it(dir, error), end; !error && it != end; it.increment(error))
        entries.push_back(it->path());
    EXPECT_FALSE(error) << "cannot list corpus folder " << dir << ": " << error.message();
    EXPECT_FALSE(entries.empty()) << "no files in corpus folder " << dir;
    std::sort(entries.begin(), entries.end());
    return entries;
}

// The path of one corpus file; a missing file fails the test.
inline std::string corpusFile(const std::string& folder, const std::string& name) {
    const std::filesystem::path path = kCorpus / folder / name;
    EXPECT_TRUE(std::filesystem::is_regular_file(path)) << "missing corpus file " << path;
    return path.string();
}

} // namespace lumbra::testing
