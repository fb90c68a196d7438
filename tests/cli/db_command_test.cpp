#include "cli_test_support.h"

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

class DbCommandTest : public lumbra::cli::testing::CliTest {
protected:
    void SetUp() override {
        CliTest::SetUp();
        m_project = temp("P");
        ASSERT_EQ(run({"project", "create", m_project, "--fps", "25", "--columns", "Name"}).exitCode, 0);
    }
    std::string file(const std::string& name, const std::string& text) const {
        fs::create_directories(fs::path(temp(name)).parent_path());
        std::ofstream(temp(name), std::ios::binary) << text;
        return temp(name);
    }
    // The text of the one `<name>.csv` under the project's db folder; "" when there is none.
    std::string dbFile(const std::string& name) const {
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(m_project) / "db")) {
            if (entry.path().filename() == name + ".csv")
                return readAll(entry.path());
        }
        return "";
    }
    std::string m_project;
};

} // namespace

TEST_F(DbCommandTest, AddedFilesAreSavedListedAndShown) {
    auto added = run({"db", "add", m_project, file("one/frames.csv", "File,Size\nA001_0001.dpx,10\n"),
                      file("two/frames.csv", "Name\nx\n")});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_NE(added.out.find("Successfully loaded frames_"), std::string::npos) << added.out;
    EXPECT_EQ(dbFile("frames"), "File\tSize\nA001_0001.dpx\t10");
    EXPECT_EQ(dbFile("frames_"), "Name\nx");

    auto listed = run({"db", "list", m_project});
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    EXPECT_NE(listed.out.find("frames\t"), std::string::npos);
    EXPECT_NE(listed.out.find("\t1 row\t2 columns\n"), std::string::npos) << listed.out;
    EXPECT_NE(listed.out.find("frames_\t"), std::string::npos);

    auto shown = run({"db", "show", m_project, "frames"});
    EXPECT_EQ(shown.exitCode, 0) << shown.err;
    // The table comes after the lines of the opening save.
    EXPECT_TRUE(shown.out.ends_with("-- saving pivots\nFile\tSize\nA001_0001.dpx\t10\n")) << shown.out;
}

TEST_F(DbCommandTest, ACsvFileIsReadWithTheOptionsGiven) {
    auto added = run({"db", "add", m_project, file("semi.csv", "Title\n\nName;Tape\n'A;1';T1\n"),
                      "--separator", "semicolon", "--delimiter", "single", "--first-line", "3"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_EQ(dbFile("semi"), "Name\tTape\nA;1\tT1");
    auto wrong = run({"db", "list", m_project, "--separator", "tab"});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_TRUE(wrong.err.starts_with("lumbra-cli db: --separator does not apply to list")) << wrong.err;
}

TEST_F(DbCommandTest, ToolsChangeTheSavedTable) {
    ASSERT_EQ(run({"db", "add", m_project,
                   file("f.csv", "File,Size\n/a/A001_0001.dpx,10\n/a/A001_0002.dpx,20\n/b/B.mov,5\n")})
                  .exitCode,
              0);
    auto seq = run({"db", "tool", m_project, "f", "suppress-sequence", "File"});
    ASSERT_EQ(seq.exitCode, 0) << seq.err;
    EXPECT_NE(seq.out.find("\nAdded column File_noseq\n"), std::string::npos) << seq.out;
    EXPECT_NE(seq.out.find("\nsaving db f\n"), std::string::npos) << seq.out;
    auto grouped = run({"db", "tool", m_project, "f", "group-by", "File_noseq"});
    ASSERT_EQ(grouped.exitCode, 0) << grouped.err;
    EXPECT_NE(grouped.out.find("\n3 rows grouped into 2\n"), std::string::npos) << grouped.out;
    const std::string saved = dbFile("f");
    EXPECT_TRUE(saved.starts_with("File\tFile_noseq\tSize\n")) << saved;
    EXPECT_NE(saved.find("\t/a/A001.dpx\t30.0\n"), std::string::npos) << saved;
    EXPECT_TRUE(saved.ends_with("/b/B.mov\t/b/B.mov\t5")) << saved;
    auto inferred = run({"db", "tool", m_project, "f", "infer-path", "File_noseq"});
    EXPECT_NE(inferred.out.find("\nAdded column filename\nAdded column path\n"), std::string::npos);
    EXPECT_TRUE(dbFile("f").starts_with("File\tFile_noseq\tfilename\tpath\tSize\n"));
}

TEST_F(DbCommandTest, ABinAndARemoval) {
    ASSERT_EQ(run({"db", "add", m_project, file("shots.csv", "Name,Tape\nA001,T1\n")}).exitCode, 0);
    auto bin = run({"db", "bin", m_project, "shots"});
    ASSERT_EQ(bin.exitCode, 0) << bin.err;
    EXPECT_TRUE(bin.out.ends_with("\nBin shots created from shots\n")) << bin.out;
    auto exported = run({"bin", "export", m_project, "shots", temp("out.csv"), "--columns", "Name,Tape"});
    ASSERT_EQ(exported.exitCode, 0) << exported.err;
    EXPECT_EQ(readAll(temp("out.csv")), "Name,Tape\n\nA001,T1");

    auto removed = run({"db", "remove", m_project, "shots"});
    ASSERT_EQ(removed.exitCode, 0) << removed.err;
    EXPECT_EQ(dbFile("shots"), "");
    EXPECT_TRUE(fs::is_empty(fs::path(m_project) / "db"));
    EXPECT_EQ(run({"db", "list", m_project}).out.find("shots"), std::string::npos);
}

TEST_F(DbCommandTest, FailuresSayWhy) {
    ASSERT_EQ(run({"db", "add", m_project, file("t.csv", "A\n1\n")}).exitCode, 0);
    struct Case {
        const char* name;
        std::vector<std::string> args;
        int exitCode;
        std::string errStart;
    };
    const std::vector<Case> cases{
        {"unknown database",
         {"db", "show", m_project, "nope"},
         1,
         "Cannot find nope in " + m_project + ": no database has that name"},
        {"unknown column",
         {"db", "tool", m_project, "t", "group-by", "B"},
         1,
         "Cannot run group-by on t: no column B"},
        {"unknown tool",
         {"db", "tool", m_project, "t", "sort", "A"},
         2,
         "lumbra-cli db: unknown tool \"sort\""},
        {"file without a table",
         {"db", "add", m_project, file("n.txt", "x")},
         1,
         "Cannot load 1 of 1 files as databases"},
        {"no project", {"db", "list", temp("none")}, 1, "Cannot open " + temp("none") + ": no project there"},
        {"no subcommand", {"db"}, 2, "lumbra-cli db: a subcommand is needed"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto result = run(c.args);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_TRUE(result.err.starts_with(c.errStart)) << result.err;
    }
}
