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

TEST(ProjectCreation, WhatANewProjectFileHolds) {
    const std::string systemColumns =
        "Name\tStart\tEnd\tDuration\tTracks\tVideo\tASC_SOP\tASC_SAT\tComments\tLumbra_Color_Tag";
    // The film check box off stores an empty film format, and no tape id.
    const std::vector<std::tuple<NewProjectSettings, testing::Names, std::string>> cases{
        {{.name = "Feature", .fps = "25"},
         {"Feature\n", "\nfps\t25\n", "\nbaselayout\t" + systemColumns + "\n",
          "\nprojectlayout\t" + systemColumns + "\n", "\nfilmformat\t\n"},
         "tapeid"},
        {{.name = "Short", .filmFormat = "35mm, 4 perf", .tapeId = "T01", .columns = {"Name", "Tape"}},
         {"\nbaselayout\tName\tTape\n", "\nfilmformat\t35mm, 4 perf\n", "\ntapeid\tT01\n"},
         "nothing"},
        {{.name = "bad;name"}, {}, "tarelproject"},
    };
    for (const auto& [settings, lines, absent] : cases) {
        SCOPED_TRACE(settings.name);
        TempFolder folder;
        SharedStuff sharedstuff;
        bool saved = false;
        base::PrintCapture quiet;
        EXPECT_EQ(createProject(sharedstuff, folder.str(), settings, &saved).accepted(), !lines.empty());
        EXPECT_EQ(saved, !lines.empty());
        const std::string text = testing::readFile(folder.path / settings.name / "tarelproject");
        for (const auto& line : lines)
            EXPECT_NE(("\n" + text).find(line), std::string::npos) << line;
        EXPECT_EQ(text.find(absent), std::string::npos);
        if (lines.empty()) {
            EXPECT_TRUE(std::filesystem::is_empty(folder.path) && !sharedstuff.projectName);
        }
    }
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

    NewProjectSettings untouched;
    std::string warning;
    EXPECT_FALSE(settingsFromFile((folder.path / "missing.ale").string(), untouched, &warning));
    EXPECT_EQ(warning, "ERROR while reading info from file");
    EXPECT_EQ(untouched.fps, "23.98");
    EXPECT_TRUE(untouched.columns.empty());
}

} // namespace
} // namespace lumbra::project
