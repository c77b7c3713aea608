#include "HubPollingDaemon.h"
#include "Telegram.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>

namespace arraysim {
namespace {

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

bool exists(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0;
}

// A client of the daemon, as the storage module is one: blocking socket,
// whole telegrams, a time limit on every wait.
class TestClient {
public:
    explicit TestClient(int port) {
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        if (::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot connect");
    }
    ~TestClient() { ::close(m_fd); }

    void Send(const std::vector<std::uint8_t>& data) {
        ASSERT_EQ(static_cast<ssize_t>(data.size()), ::send(m_fd, data.data(), data.size(), MSG_NOSIGNAL));
    }
    void Login() { Send(Telegram::EncodeControl(true, 555, 1)); }

    // Receives exactly size bytes within the time; fewer when the peer closed
    // or the time ran out.
    std::vector<std::uint8_t> Receive(std::size_t size, double seconds) {
        timeval limit{static_cast<time_t>(seconds), static_cast<suseconds_t>((seconds - static_cast<long>(seconds)) * 1e6)};
        ::setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        std::vector<std::uint8_t> data(size);
        std::size_t got = 0;
        m_closed = false;
        while (got < size) {
            const ssize_t n = ::recv(m_fd, data.data() + got, size - got, 0);
            if (n <= 0) {
                m_closed = n == 0 || errno == ECONNRESET;
                break;
            }
            got += static_cast<std::size_t>(n);
        }
        data.resize(got);
        return data;
    }

    // The next report; fails the test when none comes in time.
    AlarmReportContent Report(double seconds = 3) {
        const auto data = Receive(Telegram::kReportTelegramSize, seconds);
        if (data.size() != Telegram::kReportTelegramSize) {
            ADD_FAILURE() << "no whole report, " << data.size() << " bytes";
            return AlarmReportContent{0xdead, 0xdead, 0xff};
        }
        const TelegramHead head = Telegram::DecodeHead(data.data(), data.size());
        EXPECT_EQ(Telegram::kCodeAlarmReport, head.code);
        EXPECT_EQ('#', head.sender);
        EXPECT_EQ('$', head.receiver);
        EXPECT_EQ(static_cast<std::uint32_t>(getpid()), head.pid);
        return Telegram::DecodeAlarmReport(data.data(), data.size());
    }

    bool ClosedByDaemon(double seconds = 3) {
        const auto data = Receive(1, seconds);
        return data.empty() && m_closed;
    }

    bool Silent(double seconds) { return Receive(1, seconds).empty() && !m_closed; }

private:
    int m_fd = -1;
    bool m_closed = false;
};

class HubPollingDaemonTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/hubpolling-test-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(pattern));
        m_root = pattern;
        ::setenv("SMIS_ROOT", m_root.c_str(), 1);
    }

    void TearDown() override {
        StopDaemon();
        ::unsetenv("SMIS_ROOT");
        std::system(("rm -rf '" + m_root + "'").c_str());
    }

    void StartDaemon(int heartbeatS = 60) {
        HubPollingDaemon::Options options;
        options.intervalMs = 20;
        options.heartbeatS = heartbeatS;
        m_daemon = std::make_unique<HubPollingDaemon>(
            options,
            [this]() {
                if (m_unreadable) throw std::runtime_error("state.json is missing");
                return ArrayGenerations{m_logical.load(), m_physical.load()};
            },
            [this]() -> std::optional<DaemonFault> {
                std::lock_guard<std::mutex> lock(m_faultMutex);
                if (m_faults.empty()) return std::nullopt;
                DaemonFault fault = m_faults.front();
                m_faults.pop_front();
                return fault;
            });
        m_daemon->Start();
        m_thread = std::thread([this]() { m_daemon->Run(); });
    }

    void StopDaemon() {
        if (!m_daemon) return;
        m_daemon->Stop();
        m_thread.join();
        m_daemon.reset();
    }

    void AddFault(const std::string& mode, int rc = 0, double seconds = 0) {
        std::lock_guard<std::mutex> lock(m_faultMutex);
        m_faults.push_back(DaemonFault{mode, rc, seconds});
    }

    std::string m_root;
    std::unique_ptr<HubPollingDaemon> m_daemon;
    std::thread m_thread;
    std::atomic<std::uint64_t> m_logical{3};
    std::atomic<std::uint64_t> m_physical{7};
    std::atomic<bool> m_unreadable{false};
    std::mutex m_faultMutex;
    std::deque<DaemonFault> m_faults;
};

TEST_F(HubPollingDaemonTest, PortAndPidFilesLiveAsLongAsTheDaemon) {
    StartDaemon();
    const std::string portFile = m_root + "/opt/HubMonitor/HubMonitor.port";
    const std::string pidFile = m_root + "/var/run/HubMonitor.pid";
    EXPECT_EQ(portFile, HubPollingDaemon::PortFilePath());
    EXPECT_EQ(pidFile, HubPollingDaemon::PidFilePath());

    const std::string port = readFile(portFile);
    ASSERT_EQ(2u, port.size());
    std::uint16_t network;
    std::memcpy(&network, port.data(), 2);
    EXPECT_EQ(m_daemon->Port(), ntohs(network));
    EXPECT_EQ(std::to_string(getpid()) + "\n", readFile(pidFile));

    // A second daemon sees the first one's pid file and keeps off.
    HubPollingDaemon second({}, [] { return ArrayGenerations{}; }, [] { return std::optional<DaemonFault>(); });
    try {
        second.Start();
        ADD_FAILURE() << "a second daemon started";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string::npos, std::string(e.what()).find("runs already")) << e.what();
    }
    EXPECT_TRUE(exists(pidFile));

    StopDaemon();
    EXPECT_FALSE(exists(pidFile));
    EXPECT_FALSE(exists(portFile));
}

TEST_F(HubPollingDaemonTest, StalePidFileIsTakenOver) {
    const std::string pidFile = m_root + "/var/run/HubMonitor.pid";
    ::mkdir((m_root + "/var").c_str(), 0755);
    ::mkdir((m_root + "/var/run").c_str(), 0755);
    std::ofstream(pidFile) << "2147483646\n";  // no such process
    StartDaemon();
    EXPECT_EQ(std::to_string(getpid()) + "\n", readFile(pidFile));
}

TEST_F(HubPollingDaemonTest, ReportsAfterLoginAndOnEachSidesChange) {
    StartDaemon();
    TestClient client(m_daemon->Port());
    // The login arrives in two pieces, as TCP may deliver it.
    const auto login = Telegram::EncodeControl(true, 555, 1);
    client.Send(std::vector<std::uint8_t>(login.begin(), login.begin() + 30));
    EXPECT_TRUE(client.Silent(0.1));
    client.Send(std::vector<std::uint8_t>(login.begin() + 30, login.end()));

    AlarmReportContent report = client.Report();
    EXPECT_EQ(0, report.result);
    EXPECT_EQ(3u, report.logicalGeneration);
    EXPECT_EQ(7u, report.physicalGeneration);

    // Nothing changed: no report before the heartbeat.
    EXPECT_TRUE(client.Silent(0.3));

    m_logical = 4;
    report = client.Report();
    EXPECT_EQ(4u, report.logicalGeneration);
    EXPECT_EQ(7u, report.physicalGeneration);

    m_physical = 8;
    report = client.Report();
    EXPECT_EQ(4u, report.logicalGeneration);
    EXPECT_EQ(8u, report.physicalGeneration);
    EXPECT_TRUE(client.Silent(0.2));
}

TEST_F(HubPollingDaemonTest, HeartbeatRepeatsTheUnchangedReport) {
    StartDaemon(1);
    TestClient client(m_daemon->Port());
    client.Login();
    const auto first = client.Report();
    const auto start = std::chrono::steady_clock::now();
    const auto again = client.Report(3);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(800));
    EXPECT_EQ(first.logicalGeneration, again.logicalGeneration);
    EXPECT_EQ(first.physicalGeneration, again.physicalGeneration);
    EXPECT_EQ(0, again.result);
}

TEST_F(HubPollingDaemonTest, NoReportsBeforeLoginAndNoneAfterLogout) {
    StartDaemon(1);
    TestClient client(m_daemon->Port());
    m_logical = 10;
    EXPECT_TRUE(client.Silent(1.3));  // connected, not logged in: not even a heartbeat
    client.Login();
    EXPECT_EQ(10u, client.Report().logicalGeneration);
    client.Send(Telegram::EncodeControl(false, 555, 2));
    EXPECT_TRUE(client.ClosedByDaemon());
}

TEST_F(HubPollingDaemonTest, SeveralClientsEachGetTheirReports) {
    StartDaemon();
    std::vector<std::unique_ptr<TestClient>> clients;
    for (int i = 0; i < 4; ++i) {
        clients.push_back(std::make_unique<TestClient>(m_daemon->Port()));
        clients.back()->Login();
        EXPECT_EQ(3u, clients.back()->Report().logicalGeneration);
    }
    // One leaves; the others go on.
    clients[1]->Send(Telegram::EncodeControl(false, 555, 2));
    EXPECT_TRUE(clients[1]->ClosedByDaemon());
    m_physical = 20;
    for (int i : {0, 2, 3}) EXPECT_EQ(20u, clients[i]->Report().physicalGeneration) << "client " << i;
}

TEST_F(HubPollingDaemonTest, FaultsShowOnceEach) {
    StartDaemon();
    {
        AddFault("drop");
        TestClient client(m_daemon->Port());
        client.Login();
        EXPECT_TRUE(client.ClosedByDaemon());
    }
    TestClient client(m_daemon->Port());
    AddFault("result", 7);
    client.Login();
    EXPECT_EQ(7, client.Report().result);

    // A return code whose low byte is zero still gives a non-zero result.
    AddFault("result", 256);
    m_logical = 5;
    EXPECT_EQ(1, client.Report().result);

    // An unknown code comes first, then the report itself.
    AddFault("unknown-code");
    m_logical = 6;
    const auto odd = client.Receive(Telegram::kReportTelegramSize, 3);
    ASSERT_EQ(Telegram::kReportTelegramSize, odd.size());
    const TelegramHead head = Telegram::DecodeHead(odd.data(), odd.size());
    EXPECT_NE(Telegram::kCodeAlarmReport, head.code);
    EXPECT_NE(Telegram::kCodeLogin, head.code);
    EXPECT_NE(Telegram::kCodeLogout, head.code);
    const auto report = client.Report();
    EXPECT_EQ(6u, report.logicalGeneration);
    EXPECT_EQ(0, report.result);

    // A stall holds the report back for its time, then sends the latest one.
    AddFault("stall", 0, 1.0);
    m_physical = 9;
    EXPECT_TRUE(client.Silent(0.6));
    m_physical = 10;
    const auto late = client.Report(2);
    EXPECT_EQ(10u, late.physicalGeneration);
    EXPECT_EQ(0, late.result);
}

TEST_F(HubPollingDaemonTest, MalformedTelegramsCloseOnlyTheirConnection) {
    StartDaemon();
    TestClient bystander(m_daemon->Port());
    bystander.Login();
    bystander.Report();

    std::vector<std::vector<std::uint8_t>> bad;
    auto login = Telegram::EncodeControl(true, 1, 1);
    auto broken = login;
    broken[0] = 'X';
    bad.push_back(broken);  // magic
    broken = login;
    const std::uint32_t huge = 0x7fffffff;
    std::memcpy(&broken[4], &huge, 4);
    bad.push_back(broken);  // length beyond any telegram
    broken = login;
    const std::uint32_t unknown = 0x23000999;
    std::memcpy(&broken[16], &unknown, 4);
    bad.push_back(broken);  // unknown code
    broken = login;
    broken[21] = '#';
    bad.push_back(broken);  // pretends to be the daemon
    broken = login;
    broken[82] = 7;
    bad.push_back(broken);  // request byte
    bad.push_back(std::vector<std::uint8_t>(200, 0xff));  // noise

    for (std::size_t i = 0; i < bad.size(); ++i) {
        TestClient client(m_daemon->Port());
        client.Send(bad[i]);
        EXPECT_TRUE(client.ClosedByDaemon()) << "telegram " << i;
    }
    // A good login after a bad telegram on the same connection comes too late.
    {
        TestClient client(m_daemon->Port());
        auto both = bad[0];
        both.insert(both.end(), login.begin(), login.end());
        client.Send(both);
        EXPECT_TRUE(client.ClosedByDaemon());
    }
    m_logical = 30;
    EXPECT_EQ(30u, bystander.Report().logicalGeneration);
}

TEST_F(HubPollingDaemonTest, UnreadableStateGivesAFailedReport) {
    m_unreadable = true;
    StartDaemon();
    TestClient client(m_daemon->Port());
    client.Login();
    EXPECT_NE(0, client.Report().result);
}

}  // namespace
}  // namespace arraysim
