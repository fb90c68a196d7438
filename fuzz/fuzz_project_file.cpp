#include "base/console.h"
#include "base/text_file.h"
#include "project/project_file.h"
#include "project/shared_stuff.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// Any bytes, decoded as the project reads its tarelproject file, into a project's settings; the
// file the project then writes must read back to the very same text (see below for what it cannot carry).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace tables = lumbra::tables;
    namespace project = lumbra::project;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes), size));
    project::SharedStuff first;
    first.projectName = "fuzz";
    static_cast<void>(project::readProjectFileText(text, first));
    const std::string written = project::projectFileText(first);
    project::SharedStuff second;
    second.projectName = "fuzz";
    static_cast<void>(project::readProjectFileText(written, second));
    // The format has no escapes: a double quote groups what stands up to the next one, line feeds
    // included, and a carriage return before a line feed goes. Text free of both must come back.
    if (text.find_first_of("\"\r") != std::string::npos)
        return 0;
    if (const std::string reread = project::projectFileText(second); reread != written) {
        // Both texts, so that a crash file shows what changed on the second read.
        std::fprintf(stderr, "written:\n%s\nread back:\n%s\n", written.c_str(), reread.c_str());
        std::abort();
    }
    return 0;
}
