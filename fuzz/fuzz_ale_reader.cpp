#include "base/console.h"
#include "base/text_file.h"
#include "import/ale_reader.h"
#include "import/ale_writer.h"
#include "import/csv_writer.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Any bytes, decoded as a file reader would, through the ALE parser and back out through both writers.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace import = lumbra::import;
    namespace base = lumbra::base;
    // The reader's warnings would flood the fuzzer's output.
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    auto read = import::parseALEText(std::move(text), "fuzz");
    std::string ale = import::aleText(*read.table, {}, false);
    std::string csv = import::csvText(*read.table, ",", true, {}, false);
    // Asking for unknown and repeated columns must also write cleanly.
    std::string some = import::csvText(*read.table, "\t", false, {"Name", "Name", "newcol_001", ""}, true);
    // What the writer made is read again: it must parse without harm whatever the first read gave.
    auto again = import::parseALEText(std::move(ale), "again");
    return 0;
}
