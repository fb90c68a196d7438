#include "base/text_file.h"
#include "core/project/project_test_support.h"
#include "project/project_creation.h"
#include "project/project_file.h"
#include "project/setting_values.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;
using lumbra::tables::ColumnsDefaultWidth;
using lumbra::tables::ColumnsLayout;

namespace {

using Columns = std::vector<std::string>;

// A project with every setting away from its default.
void fillSettings(SharedStuff& s) {
    s.projectName = "Feature";
    s.fps = "25";
    s.tlResolution = "1920x1080";
    s.tapeId = "T1";
    s.gang = true;
    s.autosave = false;
    s.projectLayouts.columnsdefaultwidth = ColumnsDefaultWidth::fixed;
    s.projectLayouts.columnsfixedwidth = 120.5;
    s.projectTags = {"drama", "2025"};
    s.projectLayouts.baseLayout = std::make_shared<ColumnsLayout>("Default", Columns{"Name", "Start", "End"});
    s.projectLayouts.lastSelectedDefault = std::make_shared<ColumnsLayout>("Edit", Columns{"Name", "Tape"});
    s.projectLayouts.projectLayout = std::make_shared<ColumnsLayout>("Project Default", Columns{"Name"});
    s.userDefinedProperties = {{"director", "Ann"}, {"city", "Oslo"}};
    s.timeInMinBackup = 7.5;
    s.maxNBackup = 3;
    s.maxShowBinToImport = 8;
    s.statusBarRule = "#{COUNT ENTRIES} clips";
    s.binNamingRule = "@{Tape}";
}

const char* const filledFile =
    "Feature\nfps\t25\ntlResolution\t1920x1080\nsound\ntapeid\tT1\ngang\t1\nsaveff\t0\nautosave\t0\n"
    "archiveOriginalData\t1\ncolumnsdefaultwidth\tfixed\t120."
    "5\ntags\tdrama\t2025\nbaselayout\tName\tStart\tEnd\n"
    "lastselecteddefault\tEdit\tName\tTape\nprojectlayout\tName\nuserdefinedproperty\tcity\tOslo\n"
    "userdefinedproperty\tdirector\tAnn\ntimeInMinBackup\t7.5\nmaxNBackup\t3\nmaxShowBinToImport\t8\n"
    "statusBarRule2.0\t#{COUNT ENTRIES} clips\nbinNamingRule\t@{Tape}\n";

const char* const defaultFile =
    "P\nfps\ntlResolution\nsound\ngang\t0\nsaveff\t0\nautosave\t1\narchiveOriginalData\t1\n"
    "columnsdefaultwidth\tasneeded\nbaselayout\nprojectlayout\ntimeInMinBackup\t15.0\nmaxNBackup\t5\n"
    "maxShowBinToImport\t5\nstatusBarRule2.0\tTotal values #{COUNT ENTRIES}\nbinNamingRule\t@{All Bin "
    "Name}\n";

} // namespace

TEST(ProjectFile, WritesEverySettingInItsPlaceAndReadsItBack) {
    SharedStuff s;
    fillSettings(s);
    EXPECT_EQ(projectFileText(s), filledFile);
    SharedStuff read;
    read.projectName = "Feature";
    ProjectFileNotes notes = readProjectFileText(filledFile, read);
    EXPECT_FALSE(notes.treeentry);
    EXPECT_EQ(read.projectLayouts.lastSelectedDefault->name, "Edit");
    EXPECT_EQ(read.columns, (Columns{"Name", "Start", "End"}));
    EXPECT_FALSE(read.sound.has_value() || read.film_format.has_value());
    EXPECT_EQ(projectFileText(read), filledFile);
}

TEST(ProjectFile, DefaultsBeforeAndAfterAnEmptyLoadAndUnknownKeysAreLost) {
    for (const char* text : {"", "P\nfuturekey\t1\n"}) {
        SharedStuff fresh;
        fresh.projectName = "P";
        EXPECT_EQ(projectFileText(fresh), defaultFile);
        readProjectFileText(text, fresh);
        EXPECT_EQ(projectFileText(fresh), defaultFile);
        EXPECT_EQ(fresh.projectLayouts.baseLayout->name, "Default");
        EXPECT_EQ(fresh.projectLayouts.projectLayout->name, "Project Default");
    }
    // The name line is the folder's business, not the reader's.
    SharedStuff named;
    readProjectFileText("Old name\n", named);
    EXPECT_FALSE(named.projectName.has_value());
}

// What the reader takes, seen in what the writer gives back.
TEST(ProjectFile, ReaderCases) {
    const std::vector<std::tuple<const char*, std::string, Columns>> cases = {
        {"bad numbers take their own fallbacks",
         "P\ntimeInMinBackup\tsoon\nmaxNBackup\t2.5\nmaxShowBinToImport\tx\n",
         {"timeInMinBackup\t5.0\nmaxNBackup\t1\nmaxShowBinToImport\t10\n"}},
        {"endless numbers take their fallbacks",
         "P\ntimeInMinBackup\tinf\ncolumnsdefaultwidth\tfixed\tnan\n",
         {"timeInMinBackup\t5.0\n", "columnsdefaultwidth\tfixed\t100.0\n"}},
        {"fixed width with a bad number keeps the width",
         "P\ncolumnsdefaultwidth\tfixed\twide\n",
         {"columnsdefaultwidth\tfixed\t100.0\n"}},
        {"fit to content", "P\ncolumnsdefaultwidth\tfittocontent\n", {"columnsdefaultwidth\tfittocontent\n"}},
        {"unknown width rule",
         "P\ncolumnsdefaultwidth\tfittoheader\ncolumnsdefaultwidth\tnarrow\n",
         {"columnsdefaultwidth\tasneeded\n"}},
        {"flags: only 1 is true",
         "P\ngang\t0\nsaveff\t2\nautosave\tyes\narchiveOriginalData\t1\n",
         {"gang\t0\nsaveff\t0\nautosave\t0\narchiveOriginalData\t1\n"}},
        {"a bare flag key is passed over", "P\nautosave\n", {"autosave\t1\n"}},
        {"keys are case-sensitive", "P\nFPS\t30\nGang\t1\n", {"P\nfps\ntlResolution\nsound\ngang\t0\n"}},
        {"project layout from the base",
         "P\nbaselayout\tName\tTape\n",
         {"baselayout\tName\tTape\nprojectlayout\tName\tTape\n"}},
        {"user properties: short lines ignored, order free",
         "P\nuserdefinedproperty\tz\t1\nuserdefinedproperty\tonly\nuserdefinedproperty\ta\t\n",
         {"\nuserdefinedproperty\ta\t\nuserdefinedproperty\tz\t1\ntime"}},
        {"older status bar rule",
         "P\nstatusBarRule\toperation\tCOUNT ENTRIES\ttext\t clips of \tcolumn\tTape\tlone\n",
         {"statusBarRule2.0\t#{COUNT ENTRIES} clips of @{Tape}\n"}},
        {"empty new status bar rule", "P\nstatusBarRule2.0\t\n", {"statusBarRule2.0\t\n"}},
        {"carriage returns and quotes",
         "P\r\nfps\t\"23.976\r\nbinNamingRule\t\"@{Tape}\"\r\n",
         {"fps\t\"23.976\n", "binNamingRule\t\"@{Tape}\"\n"}},
    };
    for (const auto& [name, text, lines] : cases) {
        SCOPED_TRACE(name);
        SharedStuff s;
        s.projectName = "P";
        readProjectFileText(text, s);
        const std::string written = projectFileText(s);
        for (const auto& line : lines)
            EXPECT_NE(written.find(line), std::string::npos) << line << "\nin\n" << written;
    }
}

TEST(ProjectFile, NotesTheEarlierTreeLinesAndKeepsThem) {
    SharedStuff s;
    ProjectFileNotes notes = readProjectFileText(
        "P\ntreecreated\tA\t1.0\ntreeentry\tA\tbin_01\nsmarttreedisplayname\tB\tSmart\n", s);
    EXPECT_TRUE(notes.treeentry);
    EXPECT_FALSE(notes.smarttreeentry);
    EXPECT_EQ(notes.treeLines,
              (std::vector<Columns>{{"treecreated", "A", "1.0"}, {"treeentry", "A", "bin_01"}}));
    EXPECT_EQ(notes.smartTreeLines, (std::vector<Columns>{{"smarttreedisplayname", "B", "Smart"}}));
}

TEST(ProjectFile, AFileThatCannotBeReadChangesNothing) {
    TempFolder dir;
    SharedStuff s;
    s.projectLayouts.baseLayout->columns = {"Name"};
    lumbra::base::Notifications notes;
    EXPECT_FALSE(readProjectFile((dir.path / "tarelproject").string(), s, &notes).has_value());
    EXPECT_EQ(s.projectLayouts.baseLayout->columns, Columns{"Name"});
    EXPECT_FALSE(notes.empty());
}

namespace lumbra::project {
namespace {

using testing::TempFolder;

TEST(ProjectCreation, RefusalsInTheWindowsOrder) {
    TempFolder folder;
    const std::string forbidden = "the project name contains forbidden characters";
    const std::vector<std::tuple<std::string, testing::Names, NewProjectRefusal, std::string>> cases{
        {"", {"Name", "Tape", "Name"}, NewProjectRefusal::repeatedColumn, ""}, // comes first
        {"", {}, NewProjectRefusal::emptyName, ""},
        {"a\nb", {}, NewProjectRefusal::forbiddenCharacters, forbidden},
    };
    for (const auto& [name, columns, refusal, warning] : cases) {
        SCOPED_TRACE(name);
        NewProjectSettings settings;
        settings.name = name;
        settings.columns = columns;
        NewProjectCheck check = checkNewProject(folder.str(), settings);
        EXPECT_EQ(check.refusal, refusal);
        EXPECT_EQ(check.warning, warning);
    }
}

TEST(ProjectCreation, ValuesThatCannotBeReadBackAreRefused) {
    // The value set (a tape id, a sound rate, a frame rate, a film format, a column) and why it cannot be
    // read.
    const std::vector<std::tuple<int, std::string, std::optional<std::string>>> cases{
        {0, " Reel  7", std::nullopt},
        {0, "A\"B", "the tape id holds a double quote (\"), which the bins' ALE files cannot keep"},
        {1, "48\tkhz", "the sound rate holds a tab, which the project's files use between values"},
        {2, "25 fps", "the frame rate holds a blank, and the bins' ALE files keep a frame rate as one word"},
        {3, "35mm ", "the film format ends with a blank, which the bins' ALE files do not keep"},
        {4, "a\nb", "the column name a\nb holds a line break, which the project's files use between lines"},
    };
    for (const auto& [field, value, reason] : cases) {
        SCOPED_TRACE(value);
        NewProjectSettings settings;
        settings.name = "P";
        std::string* const strings[] = {&settings.tapeId, &settings.sound, &settings.fps};
        if (field < 3)
            *strings[field] = value;
        else if (field == 3)
            settings.filmFormat = value;
        else
            settings.columns = {"Name", value};
        EXPECT_EQ(unreadableSettingReason(settings), reason);
        EXPECT_EQ(checkNewProject("/nonexistent", settings).accepted(), !reason);
    }
    EXPECT_EQ(unreadablePropertiesReason({{"Lab", "a\"b"}, {"Camera", "A\tB"}}),
              "the property Camera holds a tab, which the project's files use between values");
}

} // namespace
} // namespace lumbra::project
