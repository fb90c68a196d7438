#include "base/console.h"
#include "base/saveable.h"
#include "base/text_file.h"
#include "core/project/project_test_support.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

using namespace lumbra::project;
using namespace lumbra::base;
using namespace lumbra::project::testing;
namespace base = lumbra::base;

TEST(Tag, NamesAndReading) {
    EXPECT_STREQ(base::tagName(base::Tag::none), "None");
    EXPECT_STREQ(base::tagName(base::Tag::purple), "Purple");
    EXPECT_EQ(base::tagFromName("RED"), base::Tag::red);
    EXPECT_EQ(base::tagFromName("Yellow"), base::Tag::yellow);
    EXPECT_EQ(base::tagFromName("orange"), base::Tag::none);
    EXPECT_EQ(base::tagFromName(""), base::Tag::none);
    EXPECT_LT(static_cast<int>(base::Tag::green), static_cast<int>(base::Tag::blue));
}

TEST(Saveable, UuidIsMadeOnceInCanonicalUpperCase) {
    base::Saveable s;
    EXPECT_FALSE(s.hasUuid());
    std::string id = s.uuid();
    EXPECT_TRUE(std::regex_match(
        id, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
    EXPECT_EQ(s.uuid(), id);
    EXPECT_NE(base::Saveable().uuid(), id);
}

TEST(Saveable, DecimalsInShortestForm) {
    EXPECT_EQ(base::formatDecimal(100.0), "100.0");
    EXPECT_EQ(base::formatDecimal(1700000000.25), "1700000000.25");
    EXPECT_EQ(base::formatDecimal(0.1), "0.1");
    EXPECT_EQ(base::formatDecimal(-3.0), "-3.0");
}

TEST(Saveable, DetailsFileHasFiveLinesAndNoFinalLineFeed) {
    TempFolder dir;
    base::Saveable s;
    s.setUuid("0A1B2C3D-0000-4000-8000-000000000001");
    s.created = 1000.5;
    s.modified = 2000.0;
    s.tag = base::Tag::pink;
    ASSERT_TRUE(s.save(dir.path.string(), false, nullptr));
    EXPECT_FALSE(s.hasChanged);
    std::string text = readFile(dir.path / "lumbra_details");
    EXPECT_EQ(text, std::string("0A1B2C3D-0000-4000-8000-000000000001\n1000.5\n2000.0\nPink\n") +
                        LUMBRA_TEST_BUILD);
}

TEST(Saveable, SaveCopyKeepsChangedAndSecondSaveWritesNothing) {
    TempFolder dir;
    base::Saveable s;
    ASSERT_TRUE(s.save(dir.path.string(), true, nullptr));
    EXPECT_TRUE(s.hasChanged);
    auto file = dir.path / "lumbra_details";
    auto before = fs::last_write_time(file);
    fs::last_write_time(file, before - std::chrono::hours(1));
    auto older = fs::last_write_time(file);
    ASSERT_TRUE(s.save(dir.path.string(), false, nullptr));
    EXPECT_EQ(fs::last_write_time(file), older);
    s.tag = base::Tag::blue;
    ASSERT_TRUE(s.save(dir.path.string(), false, nullptr));
    EXPECT_NE(fs::last_write_time(file), older);
}

TEST(Saveable, LoadReadsLinesAndToleratesShortOrBadFiles) {
    struct Case {
        const char* name;
        std::string details;
        std::string uuid;
        bool createdIsNow;
        double modified;
        base::Tag tag;
    };
    const std::vector<Case> cases = {
        {"full", "ABC\n10.5\n20\nBLUE\n7", "ABC", false, 20.0, base::Tag::blue},
        {"crlf", "ABC\r\n10.5\r\n20\r\nred", "ABC", false, 20.0, base::Tag::red},
        {"bad date gives now", "ABC\nyesterday\n20\nGreen", "ABC", true, 20.0, base::Tag::green},
        {"unknown tag", "ABC\n10.5\n20\nOrange", "ABC", false, 20.0, base::Tag::none},
        {"short file keeps the rest", "ABC\n10.5", "ABC", false, -1.0, base::Tag::purple},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempFolder dir;
        writeFile(dir.path / "lumbra_details", c.details);
        base::Saveable s;
        s.modified = -1.0;
        s.tag = base::Tag::purple;
        double before = base::nowSeconds();
        ASSERT_TRUE(s.load(dir.path.string(), nullptr));
        EXPECT_FALSE(s.hasChanged);
        EXPECT_EQ(s.uuid(), c.uuid);
        if (c.createdIsNow)
            EXPECT_GE(s.created, before);
        else
            EXPECT_EQ(s.created, 10.5);
        EXPECT_EQ(s.modified, c.modified);
        EXPECT_EQ(s.tag, c.tag);
    }
}

TEST(Saveable, LoadWithoutDetailsWritesThemAtOnce) {
    TempFolder dir;
    base::Saveable s;
    ASSERT_TRUE(s.load(dir.path.string(), nullptr));
    auto line = base::readDetailsLine(dir.path.string(), 1);
    ASSERT_TRUE(line);
    EXPECT_EQ(*line, s.uuid());
}

TEST(Saveable, FailuresAreReportedAndLeaveTheOldFile) {
    TempFolder dir;
    base::Saveable s;
    ASSERT_TRUE(s.save(dir.path.string(), false, nullptr));
    std::string old = readFile(dir.path / "lumbra_details");

    lumbra::base::setWriteFailureHook([](const std::string&) { return true; });
    s.tag = base::Tag::red;
    Notifications notes;
    lumbra::base::PrintCapture capture;
    EXPECT_FALSE(s.save(dir.path.string(), false, &notes));
    lumbra::base::setWriteFailureHook({});
    EXPECT_EQ(readFile(dir.path / "lumbra_details"), old);
    std::string path = (dir.path / "lumbra_details").string();
    EXPECT_TRUE(capture.contains("Error while writing to " + path));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "UUID file writing");
    EXPECT_EQ(notes[0].body, "Error writing to " + path);
    EXPECT_EQ(notes[0].type, lumbra::base::NotificationType::KO);
    EXPECT_EQ(fs::directory_iterator(dir.path)->path().filename(), "lumbra_details");
}

TEST(Saveable, UnwritableFolderOnLoadAddsUuidProblem) {
    TempFolder dir;
    lumbra::base::setWriteFailureHook([](const std::string&) { return true; });
    base::Saveable s;
    Notifications notes;
    lumbra::base::PrintCapture capture;
    EXPECT_TRUE(s.load(dir.path.string(), &notes));
    lumbra::base::setWriteFailureHook({});
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(notes[1].title, "UUID problem");
    EXPECT_EQ(notes[1].body, "Tried to create lumbra_details file at " + dir.path.string() + " (and failed)");
}

TEST(Folders, FindFolderByUuidAtAnyDepthAfterRename) {
    TempFolder dir;
    fs::path deep = dir.path;
    for (int i = 0; i < 10; ++i)
        deep /= "level" + std::to_string(i);
    base::Saveable s;
    ASSERT_TRUE(s.save(deep.string(), false, nullptr));
    EXPECT_EQ(base::findFolder(s.uuid(), dir.path.string()), deep.string());
    fs::path renamed = deep.parent_path() / "renamed by hand";
    fs::rename(deep, renamed);
    EXPECT_EQ(base::findFolder(s.uuid(), dir.path.string()), renamed.string());
    EXPECT_FALSE(base::findFolder("NOPE", dir.path.string()));
}

TEST(Folders, FindFileBySuffixAndItsMessages) {
    TempFolder dir;
    writeFile(dir.path / "Clips.ALE", "x");
    EXPECT_EQ(base::findFile(dir.path.string(), ".ale", nullptr, true), (dir.path / "Clips.ALE").string());

    Notifications notes;
    lumbra::base::PrintCapture capture;
    EXPECT_FALSE(base::findFile(dir.path.string(), ".bin", &notes, false));
    EXPECT_TRUE(notes.empty());
    EXPECT_FALSE(base::findFile(dir.path.string(), ".bin", &notes, true));
    EXPECT_TRUE(capture.contains("ERROR: no .bin file in " + dir.path.string()));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].title, "Loading error");
    EXPECT_EQ(notes[0].body, "No .bin file in " + dir.path.string());

    std::string missing = (dir.path / "missing").string();
    EXPECT_FALSE(base::findFile(missing, ".ale", &notes, true));
    EXPECT_TRUE(capture.contains("ERROR loading from " + missing));
    EXPECT_EQ(notes.back().body, "Error loading file list from " + missing);
}

TEST(Folders, DetailsLineRules) {
    TempFolder dir;
    writeFile(dir.path / "lumbra_details", "ID\n  \n3");
    EXPECT_EQ(base::readDetailsLine(dir.path.string(), 1), "ID");
    EXPECT_FALSE(base::readDetailsLine(dir.path.string(), 2));
    EXPECT_EQ(base::readDetailsLine(dir.path.string(), 3), "3");
    EXPECT_FALSE(base::readDetailsLine(dir.path.string(), 4));
    EXPECT_FALSE(base::readDetailsLine((dir.path / "none").string(), 1));
}
