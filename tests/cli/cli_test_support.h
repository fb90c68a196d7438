#pragma once

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace lumbra::cli::testing {

namespace fs = std::filesystem;

struct CliResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline std::string readAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// How the child starts: without the super-user's rights (so that a read-only folder is one), with its
// address space limited to `memoryLimit` bytes, or in a working folder removed before it runs.
struct ChildSetup {
    bool unprivileged = false;
    rlim_t memoryLimit = 0;
    std::string goneWorkingFolder;
};

// Each test in a fresh folder of its own, with the built lumbra-cli run as a child process.
class CliTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() /
                ("lumbra_cli_test_" + std::to_string(::getpid()) + "_" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->test_suite_name() + "_" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
    }
    void TearDown() override {
        std::error_code ec;
        fs::permissions(m_dir / "readonly", fs::perms::owner_all, ec);
        fs::remove_all(m_dir, ec);
    }

    // Runs lumbra-cli with the arguments, standard output and error going to files.
    CliResult run(const std::vector<std::string>& args, const ChildSetup& setup = {}) const {
        fs::path outPath = m_dir / "stdout.txt";
        fs::path errPath = m_dir / "stderr.txt";
        pid_t pid = ::fork();
        if (pid == 0) {
            int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            ::dup2(out, STDOUT_FILENO);
            ::dup2(err, STDERR_FILENO);
            if (!setup.goneWorkingFolder.empty() && (::mkdir(setup.goneWorkingFolder.c_str(), 0755) != 0 ||
                                                     ::chdir(setup.goneWorkingFolder.c_str()) != 0 ||
                                                     ::rmdir(setup.goneWorkingFolder.c_str()) != 0))
                ::_exit(126);
            const rlimit limit{setup.memoryLimit, setup.memoryLimit};
            if (setup.memoryLimit && ::setrlimit(RLIMIT_AS, &limit) != 0)
                ::_exit(126);
            if (setup.unprivileged && ::geteuid() == 0 && ::setuid(65534) != 0)
                ::_exit(126);
            std::vector<char*> argv{const_cast<char*>(LUMBRA_CLI_PATH)};
            for (const auto& a : args)
                argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            ::execv(LUMBRA_CLI_PATH, argv.data());
            ::_exit(127);
        }
        CliResult result;
        int status = 0;
        ::waitpid(pid, &status, 0);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = readAll(outPath);
        result.err = readAll(errPath);
        return result;
    }

    static std::string data(const std::string& name) { return std::string(LUMBRA_CLI_DATA_DIR) + "/" + name; }
    std::string temp(const std::string& name) const { return (m_dir / name).string(); }
    // Writes the bytes to `name` under the test's folder, making the folders on the way; its path.
    std::string file(const std::string& name, const std::string& bytes) const {
        fs::create_directories(fs::path(temp(name)).parent_path());
        std::ofstream(temp(name), std::ios::binary) << bytes;
        return temp(name);
    }

    fs::path m_dir;
};

} // namespace lumbra::cli::testing
