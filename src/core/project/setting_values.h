#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace lumbra::project {

struct NewProjectSettings;

// Where a value entered by the user ends up, which decides what it may hold.
enum class SettingKind {
    // A frame rate: the FPS line of every bin's ALE heading, which keeps one word.
    frameRate,
    // A format or the tape id: a line of every bin's ALE heading and of the project file.
    heading,
    // A column name: the ALE column line, the .bin file and the project file.
    column,
    // A named property of the project: a line of the project file.
    property,
};

// Why `value` cannot be written to its files and read back the same, as a sentence that starts
// with `label` ("the tape id holds a double quote, …"); absent when it can.
[[nodiscard]] std::optional<std::string> unreadableValueReason(std::string_view label, std::string_view value,
                                                               SettingKind kind);

// The first value of a new project's settings that cannot be read back, with its reason; absent when
// all can.
[[nodiscard]] std::optional<std::string> unreadableSettingReason(const NewProjectSettings& settings);

// The first of the project's named properties, keys or values, that cannot be read back; absent when
// all can.
[[nodiscard]] std::optional<std::string>
unreadablePropertiesReason(const std::map<std::string, std::string>& properties);

} // namespace lumbra::project
