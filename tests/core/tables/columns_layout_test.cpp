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

namespace {

std::vector<std::string> namesOf(const LayoutList& layouts) {
    std::vector<std::string> out;
    for (const auto& layout : layouts)
        out.push_back(layout->name);
    return out;
}

std::shared_ptr<ColumnsLayout> layout(std::string name, std::vector<std::string> columns = {}) {
    return std::make_shared<ColumnsLayout>(std::move(name), std::move(columns));
}

} // namespace

TEST(ColumnsLayout, SavesTheFileByteForByte) {
    struct Case {
        const char* name;
        ColumnsLayout layout;
        std::map<std::string, double> widths;
        const char* file;
        const char* expected;
    };
    const Case cases[] = {
        {"columns and widths",
         ColumnsLayout("Dailies", {"Name", "Start", "Scene", "Take"}),
         {{"Start", 100.0}, {"Scene", 87.5}, {"Absent", 12.0}},
         "Dailies.layout",
         "Dailies\nName\nStart\t100.0\nScene\t87.5\nTake"},
        {"no columns", ColumnsLayout("Solo"), {}, "Solo.layout", "Solo"},
        {"a width that is no whole number of points",
         ColumnsLayout("W", {"A"}),
         {{"A", 0.1}},
         "W.layout",
         "W\nA\t0.1"},
        {"a slash of the name stays in the file",
         ColumnsLayout("Day/Night", {"A"}),
         {},
         "Day_Night.layout",
         "Day/Night\nA"},
    };
    for (auto c : cases) {
        SCOPED_TRACE(c.name);
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
    struct Case {
        const char* name;
        const char* text;
        const char* layoutName;
        std::vector<std::string> columns;
        std::map<std::string, double> widths;
    };
    const Case cases[] = {
        {"widths where they read",
         "Cuts\nName\tabc\nStart\t100.0\n\nEnd\t\t42.25",
         "Cuts",
         {"Name", "Start", "End"},
         {{"Start", 100.0}, {"End", 42.25}}},
        {"carriage returns", "Cuts\r\nName\t50\r\nTape\r\n", "Cuts", {"Name", "Tape"}, {{"Name", 50.0}}},
        {"zero bytes", "", "", {}, {}},
        {"name alone", "Only", "Only", {}, {}},
        {"a third part and a leading tab",
         "L\nA\t10\t20\n\tB\t7",
         "L",
         {"A", "B"},
         {{"A", 10.0}, {"B", 7.0}}},
        {"widths a 32-bit number cannot hold",
         "L\nA\t1e50\nB\tinf\nC\tnan\nD\t+12.5\nE\t-3",
         "L",
         {"A", "B", "C", "D", "E"},
         {{"D", 12.5}, {"E", -3.0}}},
        {"a width read as a 32-bit number", "L\nA\t100.1", "L", {"A"}, {{"A", static_cast<double>(100.1f)}}},
        {"the same column twice keeps the last width", "L\nA\t10\nA\t20", "L", {"A", "A"}, {{"A", 20.0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir dir;
        std::string folder = writeLayoutFolder(dir, "x - ID", "ID", "any name.layout", c.text);
        ColumnsLayout read("before");
        read.columns = {"stale"};
        read.colwidths = {{"stale", 1.0}};
        base::Notifications notes;
        ASSERT_TRUE(read.load(folder, &notes));
        EXPECT_TRUE(notes.empty());
        EXPECT_EQ(read.name, c.layoutName);
        EXPECT_EQ(read.columns, c.columns);
        EXPECT_EQ(read.colwidths, c.widths);
        EXPECT_EQ(read.uuid(), "ID");
        EXPECT_EQ(read.tag, lumbra::base::Tag::red);
        EXPECT_FALSE(read.hasChanged);
    }
}

TEST(ColumnsLayout, RoundTripsAndSavesReadWidthsAsWritten) {
    TempDir dir;
    ColumnsLayout original("Grade", {"Name", "ASC_SOP", "Comments", "Scène"});
    original.colwidths = {{"Name", 100.0}, {"ASC_SOP", 0.5}, {"Scène", 123456.0}, {"Unused", 3.0}};
    original.tag = lumbra::base::Tag::blue;
    ASSERT_TRUE(original.save(dir.path(), false, nullptr));

    ColumnsLayout read("");
    ASSERT_TRUE(read.load(dir.path(), nullptr));
    EXPECT_EQ(read.name, "Grade");
    EXPECT_EQ(read.columns, original.columns);
    EXPECT_EQ(read.colwidths,
              (std::map<std::string, double>{{"Name", 100.0}, {"ASC_SOP", 0.5}, {"Scène", 123456.0}}));
    EXPECT_EQ(read.uuid(), original.uuid());
    EXPECT_EQ(read.tag, lumbra::base::Tag::blue);

    // A width read from a file comes back in the same words when the layout is saved elsewhere.
    TempDir first;
    writeLayoutFolder(first, "L", "U1", "L.layout", "L\nA\t100.1\nB\t33.3");
    ColumnsLayout reread("");
    ASSERT_TRUE(reread.load(first.file("L"), nullptr));
    TempDir second;
    ASSERT_TRUE(reread.save(second.path(), false, nullptr));
    EXPECT_EQ(fileBytes(second.file("L.layout")), "L\nA\t100.1\nB\t33.3");
}

TEST(ColumnsLayout, AFolderWithoutALayoutFileIsRefused) {
    struct Case {
        const char* name;
        bool makeUnreadable;
    };
    for (const Case c : {Case{"no .layout file", false}, Case{"a .layout that is a folder", true}}) {
        SCOPED_TRACE(c.name);
        TempDir dir;
        dir.write("lumbra_details", "ID");
        if (c.makeUnreadable)
            fs::create_directories(dir.file("bad.layout"));
        ColumnsLayout read("");
        read.columns = {"stale"};
        base::Notifications notes;
        base::PrintCapture capture;
        EXPECT_FALSE(read.load(dir.path(), &notes));
        EXPECT_TRUE(read.columns.empty());
        EXPECT_EQ(read.name, "");
        ASSERT_FALSE(notes.empty());
        EXPECT_EQ(notes.back(),
                  base::NotificationData("Error loading layout", "Error reading layout in " + dir.path(),
                                         base::NotificationType::WARNING));
        if (!c.makeUnreadable) {
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
        std::string path = dir.file("Keep.layout");

        base::Notifications notes;
        base::PrintCapture capture;
        bool saved;
        if (readOnly) {
            ReadOnlyFolder locked(dir.path());
            saved = layout.save(dir.path(), false, &notes);
        } else {
            base::setWriteFailureHook([](const std::string& p) { return p.ends_with(".layout"); });
            saved = layout.save(dir.path(), false, &notes);
            base::setWriteFailureHook({});
        }
        EXPECT_FALSE(saved);
        EXPECT_TRUE(layout.hasChanged);
        EXPECT_EQ(fileBytes(path), "Keep\nName\t80.0\nStart");
        EXPECT_EQ(listTree(dir.path()), (std::set<std::string>{"lumbra_details", "Keep.layout"}));
        ASSERT_EQ(notes.size(), 1u);
        EXPECT_EQ(notes[0], base::NotificationData("Error saving layout", "Error saving " + path,
                                                   base::NotificationType::KO));
        EXPECT_TRUE(capture.contains("saving layout Keep"));
        EXPECT_TRUE(capture.contains("Error saving " + path));
    }
}

TEST(ColumnsLayout, ARenameLeavesOnlyTheNewFile) {
    TempDir dir;
    ColumnsLayout layout("Old", {"A"});
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    dir.write("other.LAYOUT", "Stray\nZ");
    layout.name = "New";
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    EXPECT_EQ(listTree(dir.path()), (std::set<std::string>{"lumbra_details", "New.layout"}));
    ColumnsLayout read("");
    ASSERT_TRUE(read.load(dir.path(), nullptr));
    EXPECT_EQ(read.name, "New");

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

TEST(ColumnsLayout, ASecondSaveWithNothingChangedWritesNoFile) {
    TempDir dir;
    ColumnsLayout layout("Same", {"A", "B"});
    layout.colwidths["B"] = 12.5;
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    auto times = ageFiles(dir.path());
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    EXPECT_EQ(fileTimes(dir.path()), times);
    layout.colwidths["B"] = 13.0;
    ASSERT_TRUE(layout.save(dir.path(), false, nullptr));
    EXPECT_NE(fs::last_write_time(dir.file("Same.layout")), fs::last_write_time(dir.file("lumbra_details")));
}

TEST(ColumnsLayout, EqualByColumnsInOrderOnly) {
    ColumnsLayout a("A", {"Name", "Start"});
    ColumnsLayout b("B", {"Name", "Start"});
    b.colwidths["Name"] = 40.0;
    EXPECT_EQ(a, b);
    EXPECT_FALSE(a == ColumnsLayout("A", {"Start", "Name"}));
    EXPECT_FALSE(a == ColumnsLayout("A", {"Name"}));
    EXPECT_EQ(ColumnsLayout("x"), ColumnsLayout("y", {}));
}

TEST(ProjectLayouts, SystemLayoutAlwaysHoldsItsTenColumns) {
    const std::vector<std::string> ten = {"Name",  "Start",   "End",     "Duration", "Tracks",
                                          "Video", "ASC_SOP", "ASC_SAT", "Comments", "Lumbra_Color_Tag"};
    ProjectLayouts p;
    auto system = p.systemLayout();
    EXPECT_EQ(system->name, "System");
    EXPECT_EQ(system->columns, ten);
    system->columns.erase(system->columns.begin());
    system->columns.push_back("Tape");
    EXPECT_EQ(p.systemLayout(), system);
    EXPECT_EQ(p.systemLayout()->columns, ten);
    EXPECT_EQ(ProjectLayouts().systemLayout()->columns, ten);
}

TEST(ProjectLayouts, UniqueNamesNeverUseTheBareBase) {
    struct Case {
        const char* name;
        std::vector<std::string> existing;
        const char* base;
        const char* expected;
    };
    const Case cases[] = {
        {"empty project", {}, "Lay", "Lay_01"},
        {"the base itself is taken", {"Lay"}, "Lay", "Lay_01"},
        {"first gap", {"Lay_01", "Lay_03", "Lay_02"}, "Lay", "Lay_04"},
        {"a gap in the middle", {"Lay_01", "Lay_03"}, "Lay", "Lay_02"},
        {"another base", {"Lay_01"}, "X", "X_01"},
        {"other case is another name", {"lay_01"}, "Lay", "Lay_01"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
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

TEST(ProjectLayouts, LayoutNamedFindsByColumnsInAnyOrder) {
    ProjectLayouts p;
    p.layouts = {layout("Alpha", {"Name", "Start", "End"}), layout("Beta", {"End", "Start", "Name"}),
                 layout("Gamma", {"Name", "Start"})};
    base::Notifications notes;
    base::PrintCapture capture;
    EXPECT_EQ(p.layoutNamed({"Start", "Name", "End"}, &notes), "Alpha");
    EXPECT_EQ(p.layoutNamed({"Start", "Name"}, &notes), "Gamma");
    EXPECT_EQ(p.layoutNamed({"Name", "Name"}, &notes), "Lay_01");
    EXPECT_EQ(p.layouts.size(), 4u);
    EXPECT_TRUE(capture.lines().size() == 1);
}

TEST(ProjectLayouts, LayoutNamedMakesASortedLayoutWithTheColourTag) {
    ProjectLayouts p;
    p.layouts = {layout("Zulu", {"A"}), layout("Lay_01", {"B"}), layout("Alpha", {"C"})};
    base::Notifications notes;
    base::PrintCapture capture;
    EXPECT_EQ(p.layoutNamed({"Name", "Tape"}, &notes), "Lay_02");
    EXPECT_EQ(namesOf(p.layouts), (std::vector<std::string>{"Alpha", "Lay_01", "Lay_02", "Zulu"}));
    EXPECT_EQ(p.layouts[2]->columns, (std::vector<std::string>{"Name", "Tape", "Lumbra_Color_Tag"}));
    std::string message = R"(Automatically created layout Lay_02 with columns: ["Name", "Tape"])";
    EXPECT_TRUE(capture.contains(message));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0], base::NotificationData("Layout Added", message, base::NotificationType::WARNING));

    // A list that has the tag already keeps it where it stands, and is then found again.
    EXPECT_EQ(p.layoutNamed({"Lumbra_Color_Tag", "X"}, nullptr), "Lay_03");
    EXPECT_EQ(p.layouts[3]->columns, (std::vector<std::string>{"Lumbra_Color_Tag", "X"}));
    EXPECT_EQ(p.layoutNamed({"X", "Lumbra_Color_Tag"}, nullptr), "Lay_03");
    // The made layout has the tag added, so the same list without it does not find it again.
    EXPECT_EQ(p.layoutNamed({"Name", "Tape"}, nullptr), "Lay_04");
}

TEST(ProjectLayouts, SortIsStableInTextOrder) {
    ProjectLayouts p;
    auto b1 = layout("b", {"1"});
    auto b2 = layout("b", {"2"});
    auto composed = layout("\xC3\xA9", {"composed"});
    auto decomposed = layout("e\xCC\x81", {"decomposed"});
    p.layouts = {b1, layout("a"), composed, layout("B"), b2, decomposed, layout("a10"), layout("a9")};
    p.sortLayouts();
    EXPECT_EQ(namesOf(p.layouts),
              (std::vector<std::string>{"B", "a", "a10", "a9", "b", "b", "\xC3\xA9", "e\xCC\x81"}));
    EXPECT_EQ(p.layouts[4], b1);
    EXPECT_EQ(p.layouts[5], b2);
    EXPECT_EQ(p.layouts[6], composed);
    EXPECT_EQ(p.layouts[7], decomposed);
}
