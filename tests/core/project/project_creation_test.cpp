#include "base/console.h"
#include "project/project_creation.h"
#include "project/setting_values.h"
#include "project/shared_stuff.h"
#include "project_test_support.h"

#include <gtest/gtest.h>

namespace lumbra::project {
namespace {

using testing::TempFolder;

TEST(ProjectCreation, RefusalsInTheWindowsOrder) {
    TempFolder folder;
    std::filesystem::create_directories(folder.path / "Taken");
    struct Case {
        const char* name;
        std::string projectName;
        std::vector<std::string> columns;
        NewProjectRefusal refusal;
        std::string warning;
    };
    const std::vector<Case> cases{
        {"repeated column comes first", "", {"Name", "Tape", "Name"}, NewProjectRefusal::repeatedColumn, ""},
        {"empty name is silent", "", {}, NewProjectRefusal::emptyName, ""},
        {"existing folder", "Taken", {}, NewProjectRefusal::folderExists, "a folder Taken already exists"},
        {"colon",
         "a:b",
         {},
         NewProjectRefusal::forbiddenCharacters,
         "the project name contains forbidden characters"},
        {"line feed",
         "a\nb",
         {},
         NewProjectRefusal::forbiddenCharacters,
         "the project name contains forbidden characters"},
        {"blank is taken", "my project", {}, NewProjectRefusal::none, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        NewProjectSettings settings;
        settings.name = c.projectName;
        settings.columns = c.columns;
        NewProjectCheck check = checkNewProject(folder.str(), settings);
        EXPECT_EQ(check.refusal, c.refusal);
        EXPECT_EQ(check.warning, c.warning);
    }
}

TEST(ProjectCreation, ValuesThatCannotBeReadBackAreRefused) {
    struct Case {
        const char* name;
        void (*set)(NewProjectSettings&);
        std::optional<std::string> reason;
    };
    const std::vector<Case> cases{
        {"plain values", [](NewProjectSettings& s) { s.tapeId = " Reel  7"; }, std::nullopt},
        {"double quote in the tape id", [](NewProjectSettings& s) { s.tapeId = "A\"B"; },
         "the tape id holds a double quote (\"), which the bins' ALE files cannot keep"},
        {"tab in the sound rate", [](NewProjectSettings& s) { s.sound = "48\tkhz"; },
         "the sound rate holds a tab, which the project's files use between values"},
        {"blank in the frame rate", [](NewProjectSettings& s) { s.fps = "25 fps"; },
         "the frame rate holds a blank, and the bins' ALE files keep a frame rate as one word"},
        {"trailing blank in the film format", [](NewProjectSettings& s) { s.filmFormat = "35mm "; },
         "the film format ends with a blank, which the bins' ALE files do not keep"},
        {"line feed in a column",
         [](NewProjectSettings& s) {
             s.columns = {"Name", "a\nb"};
         },
         "the column name a\nb holds a line break, which the project's files use between lines"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        NewProjectSettings settings;
        settings.name = "P";
        c.set(settings);
        EXPECT_EQ(unreadableSettingReason(settings), c.reason);
        EXPECT_EQ(checkNewProject("/nonexistent", settings).accepted(), !c.reason);
    }
    EXPECT_EQ(unreadablePropertiesReason({{"Lab", "a\"b"}, {"Camera", "A\tB"}}),
              "the property Camera holds a tab, which the project's files use between values");
}

TEST(ProjectCreation, RefusedProjectWritesNothingAndKeepsTheProjectEmpty) {
    TempFolder folder;
    SharedStuff sharedstuff;
    NewProjectSettings settings;
    settings.name = "bad;name";
    bool saved = true;
    EXPECT_EQ(createProject(sharedstuff, folder.str(), settings, &saved).refusal,
              NewProjectRefusal::forbiddenCharacters);
    EXPECT_FALSE(saved);
    EXPECT_FALSE(sharedstuff.projectName);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path));
}

TEST(ProjectCreation, NoColumnsGivesTheTenSystemColumnsInBothLayouts) {
    TempFolder folder;
    SharedStuff sharedstuff;
    NewProjectSettings settings;
    settings.name = "Feature";
    settings.fps = "25";
    bool saved = false;
    base::PrintCapture quiet;
    ASSERT_TRUE(createProject(sharedstuff, folder.str(), settings, &saved).accepted());
    EXPECT_TRUE(saved);
    const std::string expectedColumns =
        "Name\tStart\tEnd\tDuration\tTracks\tVideo\tASC_SOP\tASC_SAT\tComments\tLumbra_Color_Tag";
    std::string text = testing::readFile(folder.path / "Feature" / "tarelproject");
    EXPECT_EQ(text.substr(0, text.find('\n')), "Feature");
    EXPECT_NE(text.find("\nfps\t25\n"), std::string::npos);
    EXPECT_NE(text.find("\nbaselayout\t" + expectedColumns + "\n"), std::string::npos);
    EXPECT_NE(text.find("\nprojectlayout\t" + expectedColumns + "\n"), std::string::npos);
    // The film check box off stores an empty film format, and no tape id.
    EXPECT_NE(text.find("\nfilmformat\t\n"), std::string::npos);
    EXPECT_EQ(text.find("tapeid"), std::string::npos);
    EXPECT_EQ(sharedstuff.projectLayouts.baseLayout->name, "Default");
    EXPECT_EQ(sharedstuff.projectLayouts.projectLayout->name, "Project Default");
    EXPECT_EQ(sharedstuff.projectLayouts.baseLayout->columns.size(), 10u);
}

TEST(ProjectCreation, GivenColumnsFilmFormatAndTape) {
    TempFolder folder;
    SharedStuff sharedstuff;
    NewProjectSettings settings;
    settings.name = "Short";
    settings.columns = {"Name", "Tape"};
    settings.filmFormat = "35mm, 4 perf";
    settings.tapeId = "T01";
    base::PrintCapture quiet;
    ASSERT_TRUE(createProject(sharedstuff, folder.str(), settings).accepted());
    std::string text = testing::readFile(folder.path / "Short" / "tarelproject");
    EXPECT_NE(text.find("\nbaselayout\tName\tTape\n"), std::string::npos);
    EXPECT_NE(text.find("\nfilmformat\t35mm, 4 perf\n"), std::string::npos);
    EXPECT_NE(text.find("\ntapeid\tT01\n"), std::string::npos);
}

TEST(ProjectCreation, SettingsFromAnAleFile) {
    TempFolder folder;
    testing::writeFile(folder.path / "day.ale",
                       "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\tPAL\nFPS\t24\n"
                       "AUDIO_FORMAT\t48khz\nTAPE\tR1\n\nColumn\nName\tScene\n\nData\nA\t1\n");
    NewProjectSettings settings;
    settings.filmFormat = "16mm";
    base::PrintCapture quiet;
    ASSERT_TRUE(settingsFromFile((folder.path / "day.ale").string(), settings));
    EXPECT_EQ(settings.fps, "24");
    EXPECT_EQ(settings.tlResolution, "PAL");
    EXPECT_EQ(settings.sound, "48khz");
    EXPECT_EQ(settings.tapeId, "R1");
    // No film format in the heading turns the check box off.
    EXPECT_FALSE(settings.filmFormat);
    // The reader's colour tag and the heading's tape come with the file's columns.
    EXPECT_EQ(settings.columns, (std::vector<std::string>{"Lumbra_Color_Tag", "Tape", "Name", "Scene"}));

    NewProjectSettings untouched;
    std::string warning;
    EXPECT_FALSE(settingsFromFile((folder.path / "missing.ale").string(), untouched, &warning));
    EXPECT_EQ(warning, "ERROR while reading info from file");
    EXPECT_EQ(untouched.fps, "23.98");
    EXPECT_TRUE(untouched.columns.empty());
}

} // namespace
} // namespace lumbra::project
