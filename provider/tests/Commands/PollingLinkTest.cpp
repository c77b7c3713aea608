// The link to the polling daemon: the wire layout, the comparison of reports,
// the checks that keep a broken or hostile telegram from doing harm, and the
// monitor loop against a daemon played by the test and the simulator's daemon.

#include <arpa/inet.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/socket.h>

#include <gtest/gtest.h>

#include "CommandsTestSupport.h"
#include "ExecVexview.h"
#include "StatusMonitor.h"

using namespace orvsmis;
using cmdtest::TempRoot;
typedef std::vector<uint8_t> Bytes;

namespace {

DiskStatus TakeDiskStatus() {
    pthread_mutex_lock(&status_mutex);
    DiskStatus copy = ds_;
    ds_ = DiskStatus{0, 0, 0};
    pthread_mutex_unlock(&status_mutex);
    return copy;
}

bool Woken() {
    pthread_mutex_lock(&status_mutex);
    bool woken = ds_.wakeup != 0;
    pthread_mutex_unlock(&status_mutex);
    return woken;
}

// A telegram from the daemon around a report record (given in wire order).
Bytes DaemonTelegram(const Bytes& record, uint8_t result = 0, uint32_t code = TELEGRAM_ALARM_REPORT,
                     char sender = TELEGRAM_ID_DAEMON) {
    Bytes out(TELEGRAM_HEAD_SIZE + ALARM_REPORT_OFFSET + ALARM_REPORT_SIZE, 0);
    socket_common head;
    fillCommonHead(&head, static_cast<uint32_t>(out.size()), code);
    head.sender = sender;
    memcpy(out.data(), &head, sizeof(head));
    out[TELEGRAM_HEAD_SIZE + ALARM_RESULT_OFFSET] = result;
    memcpy(out.data() + TELEGRAM_HEAD_SIZE + ALARM_REPORT_OFFSET, record.data(), ALARM_REPORT_SIZE);
    return out;
}

Bytes Record(int offset = -1, uint8_t value = 0) {
    Bytes r(ALARM_REPORT_SIZE, 0);
    if (offset >= 0) r[offset] = value;
    return r;
}

// The daemon played by the test, on 127.0.0.1 with its files under the root.
class FakeDaemon {
public:
    explicit FakeDaemon(const TempRoot& root) : m_listen(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in addr = {};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof(addr);
        bind(m_listen, reinterpret_cast<sockaddr*>(&addr), len);
        listen(m_listen, 4);
        getsockname(m_listen, reinterpret_cast<sockaddr*>(&addr), &len);
        cmdtest::WriteFile(root + "/opt/HubMonitor/HubMonitor.port", std::string(reinterpret_cast<char*>(&addr.sin_port), 2));
        cmdtest::WriteFile(root + "/var/run/HubMonitor.pid", "1\n");
    }
    ~FakeDaemon() {
        Drop();
        close(m_listen);
    }
    // Takes the next client and reads its login.
    bool AcceptLogin() {
        Drop();
        pollfd p = {m_listen, POLLIN, 0};
        if (poll(&p, 1, 5000) != 1) return false;
        m_client = accept(m_listen, nullptr, nullptr);
        return ReadControl(TELEGRAM_LOGIN, 1);
    }
    bool ReadControl(uint32_t code, uint8_t request) {
        uint8_t t[TELEGRAM_CONTROL_SIZE];
        for (size_t got = 0; got < sizeof(t);) {
            pollfd p = {m_client, POLLIN, 0};
            ssize_t n = poll(&p, 1, 5000) == 1 ? read(m_client, t + got, sizeof(t) - got) : -1;
            if (n <= 0) return false;
            got += static_cast<size_t>(n);
        }
        socket_common head;
        memcpy(&head, t, sizeof(head));
        return head.code == code && head.length == TELEGRAM_CONTROL_SIZE && t[82] == request;
    }
    void Send(const Bytes& data) { ASSERT_EQ(ssize_t(data.size()), send(m_client, data.data(), data.size(), MSG_NOSIGNAL)); }
    void Drop() {
        if (m_client >= 0) close(m_client);
        m_client = -1;
    }

private:
    int m_listen;
    int m_client = -1;
};

// The monitor loop on its own thread, ended as an operator ends it, by SIGUSR2.
class MonitorThread {
public:
    MonitorThread() { pthread_create(&m_thread, nullptr, sm_thread, nullptr); }
    ~MonitorThread() { Stop(); }
    void Stop() {
        if (!m_running) return;
        pthread_kill(m_thread, SIGUSR2);
        pthread_join(m_thread, nullptr);
        m_running = false;
    }

private:
    pthread_t m_thread;
    bool m_running = true;
};

}  // namespace

TEST(TelegramCodec, LoginAndLogoutFollowTheWireLayout) {
    for (bool login : {true, false}) {
        uint8_t t[TELEGRAM_CONTROL_SIZE];
        memset(t, 0xAA, sizeof(t));
        buildControlTelegram(t, login);
        uint32_t length, code, pid;
        uint16_t c12, c14;
        memcpy(&length, t + 4, 4);
        memcpy(&c12, t + 12, 2);
        memcpy(&c14, t + 14, 2);
        memcpy(&code, t + 16, 4);
        memcpy(&pid, t + 24, 4);
        EXPECT_EQ(0, memcmp(t, "SGM\0", 4));
        EXPECT_EQ(96u, length);
        EXPECT_EQ(1, c12);
        EXPECT_EQ(1, c14);
        EXPECT_EQ(login ? 0x23000002u : 0x23000102u, code);
        EXPECT_EQ(Bytes({1, '$', '#', 1}), Bytes(t + 20, t + 24));
        EXPECT_EQ(static_cast<uint32_t>(getpid()), pid);
        EXPECT_EQ(login ? 1 : 0, t[82]);
        // Everything reserved, the SMIS head and the rest of the event control are zero.
        Bytes zeros = Bytes(t + 8, t + 12);
        zeros.insert(zeros.end(), t + 32, t + 82);
        zeros.insert(zeros.end(), t + 83, t + 96);
        EXPECT_EQ(Bytes(zeros.size(), 0), zeros);
    }
}

TEST(TelegramCodec, ReportsAreComparedInHostOrderByEachSidesFields) {
    Bytes wire = Record();
    uint16_t s = htons(0x1234);
    uint32_t l = htonl(0x01020304);
    memcpy(&wire[254], &s, 2);
    memcpy(&wire[44], &l, 4);
    Bytes telegram = DaemonTelegram(wire);
    Bytes body(telegram.begin() + TELEGRAM_HEAD_SIZE, telegram.end());
    AlarmReport base;
    ASSERT_EQ(0, extractAlarmReport(body.data(), static_cast<int>(body.size()), &base));
    EXPECT_EQ(0x1234, base.data[254] | base.data[255] << 8);
    EXPECT_EQ(0x01020304u, uint32_t(base.data[44] | base.data[45] << 8 | base.data[46] << 16 | base.data[47] << 24));
    EXPECT_EQ(-1, extractAlarmReport(body.data(), static_cast<int>(body.size()) - 1, &base));

    // 78 and 168 tell the logical side, 20 and 66 the physical, 216 and 123
    // both; 250 neither.
    const int cases[][3] = {{78, 1, 2}, {168, 1, 2}, {20, 2, 1}, {66, 2, 1}, {216, 1, 1}, {123, 1, 1}, {250, 2, 2}};
    for (const auto& c : cases) {
        AlarmReport now = base;
        now.data[c[0]] ^= 0x5A;
        EXPECT_EQ(c[1], logicalDiskArrayStatus(now, base)) << c[0];
        EXPECT_EQ(c[2], physicalDiskArrayStatus(now, base)) << c[0];
    }
}

TEST(TelegramReceive, BrokenTelegramsAreRefusedBeforeAnyBodyIsRead) {
    socket_common head;
    fillCommonHead(&head, 0, TELEGRAM_ALARM_REPORT);
    Bytes headBytes(reinterpret_cast<uint8_t*>(&head), reinterpret_cast<uint8_t*>(&head) + sizeof(head));
    auto withLength = [&](uint32_t length) {
        Bytes t = headBytes;
        memcpy(&t[4], &length, 4);
        return t;
    };
    Bytes shortBody = DaemonTelegram(Record());
    shortBody.resize(shortBody.size() - 100);
    struct Case {
        const char* what;
        Bytes data;
        int result;
    };
    const Case cases[] = {{"nothing, then closed", Bytes(), -2},
                          {"part of a head", Bytes(headBytes.begin(), headBytes.begin() + 20), -2},
                          {"absurd length", withLength(0xFFFFFFF0u), -1},
                          {"length below the head's", withLength(10), -1},
                          {"body shorter than told", shortBody, -1},
                          {"not a telegram", Bytes(64, 'x'), -1},
                          {"unknown code, whole", DaemonTelegram(Record(), 0, 0x23000999), 0}};
    for (const Case& c : cases) {
        int fds[2];
        ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, fds));
        if (!c.data.empty()) ASSERT_EQ(ssize_t(c.data.size()), write(fds[1], c.data.data(), c.data.size()));
        close(fds[1]);
        uint8_t* body = nullptr;
        int size = -1;
        EXPECT_EQ(c.result, recvAlarmReport(fds[0], &head, &body, &size)) << c.what;
        EXPECT_EQ(c.result == 0, body != nullptr) << c.what;
        free(body);
        close(fds[0]);
    }
}

TEST(PollingLogin, PortFileMustHoldTwoBytes) {
    TempRoot root;
    cmdtest::WriteFile(root + "/var/run/HubMonitor.pid", "1\n");
    unsigned short port = 0;
    EXPECT_EQ(-1, getHubPollingPort(&port));
    cmdtest::WriteFile(root + "/opt/HubMonitor/HubMonitor.port", "x");
    int fd = -1;
    EXPECT_EQ(-1, loginHubcPolling(&fd));
    cmdtest::WriteFile(root + "/opt/HubMonitor/HubMonitor.port", std::string("\x1f\x90", 2));
    ASSERT_EQ(0, getHubPollingPort(&port));
    EXPECT_EQ(8080, ntohs(port));
}

TEST(PollingMonitor, ReportsWakeTheViewAndBrokenLinksAreRebuilt) {
    TempRoot root;
    FakeDaemon daemon(root);
    TakeDiskStatus();
    MonitorThread monitor;
    ASSERT_TRUE(daemon.AcceptLogin());
    daemon.Send(DaemonTelegram(Record()));
    ASSERT_TRUE(cmdtest::WaitFor(Woken, 3000));
    TakeDiskStatus();

    // An unknown code, another sender, an unchanged report: read, no load.
    daemon.Send(DaemonTelegram(Record(78, 1), 0, 0x23000999));
    daemon.Send(DaemonTelegram(Record(78, 1), 0, TELEGRAM_ALARM_REPORT, '$'));
    daemon.Send(DaemonTelegram(Record()));
    EXPECT_FALSE(cmdtest::WaitFor(Woken, 800));
    daemon.Send(DaemonTelegram(Record(78, 1)));
    ASSERT_TRUE(cmdtest::WaitFor(Woken, 3000));
    // A change of one side asks for both.
    TakeDiskStatus();
    daemon.Send(DaemonTelegram(Record(20, 9)));
    ASSERT_TRUE(cmdtest::WaitFor(Woken, 3000));
    DiskStatus st = TakeDiskStatus();
    EXPECT_EQ(1, st.logical);
    EXPECT_EQ(1, st.physical);

    // The daemon goes away: a new login, and its first report loads though unchanged.
    TakeDiskStatus();
    daemon.Drop();
    ASSERT_TRUE(daemon.AcceptLogin());
    daemon.Send(DaemonTelegram(Record(20, 9)));
    ASSERT_TRUE(cmdtest::WaitFor(Woken, 3000));

    // An absurd length, and a failed report: each drops the link.
    socket_common hostile;
    fillCommonHead(&hostile, 0x7FFFFFFFu, TELEGRAM_ALARM_REPORT);
    daemon.Send(Bytes(reinterpret_cast<uint8_t*>(&hostile), reinterpret_cast<uint8_t*>(&hostile) + sizeof(hostile)));
    ASSERT_TRUE(daemon.AcceptLogin());
    TakeDiskStatus();
    daemon.Send(DaemonTelegram(Record(), 1));
    ASSERT_TRUE(daemon.AcceptLogin());
    EXPECT_FALSE(Woken());

    monitor.Stop();
    EXPECT_TRUE(daemon.ReadControl(TELEGRAM_LOGOUT, 0));
}

TEST(PollingMonitor, SimulatorDaemonReportsChangesOfTheArray) {
    TempRoot root;
    const std::string sim = cmdtest::SimulatorBin() + "/arraysim";
    const std::string log = root + "/sim.log";
    ASSERT_EQ(0, cmdtest::Run({sim, "init", "--template", "small"}, log)) << cmdtest::ReadFile(log);
    pid_t daemonPid = cmdtest::Spawn({sim, "hubpolling", "--foreground", "--interval-ms", "50", "--heartbeat-s", "1"}, log);
    ASSERT_GT(daemonPid, 0);
    ASSERT_TRUE(cmdtest::WaitFor([&] { return access((root + "/var/run/HubMonitor.pid").c_str(), F_OK) == 0; }, 10000));
    TakeDiskStatus();
    {
        MonitorThread monitor;
        EXPECT_TRUE(cmdtest::WaitFor(Woken, 10000)) << cmdtest::ReadFile(log);
        // Heartbeats of an unchanged array make no load; a change at the console does.
        TakeDiskStatus();
        EXPECT_FALSE(cmdtest::WaitFor(Woken, 2500));
        ASSERT_EQ(0, cmdtest::Run({sim, "set", "controller", "00", "--state", "failure"}, log));
        EXPECT_TRUE(cmdtest::WaitFor(Woken, 5000));
        // The daemon drops the connection: a new login, and a load.
        TakeDiskStatus();
        ASSERT_EQ(0, cmdtest::Run({sim, "fault", "hubpolling", "--mode", "drop"}, log));
        EXPECT_TRUE(cmdtest::WaitFor(Woken, 15000)) << cmdtest::ReadFile(log);
    }
    kill(daemonPid, SIGTERM);
    waitpid(daemonPid, nullptr, 0);
}
