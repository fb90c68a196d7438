#include "base/console.h"
#include "base/text_file.h"
#include "tables/ale_table.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Any bytes, decoded as a file reader would, through the ALE parser and back out through both writers.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    // The reader's warnings would flood the fuzzer's output.
    base::PrintCapture quiet;
    std::string text(reinterpret_cast<const char*>(bytes), size);
    if (!base::decodeText(text))
        text = base::decodeLatin1(text);
    auto table = tables::ALETable::fromText(std::move(text), "fuzz");
    std::string ale = table.aleText({}, false);
    std::string csv = table.csvText(",", true, {}, false);
    // Asking for unknown and repeated columns must also write cleanly.
    std::string some = table.csvText("\t", false, {"Name", "Name", "newcol_001", ""}, true);
    // What the writer made is read again: it must parse without harm whatever the first read gave.
    auto again = tables::ALETable::fromText(std::move(ale), "again");
    return 0;
}
