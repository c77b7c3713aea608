// The status file, the resource limits and the script that stops the server.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <future>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ConfigManager.h"
#include "MemoryCautioner.h"
#include "ResultInfo.h"
#include "Singleton.h"
#include "SmisStatusRecorder.h"
#include "TempRoot.h"

using namespace orvsmis;

namespace {

const char* const STATUS = "/opt/pegasus/etc/status";
const char* const STATUS_LOCK = "/opt/pegasus/etc/status.lock";

mode_t ModeOf(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 ? (st.st_mode & 0777) : 0;
}

TEST(StatusRecorderTest, LockFileIsMadeEmptyWithItsMode) {
    TempRoot root;
    root.Write(STATUS_LOCK, "stale");
    chmod(root.Under(STATUS_LOCK).c_str(), 0600);
    ASSERT_TRUE(InitializeStatusFile());
    EXPECT_EQ("", root.Read(STATUS_LOCK));
    EXPECT_EQ(0644u, ModeOf(root.Under(STATUS_LOCK)));
    ASSERT_TRUE(WriteStatus("ready"));
    EXPECT_EQ(" ready", root.Read(STATUS));
    EXPECT_EQ(0644u, ModeOf(root.Under(STATUS)));
    ASSERT_TRUE(WriteStatus("abnormal (data center)"));
    EXPECT_EQ(" abnormal (data center)", root.Read(STATUS));
}

TEST(StatusRecorderTest, UnwritableLocationIsReportedNotFatal) {
    TempRoot root;
    std::system(("rm -rf '" + root.Under("/opt/pegasus/etc") + "'").c_str());
    EXPECT_FALSE(InitializeStatusFile());
    EXPECT_FALSE(WriteStatus("ready"));
}

// The file shows the worse of the two layers. Both layers start "ready" (1);
// the steps below run in one process, so they form one story.
TEST(StatusRecorderTest, TheWorseLayerKeepsTheFile) {
    TempRoot root;
    ASSERT_TRUE(InitializeStatusFile());
    auto written = [&](const char* expected) {
        const std::string now = root.Read(STATUS);
        std::remove(root.Under(STATUS).c_str());
        return now == std::string(" ") + expected;
    };
    auto untouched = [&]() { return !root.Exists(STATUS); };

    RecordSmisLayerStatus(0, "not ready");
    EXPECT_TRUE(written("not ready"));
    RecordSmisLayerStatus(0, "not ready");  // same value: written once only
    EXPECT_TRUE(untouched());

    RecordPollingStatus(2, "abnormal (polling)");  // provider not ready: the link's word shows
    EXPECT_TRUE(written("abnormal (polling)"));
    RecordSmisLayerStatus(1, "ready");  // held back while the link is abnormal
    EXPECT_TRUE(untouched());
    RecordPollingStatus(1, "ready");
    EXPECT_TRUE(written("ready"));
    RecordPollingStatus(1, "ready");
    EXPECT_TRUE(untouched());

    RecordSmisLayerStatus(2, "abnormal (data center)");
    EXPECT_TRUE(written("abnormal (data center)"));
    RecordPollingStatus(2, "abnormal (polling)");  // the provider's word stays
    EXPECT_TRUE(untouched());
    // The link's value was taken all the same: its recovery is a change.
    RecordPollingStatus(1, "ready");
    EXPECT_TRUE(untouched());  // still held back by the abnormal provider
    RecordSmisLayerStatus(1, "ready");
    EXPECT_TRUE(written("ready"));
}

// The limits read their settings when a cautioner is made.
class LimitsTest : public ::testing::Test {
protected:
    void Configure(const std::string& smisSection) {
        m_root.Write(ConfigManager::CONFIG_FILE, "[smis]\n" + smisSection);
        ASSERT_TRUE(Singleton<ConfigManager>::Instance()->Initialize());
    }
    // A sparse database file of the given size under the root.
    void MakeDb(off_t bytes) {
        const std::string path = m_root.Under("/opt/pegasus/repository/root#orv.db");
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(0, ftruncate(fd, bytes));
        close(fd);
    }
    TempRoot m_root;
};

TEST_F(LimitsTest, DatabaseSizeLimit) {
    Configure("MaxDbSize = 2\n");
    MemoryCautioner cautioner;
    EXPECT_EQ(2, MemoryCautioner::m_maxDbSize);
    EXPECT_EQ("/opt/pegasus/repository/root#orv.db", MemoryCautioner::m_dbPathName);

    ResultInfo missing;
    EXPECT_FALSE(cautioner.PassDataBaseThresholdCheck(missing));
    EXPECT_EQ("00033", missing.code);
    EXPECT_EQ("Open db failed.", missing.message);

    MakeDb((2 << 20) - 1);
    ResultInfo below;
    EXPECT_TRUE(cautioner.PassDataBaseThresholdCheck(below));
    EXPECT_TRUE(below.success);

    MakeDb(2 << 20);  // exactly the limit fails
    ResultInfo at;
    EXPECT_FALSE(cautioner.PassDataBaseThresholdCheck(at));
    EXPECT_EQ("00031", at.code);
    EXPECT_EQ("Achieve the max database size", at.message);
}

TEST_F(LimitsTest, ConfiguredDatabaseLocationAndDefaults) {
    Configure("DBLocation = /opt/pegasus/repository/other.db\n");
    MemoryCautioner cautioner;
    EXPECT_EQ(42, MemoryCautioner::m_maxDbSize);
    EXPECT_EQ(5120, MemoryCautioner::mMallocSize);
    EXPECT_EQ("/opt/pegasus/repository/other.db", MemoryCautioner::m_dbPathName);
    m_root.Write("/opt/pegasus/repository/other.db", "x");
    ResultInfo info;
    EXPECT_TRUE(cautioner.PassDataBaseThresholdCheck(info));
}

TEST_F(LimitsTest, AllocationProbe) {
    Configure("checkMallocSize = 0\n");
    MemoryCautioner off;
    EXPECT_EQ(0, MemoryCautioner::mMallocSize);
    ResultInfo info;
    EXPECT_TRUE(off.PassMemoryThresholdCheck(info));

    Configure("checkMallocSize = -4\n");
    MemoryCautioner negative;
    EXPECT_EQ(0, negative.GetCheckMallocSize());

    Configure("checkMallocSize = 64\n");
    MemoryCautioner on;
    EXPECT_EQ(64, MemoryCautioner::mMallocSize);
    EXPECT_TRUE(on.PassMemoryThresholdCheck(info));
    EXPECT_TRUE(info.success);
}

TEST_F(LimitsTest, ResidentSizeIsMeasured) {
    Configure("x = 1\n");
    const long kb = MemoryCautioner::GetResidentSizeKB();
    // statm gives resident pages in its second field.
    long pages = 0, resident = -1;
    FILE* statm = fopen("/proc/self/statm", "r");
    ASSERT_NE(nullptr, statm);
    ASSERT_EQ(2, fscanf(statm, "%ld %ld", &pages, &resident));
    fclose(statm);
    const long statmKb = resident * (sysconf(_SC_PAGESIZE) / 1024);
    EXPECT_GT(kb, 0);
    EXPECT_NEAR(static_cast<double>(statmKb), static_cast<double>(kb), 4096.0);
    ResultInfo info;
    EXPECT_TRUE(MemoryCautioner().PassMemoryThresholdCheckEx(info));  // a test process is small
}

TEST_F(LimitsTest, FlashArea) {
    const std::string link = m_root.Under("/opt/pegasus/repository");
    std::system(("rm -rf '" + link + "'").c_str());
    EXPECT_EQ(3, MemoryCautioner::AreaType());  // no link at all
    ResultInfo info;
    EXPECT_TRUE(MemoryCautioner().PassFlashAreaCheck(info));

    const struct {
        const char* target;
        int area;
    } cases[] = {{"/var_flash/pegasus/repository", 0}, {"/mnt/share_log/pegasus/repository", 1},
        {"/mnt/perf_log/pegasus/repository", 2}, {"/var_flash/pegasus/repository/", 3},
        {"/somewhere/else", 3}};
    for (const auto& c : cases) {
        unlink(link.c_str());
        ASSERT_EQ(0, symlink(c.target, link.c_str()));
        EXPECT_EQ(c.area, MemoryCautioner::AreaType()) << c.target;
    }
    unlink(link.c_str());
    ASSERT_EQ(0, symlink("/var_flash/pegasus/repository", link.c_str()));
    ResultInfo flash;
    EXPECT_FALSE(MemoryCautioner().PassFlashAreaCheck(flash));
    EXPECT_EQ("00032", flash.code);
    EXPECT_EQ("Run at flash area.", flash.message);
}

// The stop script against stand-in servers: one that ends on SIGTERM, one
// that ignores it and must be killed after the (shortened) wait.
class StopScriptTest : public ::testing::Test {
protected:
    pid_t StartServer(bool ignoreTerm) {
        const pid_t pid = fork();
        if (pid == 0) {
            if (ignoreTerm) signal(SIGTERM, SIG_IGN);
            for (;;) pause();
        }
        return pid;
    }
    void WritePid(const std::string& text) { m_root.Write("/var/run/cimserver.pid", text); }
    int RunScript() {
        const std::string command = "DISABLE_CIMSERVER_WAIT=1 sh " TEST_SOURCE_DIR
                                    "/provider/scripts/disable_cimserver.sh >/dev/null 2>&1";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // How the stand-in ended: the signal that ended it, or -1.
    int EndSignal(pid_t pid) {
        int status = 0;
        if (waitpid(pid, &status, 0) != pid) return -1;
        return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
    }
    TempRoot m_root;
};

TEST_F(StopScriptTest, PoliteStopFirst) {
    const pid_t pid = StartServer(false);
    ASSERT_GT(pid, 0);
    WritePid(std::to_string(pid) + "\n");
    // Reaped while the script waits, or it would see a zombie that lives on.
    std::future<int> ended = std::async(std::launch::async, [this, pid] { return EndSignal(pid); });
    const int rc = RunScript();
    if (rc != 0) kill(pid, SIGKILL);  // a stand-in left running must not outlive the test
    EXPECT_EQ(0, rc);
    EXPECT_EQ(SIGTERM, ended.get());
}

TEST_F(StopScriptTest, KilledWhenItWillNotEnd) {
    const pid_t pid = StartServer(true);
    ASSERT_GT(pid, 0);
    WritePid(std::to_string(pid));
    std::future<int> ended = std::async(std::launch::async, [this, pid] { return EndSignal(pid); });
    const int rc = RunScript();
    if (rc != 0) kill(pid, SIGKILL);  // a stand-in left running must not outlive the test
    EXPECT_EQ(0, rc);
    EXPECT_EQ(SIGKILL, ended.get());
}

TEST_F(StopScriptTest, BadPidFiles) {
    EXPECT_EQ(0, RunScript());  // no pid file: nothing to stop
    WritePid("12; echo injected\n");
    EXPECT_EQ(1, RunScript());
    WritePid("\n");
    EXPECT_EQ(1, RunScript());
    WritePid("1\n");  // never the init process
    EXPECT_EQ(1, RunScript());
}

}  // namespace
