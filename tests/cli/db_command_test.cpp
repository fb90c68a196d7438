#include "cli_test_support.h"

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

class DbCommandTest : public lumbra::cli::testing::CliTest {
protected:
    // The text of the one `<name>.csv` under the project's db folder; "" when there is none.
    std::string dbFile(const std::string& name) const {
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(temp("P")) / "db")) {
            if (entry.path().filename() == name + ".csv")
                return readAll(entry.path());
        }
        return "";
    }
};

} // namespace

TEST_F(DbCommandTest, DatabasesAreAddedChangedByToolsAndBecomeBins) {
    const std::string p = temp("P");
    ASSERT_EQ(run({"project", "create", p, "--fps", "25", "--columns", "Name"}).exitCode, 0);
    auto added = run({"db", "add", p,
                      file("one/f.csv", "File,Size\n/a/A001_0001.dpx,10\n/a/A001_0002.dpx,20\n/b/B.mov,5\n"),
                      file("two/f.csv", "Name\nx\n")});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_NE(added.out.find("Successfully loaded f_"), std::string::npos) << added.out;
    EXPECT_EQ(dbFile("f_"), "Name\nx");
    auto listed = run({"db", "list", p});
    EXPECT_NE(listed.out.find("f\t"), std::string::npos);
    EXPECT_NE(listed.out.find("\t3 rows\t2 columns\n"), std::string::npos) << listed.out;
    // The table comes after the lines of the opening save.
    EXPECT_TRUE(run({"db", "show", p, "f_"}).out.ends_with("-- saving pivots\nName\nx\n"));

    auto semi = run({"db", "add", p, file("semi.csv", "Title\n\nName;Tape\n'A;1';T1\n"), "--separator",
                     "semicolon", "--delimiter", "single", "--first-line", "3"});
    ASSERT_EQ(semi.exitCode, 0) << semi.err;
    EXPECT_EQ(dbFile("semi"), "Name\tTape\nA;1\tT1");

    auto seq = run({"db", "tool", p, "f", "suppress-sequence", "File"});
    ASSERT_EQ(seq.exitCode, 0) << seq.err;
    EXPECT_NE(seq.out.find("\nAdded column File_noseq\n"), std::string::npos) << seq.out;
    EXPECT_NE(seq.out.find("\nsaving db f\n"), std::string::npos) << seq.out;
    auto grouped = run({"db", "tool", p, "f", "group-by", "File_noseq"});
    EXPECT_NE(grouped.out.find("\n3 rows grouped into 2\n"), std::string::npos) << grouped.out;
    auto inferred = run({"db", "tool", p, "f", "infer-path", "File_noseq"});
    EXPECT_NE(inferred.out.find("\nAdded column filename\nAdded column path\n"), std::string::npos);
    const std::string saved = dbFile("f");
    EXPECT_TRUE(saved.starts_with("File\tFile_noseq\tfilename\tpath\tSize\n")) << saved;
    EXPECT_NE(saved.find("\t/a/A001.dpx\tA001.dpx\t/a\t30.0\n"), std::string::npos) << saved;

    auto bin = run({"db", "bin", p, "semi"});
    ASSERT_EQ(bin.exitCode, 0) << bin.err;
    EXPECT_TRUE(bin.out.ends_with("\nBin semi created from semi\n")) << bin.out;
    ASSERT_EQ(run({"bin", "export", p, "semi", temp("out.csv"), "--columns", "Name,Tape"}).exitCode, 0);
    EXPECT_EQ(readAll(temp("out.csv")), "Name,Tape\n\nA;1,T1");

    for (const char* name : {"semi", "f", "f_"})
        ASSERT_EQ(run({"db", "remove", p, name}).exitCode, 0) << name;
    EXPECT_TRUE(fs::is_empty(fs::path(p) / "db"));
}
