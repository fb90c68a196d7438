#include "core/tables/table_test_support.h"
#include "import/ccc_parser.h"

#include <gtest/gtest.h>

namespace lumbra::import {
namespace {

// The real-world files and the hand-written ones.
TEST(CCCCorpus, EveryFileReadsAsItsExpectationsSay) {
    for (const std::string folder : {"ccc", LUMBRA_TEST_DATA_DIR "/ccc"})
        tables::testing::expectTables(folder,
                                      [](const std::string& path) { return CCCParser::parseCCCFile(path); });
}

} // namespace
} // namespace lumbra::import
