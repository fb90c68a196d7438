#include "project/setting_values.h"

#include "project/project_creation.h"

namespace lumbra::project {

std::optional<std::string> unreadableValueReason(std::string_view label, std::string_view value,
                                                 SettingKind kind) {
    const std::string name(label);
    // Tabs and line ends cut every file of the project into fields and lines.
    if (value.find('\t') != std::string_view::npos)
        return name + " holds a tab, which the project's files use between values";
    if (value.find_first_of("\r\n") != std::string_view::npos)
        return name + " holds a line break, which the project's files use between lines";
    if (kind == SettingKind::property)
        return std::nullopt;
    // The ALE reader takes a double quote as the start of a quoted text running to the next one.
    if (value.find('"') != std::string_view::npos)
        return name + " holds a double quote (\"), which the bins' ALE files cannot keep";
    if (kind == SettingKind::column)
        return std::nullopt;
    if (kind == SettingKind::frameRate && value.find(' ') != std::string_view::npos)
        return name + " holds a blank, and the bins' ALE files keep a frame rate as one word";
    // The heading reader trims the end of its lines.
    if (!value.empty() && value.back() == ' ')
        return name + " ends with a blank, which the bins' ALE files do not keep";
    return std::nullopt;
}

std::optional<std::string> unreadableSettingReason(const NewProjectSettings& settings) {
    const std::pair<const char*, const std::string*> headings[] = {{"the resolution", &settings.tlResolution},
                                                                   {"the sound rate", &settings.sound},
                                                                   {"the tape id", &settings.tapeId}};
    if (auto reason = unreadableValueReason("the frame rate", settings.fps, SettingKind::frameRate))
        return reason;
    for (const auto& [label, value] : headings) {
        if (auto reason = unreadableValueReason(label, *value, SettingKind::heading))
            return reason;
    }
    if (settings.filmFormat) {
        if (auto reason =
                unreadableValueReason("the film format", *settings.filmFormat, SettingKind::heading))
            return reason;
    }
    for (const auto& column : settings.columns) {
        if (auto reason = unreadableValueReason("the column name " + column, column, SettingKind::column))
            return reason;
    }
    return std::nullopt;
}

std::optional<std::string> unreadablePropertiesReason(const std::map<std::string, std::string>& properties) {
    for (const auto& [key, value] : properties) {
        if (auto reason = unreadableValueReason("the property name " + key, key, SettingKind::property))
            return reason;
        if (auto reason = unreadableValueReason("the property " + key, value, SettingKind::property))
            return reason;
    }
    return std::nullopt;
}

} // namespace lumbra::project
