#include "base/console.h"
#include "base/saveable.h"
#include "base/text_file.h"
#include "layout_test_support.h"
#include "tables/columns_layout.h"

#include <gtest/gtest.h>

using namespace lumbra::tables;
using namespace lumbra::tables::testing;
namespace base = lumbra::base;
namespace fs = std::filesystem;
using Widths = std::map<std::string, double>;
using Names = std::vector<std::string>;

namespace {

Names namesOf(const LayoutList& layouts) {
    Names out;
    for (const auto& layout : layouts)
        out.push_back(layout->name);
    return out;
}

std::shared_ptr<ColumnsLayout> layout(std::string name, Names columns = {}) {
    return std::make_shared<ColumnsLayout>(std::move(name), std::move(columns));
}

} // namespace

TEST(ColumnsLayout, SavesTheFileByteForByte) {
    const struct {
        ColumnsLayout layout;
        Widths widths;
        const char* file;
        const char* expected;
    } cases[] = {
        {ColumnsLayout("Dailies", {"Name", "Start", "Scene", "Take"}),
         {{"Start", 100.0}, {"Scene", 87.5}, {"Absent", 12.0}},
         "Dailies.layout",
         "Dailies\nName\nStart\t100.0\nScene\t87.5\nTake"},
        {ColumnsLayout("Solo"), {}, "Solo.layout", "Solo"},
        {ColumnsLayout("W", {"A"}), {{"A", 0.1}}, "W.layout", "W\nA\t0.1"},
        {ColumnsLayout("Day/Night", {"A"}), {}, "Day_Night.layout", "Day/Night\nA"}, // the slash stays inside
    };
    for (auto c : cases) {
        SCOPED_TRACE(c.file);
        TempDir dir;
        c.layout.colwidths = c.widths;
        base::Notifications notes;
        ASSERT_TRUE(c.layout.save(dir.path(), false, &notes));
        EXPECT_TRUE(notes.empty());
        EXPECT_EQ(fileBytes(dir.file(c.file)), c.expected);
        EXPECT_EQ(listTree(dir.path()), (std::set<std::string>{"lumbra_details", c.file}));
        EXPECT_FALSE(c.layout.hasChanged);
    }
}

TEST(ColumnsLayout, ReadsHandWrittenFiles) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Cuts\nName\tabc\nStart\t100.0\n\nEnd\t\t42.25", "Cuts|Name|Start=100|End=42.25"},
        {"Cuts\r\nName\t50\r\nTape\r\n", "Cuts|Name=50|Tape"},
        {"", ""},
        {"Only", "Only"},
        {"L\nA\t10\t20\n\tB\t7", "L|A=10|B=7"}, // a third part and a leading tab
        {"L\nA\t1e50\nB\tinf\nC\tnan\nD\t+12.5\nE\t-3",
         "L|A|B|C|D=12.5|E=-3"},                  // none a 32-bit number cannot hold
        {"L\nA\t100.1", "L|A=100.0999984741211"}, // read as a 32-bit number
        {"L\nA\t10\nA\t20", "L|A=20|A=20"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        TempDir dir;
        ColumnsLayout read("before", {"stale"});
        read.colwidths = {{"stale", 1.0}};
        base::Notifications notes;
        ASSERT_TRUE(read.load(writeLayoutFolder(dir, "x - ID", "ID", "any name.layout", text), &notes));
        EXPECT_TRUE(notes.empty());
        EXPECT_EQ(shownLayout(read), expected);
        EXPECT_EQ(read.uuid(), "ID");
        EXPECT_EQ(read.tag, lumbra::base::Tag::red);
        EXPECT_FALSE(read.hasChanged);
    }
}

TEST(ColumnsLayout, SavesReadWidthsAsWrittenKeepsUuidAndTagComparesByColumns) {
    TempDir first, second;
    writeLayoutFolder(first, "L", "U1", "L.layout", "L\nA\t100.1\nB\t33.3");
    ColumnsLayout reread("");
    ASSERT_TRUE(reread.load(first.file("L"), nullptr));
    reread.tag = lumbra::base::Tag::blue;
    ASSERT_TRUE(reread.save(second.path(), false, nullptr));
    EXPECT_EQ(fileBytes(second.file("L.layout")), "L\nA\t100.1\nB\t33.3");
    ColumnsLayout back("");
    ASSERT_TRUE(back.load(second.path(), nullptr));
    EXPECT_EQ(back.uuid(), "U1");
    EXPECT_EQ(back.tag, lumbra::base::Tag::blue);
    // Layouts are equal by their columns in order, whatever their names.
    EXPECT_EQ(back, ColumnsLayout("Other", {"A", "B"}));
    EXPECT_FALSE(back == ColumnsLayout("L", {"B", "A"}) || back == ColumnsLayout("L", {"A"}));
}

TEST(ColumnsLayout, AFolderWithoutALayoutFileIsRefused) {
    for (bool unreadable : {false, true}) {
        SCOPED_TRACE(unreadable ? "a .layout that is a folder" : "no .layout file");
        TempDir dir;
        dir.write("lumbra_details", "ID");
        if (unreadable)
            fs::create_directories(dir.file("bad.layout"));
        ColumnsLayout read("", {"stale"});
        base::Notifications notes;
        base::PrintCapture capture;
        EXPECT_FALSE(read.load(dir.path(), &notes));
        EXPECT_TRUE(read.columns.empty());
        ASSERT_FALSE(notes.empty());
        EXPECT_EQ(notes.back(),
                  base::NotificationData("Error loading layout", "Error reading layout in " + dir.path(),
                                         base::NotificationType::WARNING));
        if (!unreadable) {
            EXPECT_EQ(notes.front(),
                      base::NotificationData("Loading error", "No .layout file in " + dir.path(),
                                             base::NotificationType::KO));
            EXPECT_TRUE(capture.contains("ERROR: no .layout file in " + dir.path()));
        }
    }
}

TEST(ColumnsLayout, AFailedWriteLeavesThePreviousFileWhole) {
    for (bool readOnly : {false, true}) {
        SCOPED_TRACE(readOnly ? "read-only folder" : "write failure");
        TempDir dir;
        ColumnsLayout layout("Keep", {"Name", "Start"});
        layout.colwidths["Name"] = 80.0;
        ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
        layout.columns.push_back("End");
        layout.hasChanged = true;
        base::Notifications notes;
        base::PrintCapture capture;
        {
            std::optional<ReadOnlyFolder> locked;
            if (readOnly)
                locked.emplace(dir.path());
            else
                base::setWriteFailureHook([](const std::string& p) { return p.ends_with(".layout"); });
            EXPECT_FALSE(layout.save(dir.path(), false, &notes));
            base::setWriteFailureHook({});
        }
        const std::string path = dir.file("Keep.layout");
        EXPECT_TRUE(layout.hasChanged);
        EXPECT_EQ(fileBytes(path), "Keep\nName\t80.0\nStart");
        EXPECT_EQ(listTree(dir.path()), (std::set<std::string>{"lumbra_details", "Keep.layout"}));
        EXPECT_EQ(notes, base::Notifications{base::NotificationData(
                             "Error saving layout", "Error saving " + path, base::NotificationType::KO)});
        EXPECT_TRUE(capture.contains("saving layout Keep"));
        EXPECT_TRUE(capture.contains("Error saving " + path));
    }
}

TEST(ColumnsLayout, ARenameLeavesOnlyTheNewFileAndASecondSaveNone) {
    TempDir dir;
    ColumnsLayout layout("Old", {"A"});
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    dir.write("other.LAYOUT", "Stray\nZ");
    layout.name = "New";
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    EXPECT_EQ(listTree(dir.path()), (std::set<std::string>{"lumbra_details", "New.layout"}));
    auto times = ageFiles(dir.path());
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    EXPECT_EQ(fileTimes(dir.path()), times);
    layout.colwidths["A"] = 13.0;
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    EXPECT_NE(fs::last_write_time(dir.file("New.layout")), fs::last_write_time(dir.file("lumbra_details")));

    // A stray file that cannot be removed could win the next load, so the save fails.
    std::string stray = dir.write("stray.layout", "Stray");
    base::Notifications notes;
    base::PrintCapture capture;
    {
        ReadOnlyFolder locked(dir.path());
        EXPECT_FALSE(layout.save(dir.path(), false, &notes));
    }
    EXPECT_TRUE(capture.contains("ERROR removing " + stray));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "Error saving layout");
}

TEST(ProjectLayouts, SystemLayoutAlwaysHoldsItsTenColumnsAndSortIsStableInTextOrder) {
    const Names ten = {"Name",  "Start",   "End",     "Duration", "Tracks",
                       "Video", "ASC_SOP", "ASC_SAT", "Comments", "Lumbra_Color_Tag"};
    ProjectLayouts p;
    auto system = p.systemLayout();
    EXPECT_EQ(system->name, "System");
    system->columns.erase(system->columns.begin());
    EXPECT_EQ(p.systemLayout(), system);
    EXPECT_EQ(p.systemLayout()->columns, ten);

    // Sorting is stable and in text order.
    auto b1 = layout("b", {"1"}), b2 = layout("b", {"2"});
    auto composed = layout("\xC3\xA9"), decomposed = layout("e\xCC\x81");
    p.layouts = {b1, layout("a"), composed, layout("B"), b2, decomposed, layout("a10"), layout("a9")};
    p.sortLayouts();
    EXPECT_EQ(namesOf(p.layouts), (Names{"B", "a", "a10", "a9", "b", "b", "\xC3\xA9", "e\xCC\x81"}));
    EXPECT_TRUE(p.layouts[4] == b1 && p.layouts[5] == b2 && p.layouts[6] == composed);
}

TEST(ProjectLayouts, UniqueNamesNeverUseTheBareBase) {
    const struct {
        Names existing;
        const char* base;
        const char* expected;
    } cases[] = {
        {{}, "Lay", "Lay_01"},
        {{"Lay"}, "Lay", "Lay_01"},
        {{"Lay_01", "Lay_03", "Lay_02"}, "Lay", "Lay_04"},
        {{"Lay_01", "Lay_03"}, "Lay", "Lay_02"},
        {{"Lay_01"}, "X", "X_01"},
        {{"lay_01"}, "Lay", "Lay_01"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        ProjectLayouts p;
        for (const auto& n : c.existing)
            p.layouts.push_back(layout(n));
        EXPECT_EQ(p.uniqueLayoutName(c.base), c.expected);
    }
    ProjectLayouts many;
    for (int i = 1; i <= 100; ++i)
        many.layouts.push_back(layout(i < 10 ? "L_0" + std::to_string(i) : "L_" + std::to_string(i)));
    EXPECT_EQ(many.uniqueLayoutName("L"), "L_101");
}

TEST(ProjectLayouts, LayoutNamedFindsByColumnsInAnyOrderOrMakesASortedLayoutWithTheColourTag) {
    ProjectLayouts p;
    p.layouts = {layout("Alpha", {"Name", "Start", "End"}), layout("Beta", {"End", "Start", "Name"}),
                 layout("Gamma", {"Name", "Start"}), layout("Lay_01", {"B"}), layout("Zulu", {"Z"})};
    base::Notifications notes;
    base::PrintCapture capture;
    EXPECT_EQ(p.layoutNamed({"Start", "Name", "End"}, &notes), "Alpha");
    EXPECT_EQ(p.layoutNamed({"Start", "Name"}, &notes), "Gamma");
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(p.layoutNamed({"Name", "Tape"}, &notes), "Lay_02");
    EXPECT_EQ(namesOf(p.layouts), (Names{"Alpha", "Beta", "Gamma", "Lay_01", "Lay_02", "Zulu"}));
    EXPECT_EQ(p.layouts[4]->columns, (Names{"Name", "Tape", "Lumbra_Color_Tag"}));
    std::string message = R"(Automatically created layout Lay_02 with columns: ["Name", "Tape"])";
    EXPECT_EQ(capture.lines(), Names{message});
    EXPECT_EQ(notes, base::Notifications{
                         base::NotificationData("Layout Added", message, base::NotificationType::WARNING)});

    // A list that has the tag already keeps it where it stands, and is then found again.
    EXPECT_EQ(p.layoutNamed({"Lumbra_Color_Tag", "X"}, nullptr), "Lay_03");
    EXPECT_EQ(p.layouts[5]->columns, (Names{"Lumbra_Color_Tag", "X"}));
    EXPECT_EQ(p.layoutNamed({"X", "Lumbra_Color_Tag"}, nullptr), "Lay_03");
    // The made layout has the tag added, so the same list without it does not find it again.
    EXPECT_EQ(p.layoutNamed({"Name", "Tape"}, nullptr), "Lay_04");
    EXPECT_EQ(p.layoutNamed({"Name", "Name"}, nullptr), "Lay_05");
}
