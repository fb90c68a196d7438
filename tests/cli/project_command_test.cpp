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
};

TEST_F(ProjectCommandTest, CreateWritesTheSettingsAndLayoutsGivenOrTakesThemFromAnAleFile) {
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

    file = readAll(fs::path(create("Day", {"--from-ale", data("clips.ale"), "--sound", "44.1khz"})) /
                   "tarelproject");
    EXPECT_TRUE(file.starts_with("Day\nfps\t25\ntlResolution\t1080\nsound\t44.1khz\ntapeid\tA001\n"
                                 "filmformat\t35mm, 4 perf\n"))
        << file;
    EXPECT_NE(file.find("\nbaselayout\tLumbra_Color_Tag\tTape\tName\tStart\tEnd\tScene\tComments\n"),
              std::string::npos);
}

TEST_F(ProjectCommandTest, RefusalsExitOneWithOneLineAndChangeNothing) {
    const std::string taken = create("Taken", {"--fps", "24"});
    const auto before = snapshot(taken);
    const std::string p = create("P");
    ASSERT_EQ(run({"project", "import", p, data("clips.ale")}).exitCode, 0);
    ASSERT_EQ(run({"db", "add", p, file("t.csv", "A\n1\n")}).exitCode, 0);
    const lumbra::cli::testing::ChildSetup gone{
        .unprivileged = false, .memoryLimit = 0, .goneWorkingFolder = temp("gone")};
    struct Case {
        std::vector<std::string> args;
        std::string err;
        lumbra::cli::testing::ChildSetup setup = {};
    };
    const std::vector<Case> cases{
        {{"project", "create", taken}, "Cannot create " + taken + ": a folder Taken already exists\n"},
        {{"project", "create", temp("a;b")},
         "Cannot create " + temp("a;b") + ": the project name contains forbidden characters\n"},
        {{"project", "create", temp("New"), "--columns", "Name,Tape,Name"},
         "Cannot create " + temp("New") + ": a column is named twice\n"},
        {{"project", "create", temp("none/New")},
         "Cannot create " + temp("none/New") + ": the folder " + temp("none") + " does not exist\n"},
        {{"project", "create", temp("Other"), "--from-ale", temp("none.ale")},
         "Cannot create " + temp("Other") + ": ERROR while reading info from file " + temp("none.ale") +
             "\n"},
        {{"project", "create", "P"}, "Cannot create P: the working folder cannot be read\n", gone},
        {{"project", "info", "P"}, "Cannot open P: the working folder cannot be read\n", gone},
        {{"project", "info", temp("none")}, "Cannot open " + temp("none") + ": no project there\n"},
        {{"project", "import", p, temp("notes.txt")},
         "Cannot import " + temp("notes.txt") + ": no reader for its file suffix\n"},
        {{"project", "copy", p, temp("missing")}, "Cannot save to " + temp("missing") + ": no such folder\n"},
        {{"bin", "export", p, "nope", temp("o.ale")}, "Cannot export from " + p + ": no bin named nope\n"},
        {{"bin", "export", p, "clips", temp("o.pdf")},
         "Cannot write " + temp("o.pdf") + ": no writer for its file suffix\n"},
        {{"bin", "export", temp("none"), "clips", temp("o.ale")},
         "Cannot open " + temp("none") + ": no project there\n"},
        {{"db", "show", p, "nope"}, "Cannot find nope in " + p + ": no database has that name"},
        {{"db", "tool", p, "t", "group-by", "B"}, "Cannot run group-by on t: no column B"},
        {{"db", "add", p, file("n.txt", "x")}, "Cannot load 1 of 1 files as databases"},
        {{"db", "list", temp("none")}, "Cannot open " + temp("none") + ": no project there"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[1] + " " + c.args[2]);
        auto result = run(c.args, c.setup);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.starts_with(c.err)) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(snapshot(taken), before);
    for (const char* name : {"New", "a;b", "Other", "o.ale", "o.pdf"})
        EXPECT_FALSE(fs::exists(m_dir / name)) << name;

    // A damaged project file is named and left as it was.
    const std::string text = readAll(fs::path(taken) / "tarelproject");
    std::ofstream(fs::path(taken) / "tarelproject", std::ios::trunc) << text.substr(0, 9);
    auto damaged = run({"project", "info", taken});
    EXPECT_EQ(damaged.exitCode, 1);
    EXPECT_EQ(std::count(damaged.err.begin(), damaged.err.end(), '\n'), 1) << damaged.err;
    EXPECT_NE(damaged.err.find("is damaged"), std::string::npos) << damaged.err;
    EXPECT_EQ(readAll(fs::path(taken) / "tarelproject"), text.substr(0, 9));
}

TEST_F(ProjectCommandTest, ImportAddsOneBinPerFileIntoItsGroupAndExportsThem) {
    const std::string project = create("P", {"--fps", "25", "--columns", "Name"});
    // A group folder as a save writes one.
    const std::string scenes = "Scenes - 11111111-2222-3333-4444-555555555555";
    fs::create_directories(fs::path(project) / "_bins_" / scenes);
    std::ofstream(fs::path(project) / "_bins_" / scenes / "lumbra_details")
        << scenes.substr(9) << "\n0.0\n0.0\nNone\n";
    auto result =
        run({"project", "import", project, data("clips.ale"), data("clips.ale"), "--group", "Scenes"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    // The sound of the file (48khz) differs from the project's (44.1khz) in both bins.
    EXPECT_NE(result.out.find("[WARNING] Metadata mismatch: 2 Bins Metadata Mismatch.\n"), std::string::npos);
    EXPECT_NE(result.out.find("[OK] Load OK: Successfully loaded 2 bins\n"), std::string::npos);
    const fs::path group = fs::path(project) / "_bins_" / scenes;
    const fs::path first = onlyFolder(group, "clips - ");
    const fs::path second = onlyFolder(group, "clips_02 - ");
    ASSERT_FALSE(first.empty() || second.empty());
    EXPECT_NE(readAll(second / "clips_02.ale").find("AUDIO_FORMAT\t44.1khz\n"), std::string::npos);
    EXPECT_NE(readAll(second / "clips_02.bin").find("originalmeta_audioformat\t48khz"), std::string::npos);

    // A group not yet there is made; the CSV flags answer the layout question for the tsv too; an EDL bin is
    // named by its title. Missing files are refused one line each; the others are loaded and saved.
    fs::copy_file(data("clips.ale"), temp("a\tb\\c\nd.ale"));
    ASSERT_EQ(run({"project", "import", project, temp("a\tb\\c\nd.ale"), "--group", "Day\t2"}).exitCode, 0);
    result = run({"project", "import", project, file("day.csv", "Name;Tape\nA1;R1\nA2;R2\n"),
                  file("sound.tsv", "Roll;Take\nS1;3\n"), temp("missing.ale"),
                  file("day3.edl", "TITLE: Day 3\n001  A003C001 V     C        10:00:00:00 10:00:02:00 "
                                   "01:00:00:00 01:00:02:00\n"),
                  "--separator", "semicolon"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "Cannot read " + temp("missing.ale") + ": the file does not exist\n");
    EXPECT_NE(result.out.find("[KO] Operation not executed: ERROR while opening " + temp("missing.ale") +
                              ": the file does not exist\n"),
              std::string::npos);
    EXPECT_NE(result.out.find("[OK] Load OK: Successfully loaded 3 bins\n"), std::string::npos) << result.out;

    // Names are escaped in the listing, so that each bin stays one line of tab-separated fields; bins read
    // back from their ALE files have the colour tag column.
    const std::string info = run({"project", "info", project}).out;
    const std::string uuid = first.filename().string().substr(8);
    for (const std::string& part :
         {"\n  Scenes/\n    clips\t" + uuid + "\t2 rows\t7 columns\tunlocked\n    clips_02\t",
          std::string("\n  Day\\t2/\n    a\\tb\\\\c\\nd\t"), std::string("\t2 rows\t3 columns\tunlocked\n"),
          std::string("\t1 row\t3 columns\tunlocked\n"), std::string("\n  Day 3\t")})
        EXPECT_NE(info.find(part), std::string::npos) << part << "\n" << info;

    // The bin carries the project's sound; the file's film format and tape stay, the project having none.
    auto byName = run({"bin", "export", project, "clips", temp("out.ale"), "--columns", "Name,Scene"});
    EXPECT_EQ(byName.exitCode, 0) << byName.err;
    EXPECT_EQ(readAll(temp("out.ale")),
              "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t"
              "44.1khz\nFILM_FORMAT\t35mm, 4 perf\nTAPE\tA001\n\nColumn\nName\tScene\n"
              "\nData\nA001C001\t12\nA001C002\t12A\n");
    auto byUuid = run({"bin", "export", project, uuid, temp("out.tsv"), "--columns=Scene,Name"});
    EXPECT_EQ(byUuid.exitCode, 0) << byUuid.err;
    EXPECT_EQ(readAll(temp("out.tsv")), "Scene\tName\n\n12\tA001C001\n12A\tA001C002");
}

TEST_F(ProjectCommandTest, AQuestionStopsWithStatusTwoUnlessAnswered) {
    // An earlier layout on disk makes the open ask before it changes anything.
    file("Old/tarelproject", "Old\nfps\t25\ntlResolution\t1080\nsound\t48khz\nbaselayout\tName\n");
    fs::create_directories(m_dir / "Old" / "bins");
    const auto before = snapshot(m_dir / "Old");
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
}

TEST_F(ProjectCommandTest, CopyZipAndBackup) {
    std::string project = create("P", {"--columns", "Name"});
    ASSERT_EQ(run({"project", "import", project, data("clips.ale")}).exitCode, 0);
    fs::create_directories(m_dir / "dest");
    auto copy = run({"project", "copy", project, temp("dest")});
    EXPECT_EQ(copy.exitCode, 0) << copy.err;
    EXPECT_NE(copy.out.find("Successfully saved to " + temp("dest") + "/P\n"), std::string::npos) << copy.out;
    EXPECT_EQ(run({"project", "copy", project, temp("dest")}).exitCode, 0);
    for (const char* name : {"P", "P_02"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(readAll(m_dir / "dest" / name / "tarelproject").starts_with("P\n"));
        EXPECT_FALSE(onlyFolder(m_dir / "dest" / name / "_bins_", "clips - ").empty());
    }
    EXPECT_EQ(run({"project", "zip", project, temp("dest")}).exitCode, 0);
    EXPECT_TRUE(readAll(m_dir / "dest" / "P.zip").starts_with("PK"));
    EXPECT_EQ(run({"project", "backup", project}).exitCode, 0);
    const fs::path archive = fs::directory_iterator(fs::path(project) / "backup")->path();
    EXPECT_TRUE(archive.string().ends_with("-P.zip")) << archive;

    // A destination path of 4040 bytes takes the project file, not the bins' longer paths: the copy fails
    // part-way, and what it had written goes.
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
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"project", "info", project},
          {"project", "copy", project, temp("dest")},
          {"project", "zip", project, temp("dest")},
          {"bin", "export", project, "clips", temp("dest/clips.csv")}}) {
        SCOPED_TRACE(args[1]);
        auto result = run(args, {.unprivileged = true, .memoryLimit = 0, .goneWorkingFolder = {}});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, "Cannot save " + project + ": the save that ends its opening failed\n");
    }
    EXPECT_TRUE(fs::is_empty(m_dir / "dest"));
    EXPECT_EQ(snapshot(project), before);
}

} // namespace
