#include "project/project_creation.h"

#include "import/ale_reader.h"
#include "project/project_catalogue.h"
#include "project/setting_values.h"
#include "project/shared_stuff.h"
#include "tables/ale_table.h"
#include "tables/columns_layout.h"

#include <filesystem>
#include <memory>
#include <unordered_set>

namespace lumbra::project {

namespace {

bool hasRepeatedName(const std::vector<std::string>& names) {
    std::unordered_set<std::string_view> seen;
    for (const auto& name : names) {
        if (!seen.insert(name).second)
            return true;
    }
    return false;
}

} // namespace

bool settingsFromFile(const std::string& path, NewProjectSettings& settings, std::string* warning) {
    import::ReadResult read = import::readALE(path);
    const tables::ALETable& table = *read.table;
    if (read.failure) {
        if (warning)
            *warning = "ERROR while reading info from file";
        return false;
    }
    settings.fps = table.fps.value_or(std::string());
    settings.tlResolution = table.video_format.value_or(std::string());
    settings.sound = table.audio_format.value_or(std::string());
    settings.filmFormat = table.film_format;
    settings.tapeId = table.tape.value_or(std::string());
    settings.columns = table.cols;
    return true;
}

NewProjectCheck checkNewProject(const std::string& parentFolder, const NewProjectSettings& settings) {
    if (hasRepeatedName(settings.columns))
        return {NewProjectRefusal::repeatedColumn, {}};
    if (settings.name.empty())
        return {NewProjectRefusal::emptyName, {}};
    std::error_code error;
    if (std::filesystem::is_directory(std::filesystem::path(parentFolder) / settings.name, error))
        return {NewProjectRefusal::folderExists, "a folder " + settings.name + " already exists"};
    if (project::hasForbiddenProjectCharacter(settings.name))
        return {NewProjectRefusal::forbiddenCharacters, "the project name contains forbidden characters"};
    if (auto reason = unreadableSettingReason(settings))
        return {NewProjectRefusal::unreadableValue, *reason};
    return {};
}

NewProjectCheck createProject(SharedStuff& sharedstuff, const std::string& parentFolder,
                              const NewProjectSettings& settings, bool* saved) {
    if (saved)
        *saved = false;
    NewProjectCheck check = checkNewProject(parentFolder, settings);
    if (!check.accepted())
        return check;

    sharedstuff.currentFolder = parentFolder;
    sharedstuff.projectName = settings.name;
    sharedstuff.fps = settings.fps;
    sharedstuff.tlResolution = settings.tlResolution;
    sharedstuff.sound = settings.sound;
    sharedstuff.film_format = settings.filmFormat.value_or(std::string());
    if (!settings.tapeId.empty())
        sharedstuff.tapeId = settings.tapeId;
    sharedstuff.archiveOriginalData = settings.archiveOriginalData;
    sharedstuff.columns = settings.columns;
    if (sharedstuff.columns.empty())
        sharedstuff.columns.assign(tables::systemLayoutColumns.begin(), tables::systemLayoutColumns.end());
    auto& layouts = sharedstuff.projectLayouts;
    layouts.baseLayout = std::make_shared<tables::ColumnsLayout>("Default", sharedstuff.columns);
    layouts.projectLayout = std::make_shared<tables::ColumnsLayout>("Project Default", sharedstuff.columns);

    bool ok = sharedstuff.save();
    if (saved)
        *saved = ok;
    return check;
}

} // namespace lumbra::project
