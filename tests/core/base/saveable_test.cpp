#include "base/saveable.h"
#include "base/text_file.h"
#include "core/project/project_test_support.h"

#include <gtest/gtest.h>
#include <regex>

using namespace lumbra::base;
using namespace lumbra::project::testing;

TEST(Saveable, TagsUuidsAndDecimals) {
    EXPECT_EQ(std::make_tuple(std::string(tagName(Tag::none)), std::string(tagName(Tag::purple))),
              std::make_tuple("None", "Purple"));
    const std::vector<std::pair<std::string, Tag>> tags = {
        {"RED", Tag::red}, {"Yellow", Tag::yellow}, {"orange", Tag::none}, {"", Tag::none}};
    for (const auto& [name, tag] : tags)
        EXPECT_EQ(tagFromName(name), tag) << name;
    Saveable s;
    EXPECT_FALSE(s.hasUuid());
    std::string id = s.uuid();
    EXPECT_TRUE(std::regex_match(
        id, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
    EXPECT_EQ(s.uuid(), id);
    EXPECT_NE(Saveable().uuid(), id);
    const std::vector<std::pair<double, std::string>> decimals = {
        {100.0, "100.0"}, {1700000000.25, "1700000000.25"}, {0.1, "0.1"}, {-3.0, "-3.0"}};
    for (const auto& [value, text] : decimals)
        EXPECT_EQ(formatDecimal(value), text);
}

TEST(Saveable, DetailsFileHasFiveLinesAndIsRewrittenOnlyWhenItsTextChanges) {
    TempFolder dir;
    Saveable s;
    s.setUuid("0A1B2C3D-0000-4000-8000-000000000001");
    s.created = 1000.5;
    s.modified = 2000.0;
    s.tag = Tag::pink;
    // A copy keeps the mark; the save after it writes, and the one after that does not.
    ASSERT_TRUE(s.save(dir.str(), true, nullptr));
    EXPECT_TRUE(s.hasChanged);
    const fs::path file = dir.path / "lumbra_details";
    EXPECT_EQ(readFile(file), std::string("0A1B2C3D-0000-4000-8000-000000000001\n1000.5\n2000.0\nPink\n") +
                                  LUMBRA_TEST_BUILD);
    fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
    auto older = fs::last_write_time(file);
    ASSERT_TRUE(s.save(dir.str(), false, nullptr));
    EXPECT_FALSE(s.hasChanged);
    EXPECT_EQ(fs::last_write_time(file), older);
    s.tag = Tag::blue;
    ASSERT_TRUE(s.save(dir.str(), false, nullptr));
    EXPECT_NE(fs::last_write_time(file), older);
}

TEST(Saveable, LoadReadsLinesAndToleratesShortOrBadFiles) {
    // Details; the uuid read; whether the creation date is now; modified; tag.
    const std::vector<std::tuple<std::string, std::string, bool, double, Tag>> cases = {
        {"ABC\n10.5\n20\nBLUE\n7", "ABC", false, 20.0, Tag::blue},
        {"ABC\r\n10.5\r\n20\r\nred", "ABC", false, 20.0, Tag::red},
        {"ABC\nyesterday\n20\nGreen", "ABC", true, 20.0, Tag::green},
        {"ABC\n10.5\n20\nOrange", "ABC", false, 20.0, Tag::none},
        {"ABC\n10.5", "ABC", false, -1.0, Tag::purple}, // a short file keeps the rest
    };
    for (const auto& [details, uuid, createdIsNow, modified, tag] : cases) {
        SCOPED_TRACE(details);
        TempFolder dir;
        writeFile(dir.path / "lumbra_details", details);
        Saveable s;
        s.modified = -1.0;
        s.tag = Tag::purple;
        double before = nowSeconds();
        ASSERT_TRUE(s.load(dir.str(), nullptr));
        EXPECT_FALSE(s.hasChanged);
        EXPECT_EQ(std::tie(s.uuid(), s.modified, s.tag), std::tie(uuid, modified, tag));
        EXPECT_TRUE(createdIsNow ? s.created >= before : s.created == 10.5);
    }
    TempFolder dir;
    Saveable s;
    ASSERT_TRUE(s.load(dir.str(), nullptr));
    EXPECT_EQ(readDetailsLine(dir.str(), 1), s.uuid());
}

TEST(Saveable, FailuresAreReportedAndLeaveTheOldFile) {
    TempFolder dir, empty;
    Saveable s;
    ASSERT_TRUE(s.save(dir.str(), false, nullptr));
    const std::string path = (dir.path / "lumbra_details").string(), old = readFile(path);
    setWriteFailureHook([](const std::string&) { return true; });
    s.tag = Tag::red;
    Notifications notes, loadNotes;
    PrintCapture capture;
    EXPECT_FALSE(s.save(dir.str(), false, &notes));
    Saveable unwritten;
    EXPECT_TRUE(unwritten.load(empty.str(), &loadNotes));
    setWriteFailureHook({});
    EXPECT_EQ(readFile(path), old);
    EXPECT_TRUE(capture.contains("Error while writing to " + path));
    EXPECT_EQ(notes,
              (Notifications{{"UUID file writing", "Error writing to " + path, NotificationType::KO}}));
    EXPECT_EQ(listTree(dir.path), std::set<std::string>{"lumbra_details"});
    ASSERT_EQ(loadNotes.size(), 2u);
    EXPECT_EQ(loadNotes[1].title, "UUID problem");
    EXPECT_EQ(loadNotes[1].body, "Tried to create lumbra_details file at " + empty.str() + " (and failed)");
}

TEST(Folders, FindFolderByUuidAtAnyDepthAfterRename) {
    TempFolder dir;
    fs::path deep = dir.path;
    for (int i = 0; i < 10; ++i)
        deep /= "level" + std::to_string(i);
    Saveable s;
    ASSERT_TRUE(s.save(deep.string(), false, nullptr));
    EXPECT_EQ(findFolder(s.uuid(), dir.str()), deep.string());
    fs::path renamed = deep.parent_path() / "renamed by hand";
    fs::rename(deep, renamed);
    EXPECT_EQ(findFolder(s.uuid(), dir.str()), renamed.string());
    EXPECT_FALSE(findFolder("NOPE", dir.str()));
}

TEST(Folders, FindFileBySuffixAndDetailsLines) {
    TempFolder dir;
    writeFile(dir.path / "Clips.ALE", "x");
    EXPECT_EQ(findFile(dir.str(), ".ale", nullptr, true), (dir.path / "Clips.ALE").string());
    Notifications notes;
    PrintCapture capture;
    EXPECT_FALSE(findFile(dir.str(), ".bin", &notes, false));
    EXPECT_TRUE(notes.empty());
    EXPECT_FALSE(findFile(dir.str(), ".bin", &notes, true));
    EXPECT_TRUE(capture.contains("ERROR: no .bin file in " + dir.str()));
    EXPECT_EQ(notes,
              (Notifications{{"Loading error", "No .bin file in " + dir.str(), NotificationType::KO}}));
    std::string missing = (dir.path / "missing").string();
    EXPECT_FALSE(findFile(missing, ".ale", &notes, true));
    EXPECT_TRUE(capture.contains("ERROR loading from " + missing));
    EXPECT_EQ(notes.back().body, "Error loading file list from " + missing);

    writeFile(dir.path / "lumbra_details", "ID\n  \n3");
    const std::vector<std::optional<std::string>> lines = {"ID", std::nullopt, "3", std::nullopt};
    for (int line = 1; line <= 4; ++line)
        EXPECT_EQ(readDetailsLine(dir.str(), line), lines[line - 1]) << line;
    EXPECT_FALSE(readDetailsLine(missing, 1));
}
