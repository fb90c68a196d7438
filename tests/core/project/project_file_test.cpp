#include "base/text_file.h"
#include "core/project/project_test_support.h"
#include "project/project_file.h"
#include "project/shared_stuff.h"

#include <functional>
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

const char* const filledFile = "Feature\n"
                               "fps\t25\n"
                               "tlResolution\t1920x1080\n"
                               "sound\n"
                               "tapeid\tT1\n"
                               "gang\t1\n"
                               "saveff\t0\n"
                               "autosave\t0\n"
                               "archiveOriginalData\t1\n"
                               "columnsdefaultwidth\tfixed\t120.5\n"
                               "tags\tdrama\t2025\n"
                               "baselayout\tName\tStart\tEnd\n"
                               "lastselecteddefault\tEdit\tName\tTape\n"
                               "projectlayout\tName\n"
                               "userdefinedproperty\tcity\tOslo\n"
                               "userdefinedproperty\tdirector\tAnn\n"
                               "timeInMinBackup\t7.5\n"
                               "maxNBackup\t3\n"
                               "maxShowBinToImport\t8\n"
                               "statusBarRule2.0\t#{COUNT ENTRIES} clips\n"
                               "binNamingRule\t@{Tape}\n";

const char* const defaultFile = "P\n"
                                "fps\n"
                                "tlResolution\n"
                                "sound\n"
                                "gang\t0\n"
                                "saveff\t0\n"
                                "autosave\t1\n"
                                "archiveOriginalData\t1\n"
                                "columnsdefaultwidth\tasneeded\n"
                                "baselayout\n"
                                "projectlayout\n"
                                "timeInMinBackup\t15.0\n"
                                "maxNBackup\t5\n"
                                "maxShowBinToImport\t5\n"
                                "statusBarRule2.0\tTotal values #{COUNT ENTRIES}\n"
                                "binNamingRule\t@{All Bin Name}\n";

} // namespace

TEST(ProjectFile, WritesEverySettingInItsPlace) {
    SharedStuff s;
    fillSettings(s);
    EXPECT_EQ(projectFileText(s), filledFile);
}

TEST(ProjectFile, DefaultsBeforeAndAfterAnEmptyLoad) {
    SharedStuff fresh;
    fresh.projectName = "P";
    EXPECT_EQ(projectFileText(fresh), defaultFile);
    SharedStuff loaded;
    loaded.projectName = "P";
    readProjectFileText("", loaded);
    EXPECT_EQ(projectFileText(loaded), defaultFile);
}

TEST(ProjectFile, ReadsBackWhatItWrites) {
    SharedStuff s;
    s.projectName = "Feature";
    ProjectFileNotes notes = readProjectFileText(filledFile, s);
    EXPECT_FALSE(notes.treeentry);
    EXPECT_EQ(s.projectLayouts.lastSelectedDefault->name, "Edit");
    EXPECT_EQ(s.columns, (Columns{"Name", "Start", "End"}));
    EXPECT_FALSE(s.sound.has_value());
    EXPECT_FALSE(s.film_format.has_value());
    EXPECT_EQ(projectFileText(s), filledFile);
}

TEST(ProjectFile, ReaderCases) {
    struct Case {
        const char* name;
        std::string text;
        std::function<void(const SharedStuff&)> check;
    };
    const Case cases[] = {
        {"zero bytes: defaults and two empty layouts", "",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.projectLayouts.baseLayout->name, "Default");
             EXPECT_TRUE(s.projectLayouts.baseLayout->columns.empty());
             EXPECT_EQ(s.projectLayouts.projectLayout->name, "Project Default");
             EXPECT_TRUE(s.projectLayouts.projectLayout->columns.empty());
             EXPECT_EQ(s.timeInMinBackup, 15.0);
             EXPECT_EQ(s.maxNBackup, 5);
             EXPECT_TRUE(s.autosave);
         }},
        {"the name line alone", "Old name\n",
         [](const SharedStuff& s) {
             EXPECT_FALSE(s.projectName.has_value());
             EXPECT_TRUE(s.projectLayouts.baseLayout->columns.empty());
         }},
        {"bad numbers take their own fallbacks",
         "P\ntimeInMinBackup\tsoon\nmaxNBackup\t2.5\nmaxShowBinToImport\tx\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.timeInMinBackup, 5.0);
             EXPECT_EQ(s.maxNBackup, 1);
             EXPECT_EQ(s.maxShowBinToImport, 10);
         }},
        {"a doubled sign is no number", "P\ntimeInMinBackup\t+-2\nmaxNBackup\t+-3\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.timeInMinBackup, 5.0);
             EXPECT_EQ(s.maxNBackup, 1);
         }},
        {"endless numbers take their fallbacks", "P\ntimeInMinBackup\tinf\ncolumnsdefaultwidth\tfixed\tnan\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.timeInMinBackup, 5.0);
             EXPECT_EQ(s.projectLayouts.columnsfixedwidth, 100.0);
         }},
        {"numbers read", "P\ntimeInMinBackup\t0.5\nmaxNBackup\t12\nmaxShowBinToImport\t3\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.timeInMinBackup, 0.5);
             EXPECT_EQ(s.maxNBackup, 12);
             EXPECT_EQ(s.maxShowBinToImport, 3);
         }},
        {"fixed width with a number", "P\ncolumnsdefaultwidth\tfixed\t120.5\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.projectLayouts.columnsdefaultwidth, ColumnsDefaultWidth::fixed);
             EXPECT_EQ(s.projectLayouts.columnsfixedwidth, 120.5);
         }},
        {"fixed width with a bad number keeps the width", "P\ncolumnsdefaultwidth\tfixed\twide\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.projectLayouts.columnsdefaultwidth, ColumnsDefaultWidth::fixed);
             EXPECT_EQ(s.projectLayouts.columnsfixedwidth, 100.0);
         }},
        {"unknown width rule", "P\ncolumnsdefaultwidth\tfittoheader\ncolumnsdefaultwidth\tnarrow\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.projectLayouts.columnsdefaultwidth, ColumnsDefaultWidth::asneeded);
         }},
        {"flags: only 1 is true", "P\ngang\t0\nsaveff\t2\nautosave\tyes\narchiveOriginalData\t1\n",
         [](const SharedStuff& s) {
             EXPECT_FALSE(s.gang);
             EXPECT_FALSE(s.saving_film_format);
             EXPECT_FALSE(s.autosave);
             EXPECT_TRUE(s.archiveOriginalData);
         }},
        {"a bare flag key is passed over", "P\nautosave\n",
         [](const SharedStuff& s) { EXPECT_TRUE(s.autosave); }},
        {"keys are case-sensitive", "P\nFPS\t30\nGang\t1\n",
         [](const SharedStuff& s) {
             EXPECT_FALSE(s.fps.has_value());
             EXPECT_FALSE(s.gang);
         }},
        {"project layout from the base", "P\nbaselayout\tName\tTape\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.projectLayouts.projectLayout->name, "Project Default");
             EXPECT_EQ(s.projectLayouts.projectLayout->columns, (Columns{"Name", "Tape"}));
             EXPECT_EQ(s.columns, (Columns{"Name", "Tape"}));
         }},
        {"user properties: short lines ignored, order free",
         "P\nuserdefinedproperty\tz\t1\nuserdefinedproperty\tonly\nuserdefinedproperty\ta\t\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.userDefinedProperties, (std::map<std::string, std::string>{{"a", ""}, {"z", "1"}}));
         }},
        {"older status bar rule",
         "P\nstatusBarRule\toperation\tCOUNT ENTRIES\ttext\t clips of \tcolumn\tTape\tlone\n",
         [](const SharedStuff& s) { EXPECT_EQ(s.statusBarRule, "#{COUNT ENTRIES} clips of @{Tape}"); }},
        {"empty new status bar rule", "P\nstatusBarRule2.0\t\n",
         [](const SharedStuff& s) { EXPECT_EQ(s.statusBarRule, ""); }},
        {"carriage returns and quotes", "P\r\nfps\t\"23.976\r\nbinNamingRule\t\"@{Tape}\"\r\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.fps, "\"23.976");
             EXPECT_EQ(s.binNamingRule, "\"@{Tape}\"");
         }},
        {"tags are read back", "P\ntags\ta\tb\n",
         [](const SharedStuff& s) {
             EXPECT_EQ(s.projectTags, (Columns{"a", "b"}));
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SharedStuff s;
        readProjectFileText(c.text, s);
        c.check(s);
    }
}

TEST(ProjectFile, UnknownKeysAreLostAtTheNextWrite) {
    SharedStuff s;
    s.projectName = "P";
    readProjectFileText("P\nfuturekey\t1\n", s);
    EXPECT_EQ(projectFileText(s), defaultFile);
}

TEST(ProjectFile, NotesTheEarlierTreeLinesAndKeepsThem) {
    SharedStuff s;
    ProjectFileNotes notes = readProjectFileText("P\n"
                                                 "treecreated\tA\t1.0\n"
                                                 "treeentry\tA\tbin_01\n"
                                                 "smarttreedisplayname\tB\tSmart\n",
                                                 s);
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

TEST(ProjectFile, AFailedWriteKeepsTheOldFile) {
    TempFolder dir;
    const std::string path = (dir.path / "tarelproject").string();
    writeFile(path, "old\n");
    SharedStuff s;
    lumbra::base::setWriteFailureHook([](const std::string&) { return true; });
    const bool written = writeProjectFile(s, path);
    lumbra::base::setWriteFailureHook({});
    EXPECT_FALSE(written);
    EXPECT_EQ(readFile(path), "old\n");
}
