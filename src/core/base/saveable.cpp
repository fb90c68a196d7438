#include "base/saveable.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_file.h"
#include "base/text_helpers.h"

#include <array>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <random>

namespace lumbra::base {

namespace fs = std::filesystem;
using base::NotificationType;
using base::printLine;

namespace {

constexpr std::array<const char*, 7> tagNames = {"None", "Red", "Green", "Blue", "Yellow", "Pink", "Purple"};

std::string joinPath(const std::string& folder, std::string_view name) {
    return (fs::path(folder) / fs::path(name)).string();
}

} // namespace

const char* tagName(Tag tag) noexcept {
    return tagNames[static_cast<std::size_t>(tag)];
}

Tag tagFromName(std::string_view name) {
    std::string lower = base::lowercased(name);
    constexpr std::array<std::pair<const char*, Tag>, 6> known = {{{"red", Tag::red},
                                                                   {"blue", Tag::blue},
                                                                   {"green", Tag::green},
                                                                   {"yellow", Tag::yellow},
                                                                   {"pink", Tag::pink},
                                                                   {"purple", Tag::purple}}};
    for (const auto& [text, tag] : known) {
        if (lower == text)
            return tag;
    }
    return Tag::none;
}

double nowSeconds() {
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

std::string formatDecimal(double value) {
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    std::string out(buffer, ec == std::errc() ? end : buffer);
    if (out.find_first_of(".en") == std::string::npos)
        out += ".0";
    return out;
}

std::string makeUuid() {
    static std::mt19937_64 random{std::random_device{}()};
    std::array<unsigned char, 16> bytes{};
    for (std::size_t i = 0; i < 16; i += 8) {
        auto r = random();
        for (std::size_t k = 0; k < 8; ++k)
            bytes[i + k] = static_cast<unsigned char>(r >> (8 * k));
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            out.push_back('-');
        out.push_back(digits[bytes[i] >> 4]);
        out.push_back(digits[bytes[i] & 0x0F]);
    }
    return out;
}

Saveable::Saveable() : created(nowSeconds()), modified(created) {
}

const std::string& Saveable::uuid() {
    if (!m_uuid)
        m_uuid = makeUuid();
    return *m_uuid;
}

bool Saveable::writeDetails(const std::string& folder, Notifications* notifications) {
    std::string path = joinPath(folder, detailsFileName);
    std::string text = uuid() + "\n" + formatDecimal(created) + "\n" + formatDecimal(modified) + "\n" +
                       tagName(tag) + "\n" + LUMBRA_BUILD;
    if (!base::writeFileAtomically(path, text)) {
        printLine("Error while writing to " + path);
        if (notifications)
            notifications->emplace_back("UUID file writing", "Error writing to " + path,
                                        NotificationType::KO);
        return false;
    }
    return true;
}

bool Saveable::createFolder(const std::string& folder, Notifications* notifications) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec || !fs::is_directory(folder, ec)) {
        printLine("ERROR: cannot create " + folder);
        if (notifications)
            notifications->emplace_back("Folder creation error", "cannot create " + folder,
                                        NotificationType::KO);
        return false;
    }
    return true;
}

bool Saveable::save(const std::string& folder, bool isCopy, Notifications* notifications) {
    if (!createFolder(folder, notifications))
        return false;
    bool same = readDetailsLine(folder, 1) == uuid() &&
                readDetailsLine(folder, 3) == formatDecimal(modified) &&
                readDetailsLine(folder, 4) == tagName(tag);
    if (!same && !writeDetails(folder, notifications))
        return false;
    if (!isCopy)
        hasChanged = false;
    return true;
}

bool Saveable::load(const std::string& folder, Notifications* notifications) {
    if (auto id = readDetailsLine(folder, 1)) {
        m_uuid = *id;
    } else if (!writeDetails(folder, notifications) && notifications) {
        notifications->emplace_back("UUID problem",
                                    "Tried to create lumbra_details file at " + folder + " (and failed)",
                                    NotificationType::KO);
    }
    auto date = [&](std::size_t line, double& field) {
        if (auto text = readDetailsLine(folder, line)) {
            auto value = base::parseDecimal(*text);
            field = value ? *value : nowSeconds();
        }
    };
    date(2, created);
    date(3, modified);
    if (auto t = readDetailsLine(folder, 4))
        tag = tagFromName(*t);
    hasChanged = false;
    return true;
}

std::optional<std::string> readDetailsLine(const std::string& folder, std::size_t n) {
    std::string path = joinPath(folder, Saveable::detailsFileName);
    std::error_code ec;
    if (n == 0 || !fs::is_regular_file(path, ec))
        return std::nullopt;
    auto text = base::readTextFile(path);
    if (!text)
        return std::nullopt;
    auto lines = base::tokenise(*text, "\n");
    if (lines.size() < n)
        return std::nullopt;
    std::string line = base::trimRight(base::trimLeft(lines[n - 1], " \n\r"), " \n\r");
    if (line.empty())
        return std::nullopt;
    return line;
}

std::optional<std::string> findFolder(std::string_view uuid, const std::string& under) {
    if (readDetailsLine(under, 1) == uuid)
        return under;
    std::error_code ec;
    fs::directory_iterator it(under, ec);
    if (ec)
        return std::nullopt;
    for (const auto& entry : it) {
        std::error_code typeError;
        if (!entry.is_directory(typeError) || entry.is_symlink(typeError))
            continue;
        if (auto hit = findFolder(uuid, entry.path().string()))
            return hit;
    }
    return std::nullopt;
}

namespace {

void indexFolder(const std::string& folder, int depth, std::unordered_map<std::string, std::string>& index,
                 std::vector<std::string>* direct) {
    if (auto uuid = readDetailsLine(folder, 1)) {
        if (depth == 1 && direct)
            direct->push_back(*uuid);
        index.emplace(std::move(*uuid), folder);
    }
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec)
        return;
    for (const auto& entry : it) {
        std::error_code typeError;
        if (entry.is_directory(typeError) && !entry.is_symlink(typeError))
            indexFolder(entry.path().string(), depth + 1, index, direct);
    }
}

} // namespace

std::unordered_map<std::string, std::string> folderIndex(const std::string& under,
                                                         std::vector<std::string>* direct) {
    std::unordered_map<std::string, std::string> index;
    indexFolder(under, 0, index, direct);
    return index;
}

std::optional<std::string> findFile(const std::string& folder, std::string_view suffix,
                                    Notifications* notifications, bool warn) {
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        printLine("ERROR loading from " + folder);
        if (notifications)
            notifications->emplace_back("Loading error", "Error loading file list from " + folder,
                                        NotificationType::KO);
        return std::nullopt;
    }
    for (const auto& entry : it) {
        std::string path = entry.path().string();
        if (hasSuffix(path, suffix))
            return path;
    }
    if (warn) {
        printLine("ERROR: no " + std::string(suffix) + " file in " + folder);
        if (notifications)
            notifications->emplace_back("Loading error", "No " + std::string(suffix) + " file in " + folder,
                                        NotificationType::KO);
    }
    return std::nullopt;
}

} // namespace lumbra::base
