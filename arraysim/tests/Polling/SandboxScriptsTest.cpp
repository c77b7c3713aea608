// The su stand-in and the installer's dry run, as the module and an operator
// call them.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

struct Result {
    int status = -1;
    std::string output;
};

// Runs a shell line with standard error joined to the output, as the module does.
Result run(const std::string& line) {
    Result result;
    FILE* pipe = ::popen((line + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, got);
    const int status = ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

bool exists(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0;
}

class SandboxScriptsTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/sandbox-scripts-test-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(pattern));
        m_dir = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + m_dir + "'").c_str()); }

    // The stand-in first on PATH, as the sandbox puts it.
    std::string withSu(const std::string& line) const {
        return "PATH='" TEST_SOURCE_DIR "/arraysim/sandbox':\"$PATH\" SMIS_ROOT='" + m_dir + "' " + line;
    }

    std::string m_dir;
};

TEST_F(SandboxScriptsTest, SuRunsTheModulesFormKeepingTheEnvironment) {
    // The line as the module builds it: command, blank, 2>&1, blank, in quotes.
    const Result result = run(withSu(
        "sh -c 'su - opsmaint -c \"echo root=$SMIS_ROOT; command -v su; echo oops >&2; exit 4 2>&1 \"'"));
    EXPECT_EQ(4, result.status) << result.output;
    EXPECT_NE(std::string::npos, result.output.find("root=" + m_dir + "\n")) << result.output;
    EXPECT_NE(std::string::npos, result.output.find(TEST_SOURCE_DIR "/arraysim/sandbox/su")) << result.output;
    EXPECT_NE(std::string::npos, result.output.find("oops")) << result.output;

    // Quotes and semicolons in the command reach the shell as they stand.
    const Result quoted = run(withSu("su - opsmaint -c 'printf \"%s|\" \"a b\" c; echo'"));
    EXPECT_EQ(0, quoted.status);
    EXPECT_EQ("a b|c|\n", quoted.output);
}

TEST_F(SandboxScriptsTest, SuRefusesEveryOtherForm) {
    const std::string marker = m_dir + "/ran";
    const std::string touch = "'touch " + marker + "'";
    for (const std::string& args : {"opsmaint -c " + touch, "- root -c " + touch, "-l opsmaint -c " + touch,
                                    "- opsmaint " + touch, "- opsmaint -c " + touch + " extra",
                                    std::string("- opsmaint -c '  '"), std::string("- opsmaint"),
                                    std::string("")}) {
        const Result result = run(withSu("su " + args));
        EXPECT_EQ(1, result.status) << args;
        EXPECT_NE(std::string::npos, result.output.find("only 'su - opsmaint -c COMMAND' is accepted"))
            << args << ": " << result.output;
    }
    EXPECT_FALSE(exists(marker));
}

TEST_F(SandboxScriptsTest, InstallerDryRunShowsEverythingAndChangesNothing) {
    const std::string build = m_dir + "/build";
    ASSERT_EQ(0, std::system(("mkdir -p '" + build + "/bin' && cp /bin/true '" + build + "/bin/arraysim'").c_str()));
    const std::string prefix = m_dir + "/opt/arraysim", state = m_dir + "/state";
    const std::string script = TEST_SOURCE_DIR "/scripts/install-arraysim.sh";

    const Result result = run("'" + script + "' --dry-run --build-dir '" + build + "' --prefix '" + prefix +
                              "' --state-root '" + state + "'");
    EXPECT_EQ(0, result.status) << result.output;
    for (const char* tool : {"Vexview", "Vexcfg", "Vexsc_create", "Vexsc_delete", "Vexsc_restore", "Vexsc_query",
                             "Vexrc_pair", "Vexrc_replicate", "Vexrc_separate", "Vexrc_restore", "Vexrc_change",
                             "Vexrc_rvmode", "Vexrc_query", "outfmtset"}) {
        EXPECT_NE(std::string::npos, result.output.find("ln -sfn arraysim " + prefix + "/bin/" + tool + "\n"))
            << tool;
    }
    EXPECT_NE(std::string::npos, result.output.find("export PATH=\"" + prefix + "/bin:$PATH\""));
    EXPECT_NE(std::string::npos, result.output.find("export SMIS_ROOT=\"" + state + "\""));
    EXPECT_NE(std::string::npos, result.output.find(state + "/var/lib/arraysim"));
    EXPECT_FALSE(exists(prefix));
    EXPECT_FALSE(exists(state));

    // Paths that would break the profile, and a missing build, stop it before anything is done.
    // (In dry runs too: the checks come first, and a test must never install for real.)
    for (const std::string args : {"--prefix opt/arraysim", "--prefix '/opt/a b'", "--state-root '/x\";rm'",
                                   "--prefix /", "--bogus"}) {
        const Result refused = run("'" + script + "' --dry-run --build-dir '" + build + "' " + args);
        EXPECT_NE(0, refused.status) << args;
        EXPECT_NE(std::string::npos, refused.output.find("install-arraysim:")) << args << ": " << refused.output;
    }
    const Result noBuild = run("'" + script + "' --dry-run --build-dir '" + m_dir + "/nothing'");
    EXPECT_NE(0, noBuild.status);
    EXPECT_NE(std::string::npos, noBuild.output.find("no built arraysim")) << noBuild.output;
}

}  // namespace
