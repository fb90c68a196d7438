#include "core/tables/table_test_support.h"
#include "import/mhl_parser.h"

#include <gtest/gtest.h>

namespace lumbra::import {
namespace {

// The real-world files and the hand-written ones.
TEST(MHLCorpus, EveryFileReadsAsItsExpectationsSay) {
    for (const std::string folder : {"mhl", LUMBRA_TEST_DATA_DIR "/mhl"})
        tables::testing::expectTables(folder, [](const std::string& path) { return parseMHLFile(path); });
}

} // namespace
} // namespace lumbra::import
