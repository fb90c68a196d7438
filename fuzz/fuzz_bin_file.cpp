#include "base/console.h"
#include "base/text_file.h"
#include "import/ale_reader.h"
#include "project/bin.h"
#include "project/bin_file.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

std::unique_ptr<lumbra::project::Bin> newBin() {
    auto read = lumbra::import::parseALEText(
        "Heading\nFIELD_DELIM\tTABS\n\nColumn\nName\tTape\n\nData\nc1\tA001\n", "clips");
    return std::make_unique<lumbra::project::Bin>(std::move(read.table), nullptr, nullptr, true);
}

} // namespace

// Any bytes, decoded as the project reads a bin's .bin file, applied to a bin; what the bin then
// writes must read back to the very same text (see below for what the format cannot carry).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    auto bin = newBin();
    lumbra::project::applyBinFileText(*bin, text);
    const std::string written = lumbra::project::binFileText(*bin);
    auto again = newBin();
    lumbra::project::applyBinFileText(*again, written);
    // The format has no escapes: a double quote groups what stands up to the next one, line feeds
    // included, and a carriage return before a line feed goes. Text free of both must come back.
    if (text.find_first_of("\"\r") != std::string::npos)
        return 0;
    if (const std::string reread = lumbra::project::binFileText(*again); reread != written) {
        // Both texts, so that a crash file shows what changed on the second read.
        std::fprintf(stderr, "written:\n%s\nread back:\n%s\n", written.c_str(), reread.c_str());
        std::abort();
    }
    return 0;
}
