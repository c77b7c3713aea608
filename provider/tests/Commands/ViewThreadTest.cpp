// The view and configuration threads: which view a wake-up asks for, wake-ups
// during a load folding into one further load, a failing load retried with the
// clean-up in between, and a job holding the view back.

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "CommandsTestSupport.h"
#include "DataflowSource.h"
#include "ExecVexcfg.h"
#include "ExecVexview.h"

using namespace orvsmis;

namespace {

// Loads that succeed or fail as the test says, with something done mid-load.
class ScriptedSource : public DataflowSource {
public:
    std::atomic<int> loads{0};
    std::vector<bool> results;  // per load; later loads succeed
    void (*during)() = nullptr;
    bool LoadData() override {
        int n = loads++;
        if (during != nullptr) during();
        return n >= static_cast<int>(results.size()) || results[n];
    }
    void GetData(int, std::string&, std::vector<RawData*>&) override {}
    bool HasValidData() override { return true; }
};

ScriptedSource* g_source = nullptr;
std::atomic<int> g_failovers{0};
std::atomic<int> g_loadsDuringJob{-1};

void CountFailover() { ++g_failovers; }
void WakeTwice() {
    WakeupViewThread();
    WakeupViewThread();
}
void JobWithAReportMeanwhile() {
    WakeupViewThread();
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    g_loadsDuringJob = g_source->loads.load();
}

DiskStatus Status(int wakeup = -1, int logical = 0, int physical = 0) {
    pthread_mutex_lock(&status_mutex);
    DiskStatus copy = ds_;
    if (wakeup >= 0) ds_ = DiskStatus{wakeup, logical, physical};
    pthread_mutex_unlock(&status_mutex);
    return copy;
}

int TakeCfgFlag() {
    pthread_mutex_lock(&cfg_mutex);
    int flag = diskcfg;
    diskcfg = 0;
    pthread_mutex_unlock(&cfg_mutex);
    return flag;
}

class ViewThread : public ::testing::Test {
protected:
    void SetUp() override {
        g_source = &m_source;
        g_failovers = 0;
        SetViewThreadSource(&m_source, CountFailover);
        EnableVexviewThread(true);
        Status(0);
        TakeCfgFlag();
    }
    void TearDown() override {
        SetViewThreadSource(nullptr, nullptr);
        EnableVexviewThread(true);
        Status(0);
        TakeCfgFlag();
    }
    cmdtest::TempRoot m_root;
    ScriptedSource m_source;
};

}  // namespace

TEST(ViewKind, ChosenFromTheTwoStatuses) {
    const int cases[][3] = {{1, 1, CMD_TYPE_ALL}, {1, 2, CMD_TYPE_LOGIC}, {2, 1, CMD_TYPE_PHYSICS}, {2, 2, CMD_TYPE_NONE}};
    const char* words[] = {"", "all", "logic", "physics"};
    for (const auto& c : cases) {
        DiskStatus st = {1, c[0], c[1]};
        int kind = -1;
        VexviewOptionParse(&kind, &st);
        EXPECT_EQ(c[2], kind) << c[0] << "/" << c[1];
        EXPECT_STREQ(words[c[2]], CmdTypeToString(kind));
    }
}

TEST_F(ViewThread, WakeUpsDuringALoadMakeOneFurtherLoad) {
    m_source.during = WakeTwice;
    Status(1, 1, 1);
    EXPECT_TRUE(ViewThreadPass());
    DiskStatus st = Status();
    EXPECT_EQ(1, st.wakeup);
    EXPECT_EQ(2, st.logical);
    EXPECT_EQ(2, st.physical);
    // Each successful load gives the configuration thread its turn.
    EXPECT_EQ(1, TakeCfgFlag());
    m_source.during = nullptr;
    EXPECT_TRUE(ViewThreadPass());
    EXPECT_EQ(2, m_source.loads);
    EXPECT_EQ(0, Status().wakeup);
}

TEST_F(ViewThread, FailedLoadIsCleanedUpAndRetriedUntilItSucceeds) {
    m_source.results = {false, false, true};
    Status(1, 1, 1);
    EXPECT_TRUE(ViewThreadPass());
    EXPECT_EQ(3, m_source.loads);
    EXPECT_EQ(2, g_failovers);
    EXPECT_EQ(1, TakeCfgFlag());
}

TEST_F(ViewThread, DisabledViewKeepsTheWakeUpForLater) {
    EnableVexviewThread(false);
    Status(1, 1, 1);
    EXPECT_FALSE(ViewThreadPass());
    EXPECT_EQ(0, m_source.loads);
    EXPECT_EQ(1, Status().wakeup);
    EnableVexviewThread(true);
    EXPECT_TRUE(ViewThreadPass());
    EXPECT_EQ(1, m_source.loads);
}

TEST_F(ViewThread, JobHoldsTheViewBackAndTheViewFollowsIt) {
    std::atomic<bool> quit{false};
    std::thread view([&] {
        while (!quit) ViewThreadPass();
    });
    RunCfgJobTurn(JobWithAReportMeanwhile);
    EXPECT_EQ(0, g_loadsDuringJob);
    EXPECT_TRUE(bEnable);
    // The view that proves the job's effect follows without a further signal.
    EXPECT_TRUE(cmdtest::WaitFor([&] { return m_source.loads == 1; }, 3000));
    quit = true;
    WakeupViewThread();
    view.join();
}

TEST(CfgThread, WakeUpIsNeverLost) {
    WakeupCfgThread();  // before the wait
    WaitForCfgTurn();
    EXPECT_EQ(0, TakeCfgFlag());
    std::thread waker([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        WakeupCfgThread();
    });
    WaitForCfgTurn();  // during the wait
    waker.join();
}
