// The cimserver program as an operator runs it.

#include "ServerTestRoot.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const std::string kProgram = std::string(TEST_BINARY_DIR) + "/bin/cimserver";

struct Outcome {
    int status;
    std::string output;
};

Outcome run(const std::string& command) {
    Outcome result{-1, ""};
    FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return result;
    std::array<char, 512> buffer;
    std::size_t got;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) result.output.append(buffer.data(), got);
    const int status = ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

bool exists(const std::string& file) {
    struct stat info;
    return ::stat(file.c_str(), &info) == 0;
}

class CimserverProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Installed as an operator installs a module: into the server's lib folder.
        const std::string lib = root.path() + "/opt/pegasus/lib";
        std::filesystem::create_directories(lib);
        std::filesystem::create_symlink(std::string(TEST_BINARY_DIR) + "/testmodules/libTestProvider.so",
            lib + "/libTestProvider.so");
        root.write(root.path() + "/opt/pegasus/etc/cimserver.conf",
            "enableHttpConnection=false\nenableHttpsConnection=false\n"
            "traceLevel=2\ntraceComponents=Server,ProviderManager\n");
    }
    // The pid the pid file names, once it is there.
    pid_t waitForPid() {
        const std::string file = root.path() + "/var/run/cimserver.pid";
        for (int i = 0; i < 200; ++i) {
            pid_t pid = 0;
            std::ifstream(file) >> pid;
            if (pid > 0) return pid;
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        return 0;
    }
    ServerTestRoot root;
};

TEST_F(CimserverProgramTest, ForegroundServerStopsInOrderOnSigterm) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string out = root.path() + "/out.txt";
        std::freopen(out.c_str(), "w", stdout);
        std::freopen(out.c_str(), "a", stderr);
        ::execl(kProgram.c_str(), "cimserver", "--foreground", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    const pid_t pid = waitForPid();
    ASSERT_EQ(pid, child) << root.read(root.path() + "/out.txt");
    ASSERT_EQ(::kill(child, SIGTERM), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_FALSE(exists(root.path() + "/var/run/cimserver.pid"));
    const std::string out = root.read(root.path() + "/out.txt");
    EXPECT_NE(out.find("CIM server started"), std::string::npos) << out;
    EXPECT_NE(out.find("CIM server stopped"), std::string::npos) << out;
    const std::string log = root.read(root.log());
    EXPECT_EQ(log.substr(0, 10), "initialize");
    EXPECT_NE(log.find("terminate"), std::string::npos);
    const std::string trace = root.read(root.path() + "/opt/pegasus/trace/cimserver.trc");
    EXPECT_NE(trace.find("CIM server started"), std::string::npos) << trace;
    EXPECT_NE(trace.find("terminating provider TestProvider"), std::string::npos) << trace;
}

TEST_F(CimserverProgramTest, DaemonAnswersWhenReadyAndStops) {
    const Outcome started = run("SMIS_ROOT=" + root.path() + " " + kProgram);
    ASSERT_EQ(started.status, 0) << started.output;
    const pid_t pid = waitForPid();
    ASSERT_GT(pid, 1);
    EXPECT_NE(started.output.find("CIM server started (pid " + std::to_string(pid) + ")"), std::string::npos)
        << started.output;
    ASSERT_EQ(::kill(pid, SIGTERM), 0);
    bool gone = false;
    for (int i = 0; i < 200 && !gone; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
        gone = ::kill(pid, 0) != 0 && !exists(root.path() + "/var/run/cimserver.pid");
    }
    EXPECT_TRUE(gone);
}

TEST_F(CimserverProgramTest, BadStartsSayWhyAndFail) {
    const Outcome version = run(kProgram + " --version");
    EXPECT_EQ(version.status, 0);
    EXPECT_FALSE(version.output.empty());

    root.write(root.path() + "/bad.conf", "httpPort=5988\nenableAuthentication=maybe\n");
    const Outcome badConfig = run("SMIS_ROOT=" + root.path() + " " + kProgram + " --foreground --config " +
                              root.path() + "/bad.conf");
    EXPECT_NE(badConfig.status, 0);
    EXPECT_NE(badConfig.output.find("bad.conf:2: enableAuthentication must be true or false"), std::string::npos)
        << badConfig.output;

    const Outcome missing = run("SMIS_ROOT=" + root.path() + " " + kProgram + " --config /nonexistent.conf");
    EXPECT_NE(missing.status, 0);
    EXPECT_NE(missing.output.find("cannot read the configuration file"), std::string::npos) << missing.output;

    root.write(root.path() + "/opt/pegasus/schema/50-broken.mof", "class Broken : NoSuchBase {};\n");
    const Outcome badSchema = run("SMIS_ROOT=" + root.path() + " " + kProgram);
    EXPECT_NE(badSchema.status, 0);
    EXPECT_NE(badSchema.output.find("the schema cannot be loaded"), std::string::npos) << badSchema.output;
    EXPECT_FALSE(exists(root.path() + "/var/run/cimserver.pid"));
}

} // namespace
