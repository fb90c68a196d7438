#include "base/console.h"
#include "base/text_file.h"
#include "import/mhl_parser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

// Any bytes, decoded as a file reader would, through the hash list scanner, its listing and a clip table.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    base::collapseCrLf(text);
    lumbra::tables::MHLTable table = lumbra::import::MHLParser(std::move(text)).parse();
    // A column is named once, and no row holds a key that is not a column.
    std::set<std::string> columns(table.cols.begin(), table.cols.end());
    if (columns.size() != table.cols.size())
        std::abort();
    for (const auto& entry : table.data) {
        for (const auto& cell : entry.data) {
            if (!columns.contains(tables::ColumnNames::name(cell.key)))
                std::abort();
        }
    }
    lumbra::import::printMHLTable(table);
    auto clips = std::move(table).toALETable();
    return 0;
}
