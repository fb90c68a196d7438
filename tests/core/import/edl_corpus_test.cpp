#include "core/tables/table_test_support.h"
#include "import/edl_parser.h"
#include "import/file_formats.h"

#include <gtest/gtest.h>

namespace lumbra::import {
namespace {

// The real-world files and the hand-written ones.
TEST(EDLCorpus, EveryFileReadsAsItsExpectationsSay) {
    for (const std::string folder : {"edl", LUMBRA_TEST_DATA_DIR "/edl"})
        tables::testing::expectTables(folder, [](const std::string& path) {
            auto table = parseEDLFile(path);
            // Every event makes a row with an id and a name, under the six columns of an event first.
            for (std::size_t i = 0; table && i < table->data.size(); ++i)
                EXPECT_TRUE(table->data[i].data.contains("Id") && table->data[i].data.contains("Name"));
            EXPECT_TRUE(
                !table ||
                tables::testing::joined(table->cols).starts_with("Id|Name|Start|End|Record_In|Record_Out"));
            return table;
        });
}

TEST(EDLCorpus, ColourListsHaveNoReaderOfTheirOwn) {
    for (const auto& path : lumbra::testing::corpusEntries("cdl")) {
        SCOPED_TRACE(path.filename().string());
        EXPECT_EQ(import::formatForPath(path.string()), nullptr);
    }
}

} // namespace
} // namespace lumbra::import
