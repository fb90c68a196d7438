#pragma once

#include <string>
#include <string_view>

namespace lumbra::project {

class Bin;

// Keys of the .bin file, in writing order. "title" is the older name of "tableid".
namespace binkeys {
inline constexpr std::string_view tableid = "tableid";
inline constexpr std::string_view title = "title";
inline constexpr std::string_view layout = "layout";
inline constexpr std::string_view displayname = "displayname";
inline constexpr std::string_view selected = "selected";
inline constexpr std::string_view tags = "tags";
inline constexpr std::string_view islock = "islock";
inline constexpr std::string_view locked = "locked";
inline constexpr std::string_view originalmeta_fps = "originalmeta_fps";
inline constexpr std::string_view originalmeta_filmformat = "originalmeta_filmformat";
inline constexpr std::string_view originalmeta_videoformat = "originalmeta_videoformat";
inline constexpr std::string_view originalmeta_audioformat = "originalmeta_audioformat";
inline constexpr std::string_view originalmeta_tape = "originalmeta_tape";
} // namespace binkeys

// The text of a bin's .bin file: one line per key, fields apart by one tab, no escaping.
[[nodiscard]] std::string binFileText(const Bin& bin);
// Applies the lines of a .bin file to the bin, in file order; unknown keys and keys that lack
// their value are passed over.
void applyBinFileText(Bin& bin, std::string_view text);

} // namespace lumbra::project
