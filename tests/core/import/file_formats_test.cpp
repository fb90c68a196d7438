#include "import/file_formats.h"

#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

TEST(FileFormats, FormatIsChosenBySuffixInAnyCase) {
    struct Case {
        std::string name;
        std::string path;
        std::string expectedFormat; // "" for none
    };
    const std::vector<Case> cases{
        {"ale", "/bins/day1.ale", "ALE"},
        {"upper case", "/bins/DAY1.ALE", "ALE"},
        {"csv", "day1.Csv", "CSV"},
        {"tsv", "out/day1.tsv", "TSV"},
        {"last suffix counts", "day1.ale.csv", "CSV"},
        {"unknown", "day1.xlsx", ""},
        {"no suffix", "day1", ""},
        {"dot in a folder name only", "my.ale/day1", ""},
        {"hidden file", "/bins/.ale", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const import::FileFormat* format = import::formatForPath(c.path);
        EXPECT_EQ(format ? std::string(format->name) : std::string(), c.expectedFormat);
    }
}

} // namespace
} // namespace lumbra::tables
