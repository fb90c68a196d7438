#include "base/console.h"
#include "base/saveable.h"
#include "project/bins_tree_loader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

// The fuzzing process's own folder, removed when it exits.
std::filesystem::path processFolder() {
    return std::filesystem::temp_directory_path() / ("lumbra-fuzz-" + std::to_string(::getpid()));
}

} // namespace

// Any bytes as the lumbra_details file of a folder, read by a saveable's load, line by line, by the
// folder naming and by the uuid index of a tree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace fs = std::filesystem;
    namespace project = lumbra::project;
    namespace base = lumbra::base;
    lumbra::base::PrintCapture quiet;
    // One folder per fuzzing process, named as a saved object's folder is.
    static const fs::path folder = [] {
        fs::path path = processFolder() / "Bin - 01234567-89AB-CDEF-0123-456789ABCDEF";
        fs::create_directories(path);
        std::atexit([] {
            std::error_code ec;
            fs::remove_all(processFolder(), ec);
        });
        return path;
    }();
    std::ofstream(folder / base::Saveable::detailsFileName, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    base::Saveable saveable;
    lumbra::base::Notifications notifications;
    saveable.load(folder.string(), &notifications);
    for (std::size_t line = 0; line <= 5; ++line)
        static_cast<void>(base::readDetailsLine(folder.string(), line));
    static_cast<void>(project::nameOfFolder(folder.string()));
    static_cast<void>(base::folderIndex(folder.parent_path().string()));
    return 0;
}
