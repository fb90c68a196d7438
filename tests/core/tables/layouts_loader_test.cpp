#include "base/console.h"
#include "layout_test_support.h"
#include "tables/layouts_loader.h"

#include <gtest/gtest.h>

using namespace lumbra::tables;
using namespace lumbra::tables::testing;
namespace base = lumbra::base;
namespace fs = std::filesystem;
using Tag = lumbra::base::Tag;

TEST(LayoutsLoader, LoadsEveryLayoutFolderInListingOrder) {
    // A copy of the hand-written layout folders, since loading writes details where they are missing.
    TempDir dir;
    fs::copy(fs::path(LUMBRA_TEST_DATA_DIR) / "layouts", dir.path(), fs::copy_options::recursive);
    struct Expected {
        std::string shown;
        Tag tag;
    };
    const std::string broken = "Broken - 3D7A1E9C-5B2F-4C86-8E4D-1F6A0B3C9D75";
    const std::map<std::string, Expected> byFolder = {
        {"Dailies - 6F1C2B4E-8D3A-4B7E-9C21-0A5D3E7F1B22",
         {"Dailies|Name|Start=100|Scene=87.5|Take", Tag::green}},
        {"Grade - 0B9E4C7A-2F6D-4E18-A3B5-7C1D9F2E4A60", {"Grade|Name=120|ASC_SOP=310.5|ASC_SAT", Tag::none}},
        {broken, {"", Tag::pink}},
        {"Handmade", {"Handmade|Name=64|Tape", Tag::none}},
    };
    std::vector<std::string> order;
    for (const auto& entry : fs::directory_iterator(dir.path())) {
        if (byFolder.contains(entry.path().filename().string()))
            order.push_back(entry.path().filename().string());
    }
    base::Notifications notes;
    base::PrintCapture capture;
    LayoutList layouts = LayoutsLoader(dir.path()).loadAll(&notes);
    ASSERT_EQ(layouts.size(), order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        SCOPED_TRACE(order[i]);
        const Expected& e = byFolder.at(order[i]);
        EXPECT_EQ(shownLayout(*layouts[i]), e.shown);
        EXPECT_EQ(layouts[i]->tag, e.tag);
        EXPECT_FALSE(layouts[i]->hasChanged);
        // The uuid is the folder's; a folder without details gets a new one, written at once into the folder.
        const auto dash = order[i].find(" - ");
        EXPECT_EQ(layouts[i]->uuid(), dash == std::string::npos
                                          ? *lumbra::base::readDetailsLine(dir.file(order[i]), 1)
                                          : order[i].substr(dash + 3));
    }
    ASSERT_FALSE(notes.empty());
    EXPECT_EQ(notes.back(),
              base::NotificationData("Error loading layout", "Error reading layout in " + dir.file(broken),
                                     base::NotificationType::WARNING));
    EXPECT_FALSE(fs::exists(dir.file("notes/lumbra_details")));
}

TEST(LayoutsLoader, RecognisesLayoutFolders) {
    // The one file of a folder ("" for none), and whether that makes it a layout folder.
    const std::vector<std::pair<std::string, bool>> cases{
        {"A.layout", true},
        {"A.LAYOUT", true},
        {"sub.layout/x", true},
        {"lumbra_details", false},
        {"mylayout", false},
        {"A.layout.bak", false},
        {"", false},
    };
    for (const auto& [file, expected] : cases) {
        SCOPED_TRACE(file);
        TempDir dir;
        if (!file.empty())
            dir.write("f/" + file, "x");
        fs::create_directories(dir.file("f"));
        EXPECT_EQ(LayoutsLoader::isLayoutFolder(dir.file("f")), expected);
        // A folder that is none loads nothing quietly.
        base::Notifications notes;
        EXPECT_TRUE(expected || LayoutsLoader(dir.path()).loadLayout(dir.file("f"), &notes) == nullptr);
        EXPECT_TRUE(notes.empty());
    }
    // Neither a missing path nor a plain file is a layout folder, and as a base neither lists anything.
    TempDir dir;
    dir.write("plain.layout", "P");
    for (const std::string& path : {dir.file("missing"), dir.file("plain.layout")}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(LayoutsLoader::isLayoutFolder(path));
        base::Notifications notes;
        base::PrintCapture capture;
        EXPECT_TRUE(LayoutsLoader(path).loadAll(&notes).empty());
        EXPECT_TRUE(notes.empty() && capture.lines().empty());
    }
}

TEST(LayoutsLoader, ANameThatCannotNameAFolderRefusesTheLayout) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"\x01\xff\xfe binary", "its name holds control characters"},
        {"tab\there", "its name holds control characters"},
        {std::string(201, 'x'), "its name is longer than 200 bytes"},
    };
    for (const auto& [name, reason] : cases) {
        SCOPED_TRACE(reason);
        TempDir dir;
        dir.write("bad/bad.layout", name + "\nName\n");
        base::Notifications notes;
        EXPECT_EQ(LayoutsLoader(dir.path()).loadLayout(dir.file("bad"), &notes), nullptr);
        ASSERT_FALSE(notes.empty());
        EXPECT_EQ(notes.back().title, "Layout refused");
        EXPECT_NE(notes.back().body.find(reason), std::string::npos);
    }
}
