#include "project/project_creation.h"
#include "project/setting_values.h"
#include "project_test_support.h"

#include <gtest/gtest.h>

namespace lumbra::project {
namespace {

using testing::TempFolder;

TEST(ProjectCreation, RefusalsInTheWindowsOrder) {
    TempFolder folder;
    std::filesystem::create_directories(folder.path / "Taken");
    const std::string forbidden = "the project name contains forbidden characters";
    const std::vector<std::tuple<std::string, testing::Names, NewProjectRefusal, std::string>> cases{
        {"", {"Name", "Tape", "Name"}, NewProjectRefusal::repeatedColumn, ""}, // comes first
        {"", {}, NewProjectRefusal::emptyName, ""},
        {"Taken", {}, NewProjectRefusal::folderExists, "a folder Taken already exists"},
        {"a:b", {}, NewProjectRefusal::forbiddenCharacters, forbidden},
        {"a\nb", {}, NewProjectRefusal::forbiddenCharacters, forbidden},
        {"my project", {}, NewProjectRefusal::none, ""},
    };
    for (const auto& [name, columns, refusal, warning] : cases) {
        SCOPED_TRACE(name);
        NewProjectCheck check = checkNewProject(folder.str(), {.name = name, .columns = columns});
        EXPECT_EQ(check.refusal, refusal);
        EXPECT_EQ(check.warning, warning);
    }
}

TEST(ProjectCreation, ValuesThatCannotBeReadBackAreRefused) {
    const std::vector<std::pair<NewProjectSettings, std::optional<std::string>>> cases{
        {{.tapeId = " Reel  7"}, std::nullopt},
        {{.tapeId = "A\"B"}, "the tape id holds a double quote (\"), which the bins' ALE files cannot keep"},
        {{.sound = "48\tkhz"}, "the sound rate holds a tab, which the project's files use between values"},
        {{.fps = "25 fps"},
         "the frame rate holds a blank, and the bins' ALE files keep a frame rate as one word"},
        {{.filmFormat = "35mm "}, "the film format ends with a blank, which the bins' ALE files do not keep"},
        {{.columns = {"Name", "a\nb"}},
         "the column name a\nb holds a line break, which the project's files use between lines"},
    };
    for (auto [settings, reason] : cases) {
        SCOPED_TRACE(reason.value_or("plain values"));
        settings.name = "P";
        EXPECT_EQ(unreadableSettingReason(settings), reason);
        EXPECT_EQ(checkNewProject("/nonexistent", settings).accepted(), !reason);
    }
    EXPECT_EQ(unreadablePropertiesReason({{"Lab", "a\"b"}, {"Camera", "A\tB"}}),
              "the property Camera holds a tab, which the project's files use between values");
}

TEST(ProjectCreation, SettingsFromAnAleFile) {
    TempFolder folder;
    testing::writeFile(folder.path / "day.ale",
                       "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\tPAL\nFPS\t24\n"
                       "AUDIO_FORMAT\t48khz\nTAPE\tR1\n\nColumn\nName\tScene\n\nData\nA\t1\n");
    NewProjectSettings settings{.filmFormat = "16mm"};
    base::PrintCapture quiet;
    ASSERT_TRUE(settingsFromFile((folder.path / "day.ale").string(), settings));
    EXPECT_EQ(std::tie(settings.fps, settings.tlResolution, settings.sound, settings.tapeId),
              std::make_tuple("24", "PAL", "48khz", "R1"));
    // No film format in the heading turns the check box off.
    EXPECT_FALSE(settings.filmFormat);
    // The reader's colour tag and the heading's tape come with the file's columns.
    EXPECT_EQ(settings.columns, (testing::Names{"Lumbra_Color_Tag", "Tape", "Name", "Scene"}));
}

} // namespace
} // namespace lumbra::project
