#include "base/console.h"
#include "base/text_file.h"
#include "import/ale_writer.h"
#include "import/edl_parser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

// Any bytes, decoded as a file reader would, through the event scanner and into a clip table.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    lumbra::tables::EDLTable table = lumbra::import::EDLParser(std::move(text)).parse();
    // Columns are named once each, and every row stands on an Id and a Name.
    if (std::set<std::string>(table.cols.begin(), table.cols.end()).size() != table.cols.size())
        std::abort();
    for (const auto& entry : table.data) {
        if (!entry.data.contains("Id") || !entry.data.contains("Name"))
            std::abort();
    }
    auto clips = std::move(table).toALETable();
    std::string ale = lumbra::import::aleText(*clips, {}, false);
    return 0;
}
