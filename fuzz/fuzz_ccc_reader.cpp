#include "base/console.h"
#include "base/text_file.h"
#include "import/ccc_parser.h"
#include "import/csv_writer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

// Any bytes, decoded as a file reader would, through the colour tag scanner and into a clip table.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    lumbra::tables::CCCTable table = lumbra::import::CCCParser::parseText(text);
    // Every row carries its three values; the SOP text always has its three pairs of brackets.
    for (const auto& entry : table.data) {
        const auto sop = entry.data.find("ASC_SOP");
        if (!sop || !entry.data.contains("id") || !entry.data.contains("ASC_SAT") || !sop->starts_with('(') ||
            !sop->ends_with(')'))
            std::abort();
    }
    std::string id = lumbra::import::tagAttribute(text, "id");
    auto clips = std::move(table).toALETable();
    std::string csv = lumbra::import::csvText(*clips, ",", false, {}, false);
    return 0;
}
