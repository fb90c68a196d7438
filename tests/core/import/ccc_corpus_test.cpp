#include "base/console.h"
#include "core/corpus_files.h"
#include "import/ccc_parser.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace lumbra::import {
namespace {

using Row = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

using lumbra::testing::corpusEntries;

struct CccFile {
    const char* name;
    std::vector<Row> rows;
};

// Read by eye: descriptions of the collection itself stand outside every correction; of several
// descriptions in a correction the first counts; an empty and a missing id both read "".
const CccFile kCccFiles[] = {
    {"AcademySoftwareFoundation_OpenColorIO__cdl_test1.ccc",
     {
         {{"id", "cc0001"},
          {"ASC_SOP", "(1.0 1.0 0.9)(-.03 -2e-2 0)(1.25 1 1e0)"},
          {"ASC_SAT", "1.700000"},
          {"Description", "CC-level description 1a"}},
         {{"id", "cc0002"},
          {"ASC_SOP", "(0.9000 0.700 0.6000)(0.100 0.100 0.100)(0.9 0.9 0.9)"},
          {"ASC_SAT", "0.7"},
          {"Description", "CC-level description 2a"}},
         {{"id", "cc0003"},
          {"ASC_SOP", "(1.2000 1.1000 1.0000)(0.000 0.0000 0.0000)(0.9 1.0 1.2)"},
          {"ASC_SAT", "1.000000"},
          {"Description", "CC-level description 3"}},
         {{"id", ""}, {"ASC_SOP", "(4.000 5.000 6.0000)(0.000 0.0000 0.0000)(0.9 1.0 1.2)"}, {"ASC_SAT", ""}},
         {{"id", ""}, {"ASC_SOP", "()()()"}, {"ASC_SAT", ".000000"}},
     }},
    {"AcademySoftwareFoundation_OpenColorIO__cdl_test_cc_file_with_extension.ccc",
     {
         {{"id", ""},
          {"ASC_SOP", "(1.00000 1.00000 1.00000)(0.00000 0.00000 0.00000)(1.00000 1.00000 1.00000)"},
          {"ASC_SAT", "1.00000"},
          {"Description", "No Op CDL"}},
     }},
};

TEST(CCCCorpus, EveryFileLoads) {
    std::size_t seen = 0;
    for (const auto& path : corpusEntries("ccc")) {
        const std::string name = path.filename().string();
        SCOPED_TRACE(name);
        base::PrintCapture capture;
        auto table = CCCParser::parseCCCFile(path.string());
        ASSERT_TRUE(table);
        EXPECT_TRUE(capture.lines().empty());
        EXPECT_EQ(table->name, name.substr(0, name.size() - 4));
        for (const auto& f : kCccFiles) {
            if (name != f.name)
                continue;
            ++seen;
            EXPECT_EQ(table->cols, (Names{"id", "ASC_SOP", "ASC_SAT", "Description"}));
            std::vector<Row> rows;
            for (const auto& entry : table->data)
                rows.push_back(entry.data.toMap());
            EXPECT_EQ(rows, f.rows);
        }
    }
    EXPECT_EQ(seen, std::size(kCccFiles));
}

} // namespace
} // namespace lumbra::import
