#pragma once

#include "base/notification.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lumbra::base {

using base::Notifications;

// Colour tag of a saveable or a row; ordering by tag compares the numbers.
enum class Tag { none = 0, red = 1, green = 2, blue = 3, yellow = 4, pink = 5, purple = 6 };

// "None", "Red", ... as written to files.
[[nodiscard]] const char* tagName(Tag tag) noexcept;
// Case-insensitive; anything unknown is `none`.
[[nodiscard]] Tag tagFromName(std::string_view name);

// Seconds since 1970, now.
[[nodiscard]] double nowSeconds();
// A decimal in the shortest form that reads back the same; whole numbers end in ".0".
[[nodiscard]] std::string formatDecimal(double value);
// A new random UUID in canonical form with upper-case digits.
[[nodiscard]] std::string makeUuid();

// The root of everything that has a folder of its own in a project. The folder holds
// `lumbra_details` with the uuid, the two dates and the tag; folder names may change freely.
class Saveable {
public:
    Saveable();
    virtual ~Saveable() = default;
    Saveable(const Saveable&) = default;
    Saveable& operator=(const Saveable&) = default;

    // Made on first request, then kept.
    [[nodiscard]] const std::string& uuid();
    void setUuid(std::string uuid) { m_uuid = std::move(uuid); }
    [[nodiscard]] bool hasUuid() const noexcept { return m_uuid.has_value(); }

    // Writes the five lines of `lumbra_details`; false with a message and a notification on failure.
    virtual bool writeDetails(const std::string& folder, Notifications* notifications);
    // Creates the folder and writes the details unless they already say the same.
    virtual bool save(const std::string& folder, bool isCopy, Notifications* notifications);
    // Creates the folder with its parents; false with a "Folder creation error" notification.
    static bool createFolder(const std::string& folder, Notifications* notifications);
    // Reads the details; a folder without them gets a new uuid written at once. Never fails.
    virtual bool load(const std::string& folder, Notifications* notifications);

    bool hasChanged = true;
    double created;
    double modified;
    Tag tag = Tag::none;

    static constexpr const char* detailsFileName = "lumbra_details";

private:
    std::optional<std::string> m_uuid;
};

// Line n (from 1) of the folder's `lumbra_details`; absent when missing, short, or blank.
[[nodiscard]] std::optional<std::string> readDetailsLine(const std::string& folder, std::size_t n);
// Depth first: the folder under `under` (itself included) whose details name this uuid.
[[nodiscard]] std::optional<std::string> findFolder(std::string_view uuid, const std::string& under);
// What findFolder answers for every uuid at or under `under`, from one walk in its order (the folder
// itself, then each subfolder depth first; the first folder of a uuid wins), so that many lookups cost
// one read per folder. `direct`, when given, receives the uuids of the folders right under `under`.
[[nodiscard]] std::unordered_map<std::string, std::string>
folderIndex(const std::string& under, std::vector<std::string>* direct = nullptr);
// The first entry of the folder whose lower-cased path ends in `suffix`; absent with messages
// when the folder cannot be listed, or (if `warn`) when nothing matches.
[[nodiscard]] std::optional<std::string> findFile(const std::string& folder, std::string_view suffix,
                                                  Notifications* notifications, bool warn);

} // namespace lumbra::base
