#include "base/console.h"
#include "project/project_creation.h"
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
