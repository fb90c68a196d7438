#include "base/console.h"
#include "core/corpus_files.h"
#include "import/mhl_parser.h"

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

// Read by eye: how many hash blocks, the child names in order of first appearance, the first block.
struct MhlFile {
    const char* name;
    std::size_t rows;
    Names cols;
    Row firstRow;
};

const Names kMixedCols{"file", "size", "lastmodificationdate", "md5", "hashdate"};
const Row kMixedFirstRow{
    {"file", "mixed_\u043A\u043E\u0440\u0435\u0439\u0441\u043A\u0438\u0439_\uD55C\uAD6D\uC758_dir/"
             "\uD55C\uAD6D\uC5B4\uC758\uD30C\uC77C"},
    {"size", "277"},
    {"lastmodificationdate", "2012-12-14 14-48-50"},
    {"md5", "d29593e2cf81c621fb3c4089f9bbde4a"},
    {"hashdate", "2012-12-14 16-54-27"}};

const MhlFile kMhlFiles[] = {
    {"pomfort_mhl-tool__mhl_verify_machinereadable_generic.mhl",
     6,
     {"file", "size", "lastmodificationdate", "md5", "hashdate", "sha1", "xxhash", "xxhash64", "xxhash64be",
      "null"},
     {{"file", "file1.txt"},
      {"size", "305"},
      {"lastmodificationdate", "2016-04-18T14:45:29Z"},
      {"md5", "9a83a5d3846361c721515b94189e70a0"},
      {"hashdate", "2016-04-18T14:47:22Z"}}},
    {"pomfort_mhl-tool__mhl_verify_xxhash64_xxhash64.mhl",
     3,
     {"file", "size", "lastmodificationdate", "xxhash64", "hashdate"},
     {{"file", "file0.txt"},
      {"size", "555"},
      {"lastmodificationdate", "2016-04-18T14:45:35Z"},
      {"xxhash64", "e338d99e661114f6"},
      {"hashdate", "2016-04-18T14:47:48Z"}}},
    {"pomfort_mhl-tool__mhl_verify_multiple_multiple.mhl",
     3,
     {"file", "size", "lastmodificationdate", "sha1", "md5", "hashdate", "xxhash64be"},
     {{"file", "file0.txt"},
      {"size", "555"},
      {"lastmodificationdate", "2016-04-18T14:45:25Z"},
      {"sha1", "64b18391ceb254455bc3dfe1200cbfa134fa1a3f"},
      {"md5", "91cae4eeb20d47ca70abbbf058a74e80"},
      {"hashdate", "2016-04-18T14:46:45Z"}}},
    // ISO 8859-15 without a byte order mark reads as ISO Latin 1, which holds these letters alike.
    {"pomfort_mhl-tool__aux_files_iso-8859-15_unixln_Umlaute_2012-12-15_174005.mhl",
     3,
     {"file", "size", "lastmodificationdate", "md5", "hashdate"},
     {{"file", "Umlaute_und_so_weiter_dir/CAF\u00c9.txt"},
      {"size", "277"},
      {"lastmodificationdate", "2012-12-14 16-36-15"},
      {"md5", "d29593e2cf81c621fb3c4089f9bbde4a"},
      {"hashdate", "2012-12-15 17-40-05"}}},
    // UTF-16 without a byte order mark, with Windows and with lone carriage return line ends.
    {"pomfort_mhl-tool__aux_files_utf-16be_winln_mixed_2012-12-14_165427.mhl", 14, kMixedCols,
     kMixedFirstRow},
    {"pomfort_mhl-tool__aux_files_utf-16le_macln_mixed_2012-12-14_165427.mhl", 14, kMixedCols,
     kMixedFirstRow},
    // The second generation of lists: the path is a child like any other, its attributes unread.
    {"ascmitc_mhl__0001_TEST01_2019-10-11_155603.mhl",
     3,
     {"path", "xxh64", "metadata"},
     {{"path", "Clips/A002C006_141024_R2EC.mov"}, {"xxh64", "0ea03b369a463d9d"}}},
};

TEST(MHLCorpus, EveryFileLoads) {
    std::map<std::string, const MhlFile*> described;
    for (const auto& f : kMhlFiles)
        described[f.name] = &f;
    std::size_t seen = 0;
    for (const auto& path : corpusEntries("mhl")) {
        const std::string name = path.filename().string();
        SCOPED_TRACE(name);
        base::PrintCapture capture;
        auto table = parseMHLFile(path.string());
        ASSERT_TRUE(table);
        EXPECT_TRUE(capture.lines().empty());
        EXPECT_EQ(table->name, name.substr(0, name.size() - 4));

        auto it = described.find(name);
        if (it == described.end()) {
            EXPECT_FALSE(table->data.empty());
            continue;
        }
        ++seen;
        const MhlFile& f = *it->second;
        EXPECT_EQ(table->data.size(), f.rows);
        EXPECT_EQ(table->cols, f.cols);
        if (f.rows > 0) {
            EXPECT_EQ(table->data.front().data.toMap(), f.firstRow);
        }
    }
    EXPECT_EQ(seen, std::size(kMhlFiles));
}

} // namespace
} // namespace lumbra::import
