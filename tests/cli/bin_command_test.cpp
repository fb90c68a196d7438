#include "cli_test_support.h"

namespace {

namespace fs = std::filesystem;
using lumbra::cli::testing::readAll;

class BinCommandTest : public lumbra::cli::testing::CliTest {
protected:
    void SetUp() override {
        CliTest::SetUp();
        m_project = temp("P");
        ASSERT_EQ(run({"project", "create", m_project, "--fps", "25", "--columns", "Name"}).exitCode, 0);
        ASSERT_EQ(run({"project", "import", m_project, data("clips.ale")}).exitCode, 0);
    }
    std::string m_project;
};

TEST_F(BinCommandTest, ExportsOneBinByNameOrUuid) {
    // The bin carries the project's sound; the file's film format and tape stay, the project having none.
    const std::string expectedAle =
        "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t44.1khz\n"
        "FILM_FORMAT\t35mm, 4 perf\nTAPE\tA001\n\nColumn\nName\tScene\n\nData\n"
        "A001C001\t12\nA001C002\t12A\n";
    auto byName = run({"bin", "export", m_project, "clips", temp("out.ale"), "--columns", "Name,Scene"});
    EXPECT_EQ(byName.exitCode, 0) << byName.err;
    EXPECT_EQ(readAll(temp("out.ale")), expectedAle);

    std::string uuid;
    for (const auto& entry : fs::directory_iterator(fs::path(m_project) / "_bins_")) {
        std::string name = entry.path().filename().string();
        if (name.starts_with("clips - "))
            uuid = name.substr(std::string("clips - ").size());
    }
    ASSERT_FALSE(uuid.empty());
    auto byUuid = run({"bin", "export", m_project, uuid, temp("out.tsv"), "--columns=Scene,Name"});
    EXPECT_EQ(byUuid.exitCode, 0) << byUuid.err;
    EXPECT_EQ(readAll(temp("out.tsv")), "Scene\tName\n\n12\tA001C001\n12A\tA001C002");
}

TEST_F(BinCommandTest, FailuresSayWhy) {
    struct Case {
        const char* name;
        std::vector<std::string> args;
        int exitCode;
        std::string err;
    };
    const std::vector<Case> cases{
        {"unknown bin",
         {"bin", "export", m_project, "nope", temp("o.ale")},
         1,
         "Cannot export from " + m_project + ": no bin named nope\n"},
        {"unknown suffix",
         {"bin", "export", m_project, "clips", temp("o.pdf")},
         1,
         "Cannot write " + temp("o.pdf") + ": no writer for its file suffix\n"},
        {"no project",
         {"bin", "export", temp("none"), "clips", temp("o.ale")},
         1,
         "Cannot open " + temp("none") + ": no project there\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto result = run(c.args);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_EQ(result.err, c.err);
    }
    EXPECT_FALSE(fs::exists(temp("o.ale")));
    auto usage = run({"bin", "export", m_project, "clips"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_TRUE(usage.err.starts_with("lumbra-cli bin: PATH, BIN and OUTPUT are needed\n"));
}

} // namespace
