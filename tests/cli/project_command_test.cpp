#include "cli_test_support.h"

#include <algorithm>
#include <map>

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

// Every file under the folder with its bytes, for "nothing changed" checks.
std::map<std::string, std::string> snapshot(const fs::path& root) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::string rel = fs::relative(entry.path(), root).string();
        files[entry.is_directory() ? rel + "/" : rel] = entry.is_directory() ? "" : readAll(entry.path());
    }
    return files;
}

// The one folder under `parent` whose name starts with `prefix`; empty when there is not exactly one.
fs::path onlyFolder(const fs::path& parent, const std::string& prefix) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(parent)) {
        if (entry.path().filename().string().starts_with(prefix))
            found.push_back(entry.path());
    }
    return found.size() == 1 ? found.front() : fs::path();
}

class ProjectCommandTest : public lumbra::cli::testing::CliTest {
protected:
    std::string create(const std::string& name, std::vector<std::string> options = {}) {
        std::vector<std::string> args{"project", "create", temp(name)};
        args.insert(args.end(), options.begin(), options.end());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return temp(name);
    }
    // A group folder in the project's bins tree, as a save writes one.
    void addGroup(const std::string& project, const std::string& name, const std::string& uuid) {
        fs::path folder = fs::path(project) / "_bins_" / (name + " - " + uuid);
        fs::create_directories(folder);
        std::ofstream(folder / "lumbra_details") << uuid << "\n0.0\n0.0\nNone\n";
    }
};

TEST_F(ProjectCommandTest, CreateWritesTheSettingsAndTheTwoLayouts) {
    std::string project = create("Feature", {"--fps", "25", "--columns", "Name,Tape", "--tape", "T1"});
    std::string file = readAll(fs::path(project) / "tarelproject");
    EXPECT_TRUE(file.starts_with("Feature\nfps\t25\ntlResolution\t1080\nsound\t44.1khz\ntapeid\tT1\n"))
        << file;
    EXPECT_NE(file.find("\nbaselayout\tName\tTape\n"), std::string::npos);
    EXPECT_NE(file.find("\nprojectlayout\tName\tTape\n"), std::string::npos);
    EXPECT_TRUE(fs::is_directory(fs::path(project) / "_bins_"));

    auto info = run({"project", "info", project});
    EXPECT_EQ(info.exitCode, 0) << info.err;
    EXPECT_NE(info.out.find("\nfps: 25\n"), std::string::npos);
    EXPECT_NE(info.out.find("\n  Default: Name, Tape\n  Project Default: Name, Tape\n"), std::string::npos);
}

TEST_F(ProjectCommandTest, CreateFromAnAleFileTakesItsHeadingUnderTheOptions) {
    std::string project = create("Day", {"--from-ale", data("clips.ale"), "--sound", "44.1khz"});
    std::string file = readAll(fs::path(project) / "tarelproject");
    EXPECT_TRUE(file.starts_with("Day\nfps\t25\ntlResolution\t1080\nsound\t44.1khz\ntapeid\tA001\n"
                                 "filmformat\t35mm, 4 perf\n"))
        << file;
    EXPECT_NE(file.find("\nbaselayout\tLumbra_Color_Tag\tTape\tName\tStart\tEnd\tScene\tComments\n"),
              std::string::npos);

    auto missing = run({"project", "create", temp("Other"), "--from-ale", temp("none.ale")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.err, "Cannot create " + temp("Other") + ": ERROR while reading info from file " +
                               temp("none.ale") + "\n");
    EXPECT_FALSE(fs::exists(m_dir / "Other"));
}

TEST_F(ProjectCommandTest, RefusedCreationsSayWhyAndLeaveTheFolderAsItWas) {
    std::string existing = create("Taken", {"--fps", "24"});
    auto before = snapshot(m_dir / "Taken");
    struct Case {
        const char* name;
        std::vector<std::string> args;
        std::string err;
    };
    const std::vector<Case> cases{
        {"existing project",
         {"project", "create", existing},
         "Cannot create " + existing + ": a folder Taken already exists\n"},
        {"forbidden character",
         {"project", "create", temp("a;b")},
         "Cannot create " + temp("a;b") + ": the project name contains forbidden characters\n"},
        {"column named twice",
         {"project", "create", temp("New"), "--columns", "Name,Tape,Name"},
         "Cannot create " + temp("New") + ": a column is named twice\n"},
        {"no parent folder",
         {"project", "create", temp("none/New")},
         "Cannot create " + temp("none/New") + ": the folder " + temp("none") + " does not exist\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto result = run(c.args);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, c.err);
    }
    EXPECT_EQ(snapshot(m_dir / "Taken"), before);
    EXPECT_FALSE(fs::exists(m_dir / "New"));
    EXPECT_FALSE(fs::exists(m_dir / "a;b"));
}

TEST_F(ProjectCommandTest, ImportAddsOneBinPerFileIntoTheGroupAndSaves) {
    std::string project = create("P", {"--fps", "25", "--columns", "Name"});
    addGroup(project, "Scenes", "11111111-2222-3333-4444-555555555555");
    auto result =
        run({"project", "import", project, data("clips.ale"), data("clips.ale"), "--group", "Scenes"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    // The sound of the file (48khz) differs from the project's (44.1khz) in both bins.
    EXPECT_NE(result.out.find("[WARNING] Metadata mismatch: 2 Bins Metadata Mismatch.\n"), std::string::npos);
    EXPECT_NE(result.out.find("[OK] Load OK: Successfully loaded 2 bins\n"), std::string::npos);

    fs::path group = onlyFolder(fs::path(project) / "_bins_", "Scenes - ");
    ASSERT_FALSE(group.empty());
    fs::path first = onlyFolder(group, "clips - ");
    fs::path second = onlyFolder(group, "clips_02 - ");
    ASSERT_FALSE(first.empty());
    ASSERT_FALSE(second.empty());
    std::string ale = readAll(second / "clips_02.ale");
    EXPECT_NE(ale.find("AUDIO_FORMAT\t44.1khz\n"), std::string::npos);
    std::string binFile = readAll(second / "clips_02.bin");
    EXPECT_NE(binFile.find("originalmeta_audioformat\t48khz"), std::string::npos) << binFile;

    auto info = run({"project", "info", project});
    std::string uuid = first.filename().string().substr(std::string("clips - ").size());
    EXPECT_NE(info.out.find("Bins:\n  Scenes/\n    clips\t" + uuid +
                            "\t2 rows\t7 columns\tunlocked\n    clips_02\t"),
              std::string::npos)
        << info.out;
}

TEST_F(ProjectCommandTest, ImportIntoAGroupNotYetThereMakesIt) {
    std::string project = create("P");
    auto result = run({"project", "import", project, data("clips.ale"), "--group", "Day 1"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    fs::path group = onlyFolder(fs::path(project) / "_bins_", "Day 1 - ");
    ASSERT_FALSE(group.empty());
    EXPECT_FALSE(onlyFolder(group, "clips - ").empty());

    auto again = run({"project", "import", project, data("clips.ale"), "--group", "Day 1"});
    EXPECT_EQ(again.exitCode, 0) << again.err;
    EXPECT_FALSE(onlyFolder(group, "clips_02 - ").empty());
    auto info = run({"project", "info", project});
    EXPECT_NE(info.out.find("  Day 1/\n    clips\t"), std::string::npos) << info.out;

    // Names are escaped in the listing, so that each bin stays one line of tab-separated fields.
    fs::copy_file(data("clips.ale"), temp("a\tb\\c\nd.ale"));
    ASSERT_EQ(run({"project", "import", project, temp("a\tb\\c\nd.ale"), "--group", "Day\t2"}).exitCode, 0);
    info = run({"project", "info", project});
    EXPECT_NE(info.out.find("\n  Day\\t2/\n    a\\tb\\\\c\\nd\t"), std::string::npos) << info.out;
}

TEST_F(ProjectCommandTest, ImportFailuresExitOneAndKeepTheProject) {
    std::string project = create("P");

    auto unknown = run({"project", "import", project, temp("notes.txt")});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.err, "Cannot import " + temp("notes.txt") + ": no reader for its file suffix\n");
    EXPECT_EQ(onlyFolder(fs::path(project) / "_bins_", "clips"), fs::path());

    // A file that cannot be read does not stop the others, which are saved.
    auto partly = run({"project", "import", project, temp("missing.ale"), data("clips.ale")});
    EXPECT_EQ(partly.exitCode, 1);
    EXPECT_EQ(partly.err, "Cannot read " + temp("missing.ale") + ": the file does not exist\n");
    EXPECT_NE(partly.out.find("[KO] Operation not executed: ERROR while opening " + temp("missing.ale") +
                              ": the file does not exist\n"),
              std::string::npos);
    EXPECT_FALSE(onlyFolder(fs::path(project) / "_bins_", "clips - ").empty());

    auto none = run({"project", "info", temp("Nothing")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.err, "Cannot open " + temp("Nothing") + ": no project there\n");
}

TEST_F(ProjectCommandTest, AQuestionStopsWithStatusTwoUnlessAnswered) {
    // An earlier layout on disk makes the open ask before it changes anything.
    fs::create_directories(m_dir / "Old" / "bins");
    std::ofstream(m_dir / "Old" / "tarelproject")
        << "Old\nfps\t25\ntlResolution\t1080\nsound\t48khz\nbaselayout\tName\n";
    auto before = snapshot(m_dir / "Old");

    auto asked = run({"project", "save", temp("Old")});
    EXPECT_EQ(asked.exitCode, 2);
    EXPECT_TRUE(asked.err.starts_with(
        "Question: Legacy saving folders: Legacy saving folders/saving_system detected."))
        << asked.err;
    EXPECT_EQ(snapshot(m_dir / "Old"), before);

    auto refused = run({"project", "save", temp("Old"), "--no"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.err, "Cannot open " + temp("Old") + ": updating its earlier layout was refused\n");
    EXPECT_EQ(snapshot(m_dir / "Old"), before);

    auto accepted = run({"project", "save", temp("Old"), "--yes"});
    EXPECT_EQ(accepted.exitCode, 0) << accepted.err;
    EXPECT_FALSE(fs::exists(m_dir / "Old" / "bins"));
    EXPECT_TRUE(fs::is_directory(m_dir / "Old" / "_bins_"));
    EXPECT_NE(readAll(m_dir / "Old" / "tarelproject").find("\nfps\t25\n"), std::string::npos);
}

TEST_F(ProjectCommandTest, AValueThatCannotBeReadBackAndADamagedProjectFileAreRefused) {
    auto quoted = run({"project", "create", temp("Q"), "--tape", "A\"B"});
    EXPECT_EQ(quoted.exitCode, 2);
    EXPECT_TRUE(quoted.err.find("the tape id holds a double quote") != std::string::npos) << quoted.err;
    EXPECT_FALSE(fs::exists(m_dir / "Q"));

    std::string project = create("P", {"--columns", "Name"});
    std::string text = readAll(fs::path(project) / "tarelproject");
    std::ofstream(fs::path(project) / "tarelproject", std::ios::trunc) << text.substr(0, 9);
    auto damaged = run({"project", "info", project});
    EXPECT_EQ(damaged.exitCode, 1);
    EXPECT_EQ(std::count(damaged.err.begin(), damaged.err.end(), '\n'), 1) << damaged.err;
    EXPECT_TRUE(damaged.err.find("is damaged") != std::string::npos) << damaged.err;
    EXPECT_EQ(readAll(fs::path(project) / "tarelproject"), text.substr(0, 9));
}

TEST_F(ProjectCommandTest, CopyZipAndBackup) {
    std::string project = create("P", {"--columns", "Name"});
    ASSERT_EQ(run({"project", "import", project, data("clips.ale")}).exitCode, 0);
    fs::create_directories(m_dir / "dest");

    auto copy = run({"project", "copy", project, temp("dest")});
    EXPECT_EQ(copy.exitCode, 0) << copy.err;
    EXPECT_NE(copy.out.find("Successfully saved to " + temp("dest") + "/P\n"), std::string::npos) << copy.out;
    auto again = run({"project", "copy", project, temp("dest")});
    EXPECT_EQ(again.exitCode, 0);
    for (const char* name : {"P", "P_02"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(readAll(m_dir / "dest" / name / "tarelproject").starts_with("P\n"));
        EXPECT_FALSE(onlyFolder(m_dir / "dest" / name / "_bins_", "clips - ").empty());
    }

    auto zip = run({"project", "zip", project, temp("dest")});
    EXPECT_EQ(zip.exitCode, 0) << zip.err;
    EXPECT_TRUE(readAll(m_dir / "dest" / "P.zip").starts_with("PK"));

    auto backup = run({"project", "backup", project});
    EXPECT_EQ(backup.exitCode, 0) << backup.err;
    std::vector<std::string> archives;
    for (const auto& entry : fs::directory_iterator(fs::path(project) / "backup"))
        archives.push_back(entry.path().filename().string());
    ASSERT_EQ(archives.size(), 1u);
    EXPECT_TRUE(archives[0].ends_with("-P.zip")) << archives[0];

    auto noDest = run({"project", "copy", project, temp("missing")});
    EXPECT_EQ(noDest.exitCode, 1);
    EXPECT_EQ(noDest.err, "Cannot save to " + temp("missing") + ": no such folder\n");

    // A destination path of 4040 bytes takes the project file, not the bins' longer paths: the copy
    // fails part-way, and what it had written goes.
    fs::path deep = m_dir / "deep";
    while (deep.string().size() < 4040)
        deep /= std::string(std::min<std::size_t>(200, 4040 - deep.string().size() - 1), 'd');
    fs::create_directories(deep);
    auto partial = run({"project", "copy", project, deep.string()});
    EXPECT_EQ(partial.exitCode, 1);
    EXPECT_EQ(partial.err, "Error while saving to " + deep.string() + "/P\n");
    EXPECT_TRUE(fs::is_empty(deep));
}

TEST_F(ProjectCommandTest, ASaveThatFailsAtOpeningExitsOneAndChangesNothing) {
    // The folder named "readonly" gets its rights back when the test ends.
    std::string project = create("readonly");
    ASSERT_EQ(run({"project", "import", project, data("clips.ale")}).exitCode, 0);
    fs::create_directories(m_dir / "dest");
    fs::permissions(project, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    const auto before = snapshot(project);
    const std::vector<std::vector<std::string>> commands{
        {"project", "info", project},
        {"project", "copy", project, temp("dest")},
        {"project", "zip", project, temp("dest")},
        {"bin", "export", project, "clips", temp("dest/clips.csv")},
    };
    for (const auto& args : commands) {
        SCOPED_TRACE(args[1]);
        auto result = run(args, {.unprivileged = true, .memoryLimit = 0, .goneWorkingFolder = {}});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, "Cannot save " + project + ": the save that ends its opening failed\n");
    }
    EXPECT_TRUE(fs::is_empty(m_dir / "dest"));
    EXPECT_EQ(snapshot(project), before);
}

TEST_F(ProjectCommandTest, UsageErrorsExitTwo) {
    const std::vector<std::vector<std::string>> cases{{"project"},
                                                      {"project", "rename", temp("P")},
                                                      {"project", "import", temp("P")},
                                                      {"project", "copy", temp("P")},
                                                      {"project", "info", temp("P"), "--fps", "25"},
                                                      {"project", "save", temp("P"), "--yes", "--no"}};
    for (const auto& args : cases) {
        SCOPED_TRACE(args.back());
        auto result = run(args);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_TRUE(result.err.starts_with("lumbra-cli project: ")) << result.err;
    }
}

} // namespace
