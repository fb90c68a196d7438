#include "project/project_archive.h"

#include "base/saveable.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>
#include <zip.h>

namespace lumbra::project {

namespace fs = std::filesystem;

namespace {

struct ArchiveDiscard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, ArchiveDiscard>;

std::string archiveError(zip_t* archive) {
    return zip_error_strerror(zip_get_error(archive));
}

// Every entry under the folder, relative, with "/" separators, folders first in each folder's
// name order, so that an archive of the same tree always lists the same entries in one order.
bool listEntries(const fs::path& root, std::vector<std::pair<std::string, bool>>& out, std::string* error) {
    std::error_code ec;
    std::vector<fs::path> paths;
    for (auto it = fs::recursive_directory_iterator(root, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
        paths.push_back(it->path());
    if (ec) {
        if (error)
            *error = ec.message();
        return false;
    }
    std::sort(paths.begin(), paths.end());
    for (const auto& path : paths) {
        std::error_code typeError;
        const bool isFolder = fs::is_directory(fs::symlink_status(path, typeError));
        out.emplace_back(fs::relative(path, root, typeError).generic_string(), isFolder);
    }
    return true;
}

bool fail(std::string* error, std::string text) {
    if (error)
        *error = std::move(text);
    return false;
}

} // namespace

bool zipFolder(const std::string& folder, const std::string& zipPath, std::string* error) {
    const fs::path root = fs::path(folder).lexically_normal();
    const std::string top = (root.has_filename() ? root.filename() : root.parent_path().filename()).string();
    std::vector<std::pair<std::string, bool>> entries;
    std::error_code ec;
    if (!fs::is_directory(root, ec))
        return fail(error, "not a folder: " + folder);
    if (!listEntries(root, entries, error))
        return false;

    // Written beside the target and renamed at the end: a failed archive never replaces a good one.
    const std::string partial = zipPath + ".part-" + base::makeUuid();
    int code = 0;
    Archive archive(zip_open(partial.c_str(), ZIP_CREATE | ZIP_EXCL, &code));
    if (!archive) {
        zip_error_t zipError;
        zip_error_init_with_code(&zipError, code);
        std::string text = zip_error_strerror(&zipError);
        zip_error_fini(&zipError);
        return fail(error, text);
    }
    if (zip_dir_add(archive.get(), top.c_str(), ZIP_FL_ENC_UTF_8) < 0)
        return fail(error, archiveError(archive.get()));
    for (const auto& [relative, isFolder] : entries) {
        const std::string name = top + "/" + relative;
        if (isFolder) {
            if (zip_dir_add(archive.get(), name.c_str(), ZIP_FL_ENC_UTF_8) < 0)
                return fail(error, archiveError(archive.get()));
            continue;
        }
        const std::string source = (root / relative).string();
        zip_source_t* data = zip_source_file(archive.get(), source.c_str(), 0, -1);
        if (!data)
            return fail(error, archiveError(archive.get()));
        if (zip_file_add(archive.get(), name.c_str(), data, ZIP_FL_ENC_UTF_8) < 0) {
            zip_source_free(data);
            return fail(error, archiveError(archive.get()));
        }
    }
    if (zip_close(archive.get()) < 0) {
        std::string text = archiveError(archive.get());
        fs::remove(partial, ec);
        return fail(error, text);
    }
    static_cast<void>(archive.release());
    fs::rename(partial, zipPath, ec);
    if (ec) {
        fs::remove(partial, ec);
        return fail(error, ec.message());
    }
    return true;
}

} // namespace lumbra::project
