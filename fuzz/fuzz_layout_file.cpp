#include "base/console.h"
#include "base/text_file.h"
#include "tables/columns_layout.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// Any bytes, decoded as the project reads a .layout file, into a layout; its file and folder names
// are made, and the text it then writes must read back to the very same text (see below for what it
// cannot carry).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    tables::ColumnsLayout layout("");
    layout.readLayoutText(text);
    static_cast<void>(layout.fileName());
    static_cast<void>(layout.folderName());
    const std::string written = layout.layoutText();
    tables::ColumnsLayout again("");
    again.readLayoutText(written);
    // The format has no escapes: a double quote groups what stands up to the next one, line feeds
    // included, and a carriage return before a line feed goes. Text free of both must come back.
    if (text.find_first_of("\"\r") != std::string::npos)
        return 0;
    if (const std::string reread = again.layoutText(); reread != written) {
        // Both texts, so that a crash file shows what changed on the second read.
        std::fprintf(stderr, "written:\n%s\nread back:\n%s\n", written.c_str(), reread.c_str());
        std::abort();
    }
    return 0;
}
