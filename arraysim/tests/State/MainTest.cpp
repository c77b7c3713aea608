// The built program: "arraysim" subcommands and the tools it answers as.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <thread>
#include <chrono>
#include <sys/stat.h>
#include <fstream>
#include <string>

#include "FaultStore.h"
#include "StateStore.h"
#include "StateTestRoot.h"

using namespace arraysim;

namespace {

const std::string kBin = TEST_BINARY_DIR "/arraysim-bin";

struct Result {
    int status = -1;
    std::string output;
};

// Runs a line with standard error joined to the output; the arguments are our own constants.
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

class MainTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(run(kBin + "/arraysim init --template small --seed 3").status, 0);
    }
    arraysim_test::TempRoot root;
};

TEST_F(MainTest, InitShowAndSet) {
    Result shown = run(kBin + "/arraysim show");
    EXPECT_EQ(shown.status, 0);
    EXPECT_NE(shown.output.find("Disks: 24"), std::string::npos) << shown.output;

    EXPECT_EQ(run(kBin + "/arraysim set disk 00h-0005h --state failure").status, 0);
    EXPECT_EQ(run(kBin + "/arraysim set pool 0001h --used 90%").status, 0);
    EXPECT_EQ(run(kBin + "/arraysim set unit --location 'Room 2'").status, 0);
    EXPECT_EQ(run(kBin + "/arraysim set access-control off").status, 0);
    EXPECT_EQ(run(kBin + "/arraysim time realistic --rate 80").status, 0);
    const ArrayState s = StateStore(root.StateDir()).Read();
    EXPECT_EQ(s.FindDisk(0, 5)->state, "failure");
    EXPECT_EQ(s.identity.unitLocation, "Room 2");
    EXPECT_FALSE(s.identity.accessControl);
    EXPECT_EQ(s.timing.mode, "realistic");
    EXPECT_EQ(s.timing.rateMBps, 80);
    EXPECT_EQ(s.FindPool(1)->usedCapacity, s.FindPool(1)->capacity * 9 / 10);

    Result refused = run(kBin + "/arraysim set disk 09h-0005h --state failure");
    EXPECT_NE(refused.status, 0);
    EXPECT_NE(refused.output.find("no disk 09h-0005h"), std::string::npos) << refused.output;
    EXPECT_NE(run(kBin + "/arraysim init --template huge").status, 0);
    EXPECT_NE(run(kBin + "/arraysim set access-control maybe").status, 0);
    EXPECT_NE(run(kBin + "/arraysim").status, 0);
    Result unknown = run(kBin + "/arraysim frobnicate");
    EXPECT_NE(unknown.status, 0);
    EXPECT_NE(unknown.output.find("unknown subcommand \"frobnicate\""), std::string::npos) << unknown.output;
}

TEST_F(MainTest, OutfmtsetRecordsTheChoice) {
    EXPECT_EQ(run(kBin + "/outfmtset xml").status, 0);
    std::ifstream in(root.StateDir() + "/outfmt");
    std::string recorded;
    std::getline(in, recorded);
    EXPECT_EQ(recorded, "xml");
    Result bad = run(kBin + "/outfmtset html");
    EXPECT_NE(bad.status, 0);
    EXPECT_NE(bad.output.find("usage"), std::string::npos);
}

TEST_F(MainTest, FaultsArmedFromTheCommandLineApplyToTools) {
    EXPECT_EQ(run(kBin + "/arraysim fault outfmtset --mode fail --rc 3 --message 'not now' --count 1").status, 0);
    Result failed = run(kBin + "/outfmtset xml");
    EXPECT_EQ(failed.status, 3);
    EXPECT_NE(failed.output.find("not now"), std::string::npos);
    EXPECT_EQ(run(kBin + "/outfmtset xml").status, 0);

    EXPECT_EQ(run(kBin + "/arraysim fault hubpolling --mode stall --seconds 2").status, 0);
    EXPECT_EQ(FaultStore(root.StateDir()).List().size(), 1u);
    EXPECT_EQ(run(kBin + "/arraysim fault clear").status, 0);
    EXPECT_TRUE(FaultStore(root.StateDir()).List().empty());
    EXPECT_NE(run(kBin + "/arraysim fault Vexview --mode drop").status, 0);
    EXPECT_NE(run(kBin + "/arraysim fault Vexview").status, 0);
}

// The daemon started as an operator would: in the background, with its port and
// pid files under SMIS_ROOT, gone again after SIGTERM.
TEST_F(MainTest, HubpollingStartsInTheBackgroundAndStops) {
    EXPECT_NE(run(kBin + "/arraysim hubpolling --interval-ms 1").status, 0);
    Result started = run(kBin + "/arraysim hubpolling --interval-ms 100");
    ASSERT_EQ(started.status, 0) << started.output;
    const std::string portFile = root.Path() + "/opt/HubMonitor/HubMonitor.port";
    const std::string pidFile = root.Path() + "/var/run/HubMonitor.pid";
    std::ifstream portIn(portFile, std::ios::binary);
    unsigned char bytes[2] = {0, 0};
    ASSERT_TRUE(portIn.read(reinterpret_cast<char*>(bytes), 2));
    const int port = bytes[0] << 8 | bytes[1];
    EXPECT_NE(started.output.find("127.0.0.1:" + std::to_string(port)), std::string::npos) << started.output;
    int pid = 0;
    std::ifstream(pidFile) >> pid;
    ASSERT_GT(pid, 1);
    ASSERT_EQ(::kill(pid, SIGTERM), 0);
    struct stat info;
    bool gone = false;
    for (int i = 0; i < 100 && !gone; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        gone = ::stat(pidFile.c_str(), &info) != 0 && ::kill(pid, 0) != 0;
    }
    EXPECT_TRUE(gone);
}

TEST_F(MainTest, UnknownToolNameIsRefused) {
    const std::string link = root.Path() + "/Vexunknown";
    ASSERT_EQ(::symlink((kBin + "/arraysim").c_str(), link.c_str()), 0);
    Result unknown = run(link + " -all");
    EXPECT_NE(unknown.status, 0);
    EXPECT_NE(unknown.output.find("unknown tool name \"Vexunknown\""), std::string::npos) << unknown.output;
}

}  // namespace
