#include "project/interrupted_writes.h"

#include "base/console.h"
#include "base/text_file.h"

#include <filesystem>

namespace lumbra::project {

namespace fs = std::filesystem;
using base::NotificationType;
using base::printLine;

InterruptedWrites finishInterruptedWrites(const std::string& projectFolder,
                                          base::Notifications* notifications) {
    InterruptedWrites out;
    std::vector<std::pair<fs::path, base::TemporaryFileName>> found;
    std::error_code ec;
    const auto options = fs::directory_options::skip_permission_denied;
    for (auto it = fs::recursive_directory_iterator(projectFolder, options, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
        std::error_code typeError;
        if (!it->is_regular_file(typeError) || it->is_symlink(typeError))
            continue;
        if (auto name = base::parseTemporaryFileName(it->path().filename().string()))
            found.emplace_back(it->path(), std::move(*name));
    }
    // Renamed and removed after the walk, which must not see its folders change under it.
    for (const auto& [temp, name] : found) {
        const fs::path target = temp.parent_path() / name.target;
        std::error_code fileError;
        if (fs::exists(target, fileError) || fs::is_symlink(target, fileError)) {
            if (fs::remove(temp, fileError))
                out.removed.push_back(temp.string());
            continue;
        }
        const auto size = fs::file_size(temp, fileError);
        if (!fileError && name.size && size == *name.size) {
            fs::rename(temp, target, fileError);
            if (!fileError) {
                printLine("Recovered " + target.string());
                out.recovered.push_back(target.string());
                if (notifications)
                    notifications->emplace_back("File recovered",
                                                "Recovered " + target.string() +
                                                    " from the complete copy that an interrupted save left",
                                                NotificationType::WARNING);
                continue;
            }
        }
        printLine("ERROR: " + target.string() + " was never written whole; its partial copy is kept in " +
                  temp.string());
        out.incomplete.push_back(temp.string());
        if (notifications)
            notifications->emplace_back(
                "Interrupted save",
                target.string() + " was never written whole; its partial copy is kept in " + temp.string(),
                NotificationType::KO);
    }
    return out;
}

} // namespace lumbra::project
