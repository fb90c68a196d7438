#include "import/file_formats.h"

#include "base/text_helpers.h"
#include "import/ale_reader.h"
#include "import/ale_writer.h"
#include "import/ccc_parser.h"
#include "import/csv_parser.h"
#include "import/csv_writer.h"
#include "import/edl_parser.h"
#include "import/mhl_parser.h"

#include <array>

namespace lumbra::import {

namespace {

ReadResult readALEFile(const std::string& path, base::Notifications* notifications) {
    return readALE(path, notifications);
}

bool writeALE(const ALETable& table, const std::string& path, const WriteOptions& options,
              std::string* reason) {
    // Writing to a file the user named replaces it, as any save-as does once confirmed; an ALE
    // file always carries its heading, so withMetadata has nothing to add.
    return saveALE(table, path, options.columns, true, options.omitFilmFormat, reason);
}

bool writeCSV(const ALETable& table, const std::string& path, const WriteOptions& options,
              std::string* reason) {
    return saveCSV(table, path, ",", options.withMetadata, options.columns, true, options.omitFilmFormat,
                   reason);
}

bool writeTSV(const ALETable& table, const std::string& path, const WriteOptions& options,
              std::string* reason) {
    return saveCSV(table, path, "\t", options.withMetadata, options.columns, true, options.omitFilmFormat,
                   reason);
}

constexpr std::array<FileFormat, 6> formats{{
    {"ALE", ".ale", readALEFile, writeALE},
    {"CSV", ".csv", import::readCSVAsALETable, writeCSV, import::readCSVAsALETable},
    {"TSV", ".tsv", import::readCSVAsALETable, writeTSV, import::readCSVAsALETable},
    {"EDL", ".edl", import::readEDLAsALETable, nullptr},
    {"CCC", ".ccc", import::readCCCAsALETable, nullptr},
    {"MHL", ".mhl", import::readMHLAsALETable, nullptr},
}};

} // namespace

std::span<const FileFormat> fileFormats() {
    return formats;
}

std::string_view pathSuffix(std::string_view path) {
    auto slash = path.rfind('/');
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    auto dot = name.rfind('.');
    // A leading dot names a hidden file, not a suffix.
    if (dot == std::string_view::npos || dot == 0)
        return {};
    return name.substr(dot);
}

const FileFormat* formatForPath(std::string_view path) {
    std::string suffix = base::lowercased(pathSuffix(path));
    for (const auto& format : formats) {
        if (format.suffix == suffix)
            return &format;
    }
    return nullptr;
}

} // namespace lumbra::import
