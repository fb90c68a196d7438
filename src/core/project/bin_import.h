#pragma once

#include "base/notification.h"
#include "import/read_result.h"

#include <string>
#include <string_view>
#include <vector>

namespace lumbra::project {

class Bin;
class BinsTreeEntry;
class SharedStuff;

// Where added bins go: the node they were dropped on (a group takes them, a bin hands them to its
// group; none means the top of the tree) and the place in that group (-1: after the last child).
struct ImportTarget {
    BinsTreeEntry* item = nullptr;
    long index = -1;
};

// Bins whose heading values differ from the project's in the same set of values.
struct MismatchGroup {
    // Short names in a fixed order: "fps", "ff", "vf", "af", "tape".
    std::vector<std::string> differences;
    std::vector<Bin*> bins; // do not own
};

struct BinImportResult {
    std::vector<Bin*> bins; // the bins added, in the order of the files; do not own
    std::vector<MismatchGroup> mismatches;
    // The files whose reader refused them, in order, each with why ("no \"Column\" line").
    std::vector<import::ReadFailure> failures;
    // The notifications of the batch, as they were handed to the user.
    base::Notifications notifications;
};

// The suffix the import goes by: the last four characters of the path, seven for ".fcpxml", in lower case.
[[nodiscard]] std::string importExtension(std::string_view path);

// One bin per readable file, as files dropped on the bins list: the reader chosen by suffix, the
// name made free in both trees, the project's heading values over the file's (kept as the bin's
// original values), the first maxShowBinToImport bins opened. A file that cannot be read logs
// "ERROR while opening <path>: <why>" and the batch goes on; unknown suffixes are skipped silently.
// Ends with the dirty rule when a bin was added, and the delegates' lists reloaded.
BinImportResult addBinsFromFiles(SharedStuff& sharedstuff, const std::vector<std::string>& paths,
                                 ImportTarget target = {});

} // namespace lumbra::project
