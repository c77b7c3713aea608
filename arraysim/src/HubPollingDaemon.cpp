#include "HubPollingDaemon.h"

#include "Telegram.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace arraysim {

namespace {

// Most clients served at once, and most bytes held back for a client that
// does not read; beyond either the client is turned away.
constexpr std::size_t kMaxClients = 64;
constexpr std::size_t kMaxPendingBytes = 1 << 20;
// The code of the telegram shown to clients by the "unknown-code" fault.
constexpr std::uint32_t kUnknownCode = 0x23000399;

void trace(const std::string& line) {
    char stamp[32];
    std::time_t now = std::time(nullptr);
    struct tm parts;
    gmtime_r(&now, &parts);
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%SZ", &parts);
    std::cerr << stamp << " hubpolling[" << getpid() << "]: " << line << std::endl;
}

std::string errnoText(const std::string& what) { return what + ": " + std::strerror(errno); }

std::string underRoot(const std::string& path) {
    const char* root = std::getenv("SMIS_ROOT");
    if (root == nullptr || *root == '\0') return path;
    std::string prefix(root);
    while (prefix.size() > 1 && prefix.back() == '/') prefix.pop_back();
    return prefix + path;
}

void makeParents(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string dir = path.substr(0, slash);
        if (::mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST)
            throw std::runtime_error(errnoText("cannot create the folder " + dir));
    }
}

// Writes the file whole or not at all: a reader never sees half of it.
void writeFileAtomically(const std::string& path, const std::string& content) {
    makeParents(path);
    const std::string temp = path + ".tmp." + std::to_string(getpid());
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) throw std::runtime_error(errnoText("cannot write " + temp));
    const ssize_t written = ::write(fd, content.data(), content.size());
    const bool ok = written == static_cast<ssize_t>(content.size()) && ::fsync(fd) == 0;
    const std::string failure = ok ? "" : errnoText("cannot write " + temp);
    ::close(fd);
    if (!ok || ::rename(temp.c_str(), path.c_str()) != 0) {
        const std::string why = ok ? errnoText("cannot rename " + temp + " to " + path) : failure;
        ::unlink(temp.c_str());
        throw std::runtime_error(why);
    }
}

// The pid a pid file names, or 0 when it is missing or holds no number.
pid_t readPid(const std::string& path) {
    std::ifstream in(path);
    long long pid = 0;
    if (!(in >> pid) || pid <= 0 || pid > 0x7fffffff) return 0;
    return static_cast<pid_t>(pid);
}

bool processAlive(pid_t pid) { return pid > 0 && (::kill(pid, 0) == 0 || errno == EPERM); }

void setNonBlocking(int fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0 || ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) != 0)
        throw std::runtime_error(errnoText("cannot make a socket non-blocking"));
}

std::uint32_t nowSeconds() { return static_cast<std::uint32_t>(std::time(nullptr)); }

// Daemons of this process whose files are written: a pid file naming this
// process is stale only when there are none.
std::atomic<int> g_daemonsWithFiles{0};

}  // namespace

struct HubPollingDaemon::Client {
    int fd = -1;
    std::string name;                  // for the trace: "client 3 (pid 1234)"
    std::vector<std::uint8_t> input;   // received, not yet a whole telegram
    std::vector<std::uint8_t> output;  // to be sent
    bool loggedIn = false;
    bool reportDue = false;
    bool closeWhenSent = false;
    bool closed = false;
    Clock::time_point lastReport;
    Clock::time_point stalledUntil;
    ArrayGenerations reported;
};

HubPollingDaemon::HubPollingDaemon(Options options, Probe probe, FaultSource faults)
    : m_options(std::move(options)), m_probe(std::move(probe)), m_faults(std::move(faults)) {
    if (m_options.portFile.empty()) m_options.portFile = PortFilePath();
    if (m_options.pidFile.empty()) m_options.pidFile = PidFilePath();
    if (m_options.port < 0 || m_options.port > 65535)
        throw std::invalid_argument("port " + std::to_string(m_options.port) + " is not 0 to 65535");
    if (m_options.intervalMs < 1) throw std::invalid_argument("the interval must be at least 1 ms");
    if (m_options.heartbeatS < 1) throw std::invalid_argument("the heartbeat must be at least 1 s");
    // Made here, so that a Stop that comes before Run is not lost.
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error(errnoText("cannot make a pipe"));
    m_wakeRead = pipeFds[0];
    m_wakeWrite = pipeFds[1];
}

HubPollingDaemon::~HubPollingDaemon() {
    for (auto& client : m_clients)
        if (client->fd >= 0) ::close(client->fd);
    if (m_listenFd >= 0) ::close(m_listenFd);
    if (m_wakeRead >= 0) ::close(m_wakeRead);
    if (m_wakeWrite >= 0) ::close(m_wakeWrite);
    removeFiles();
}

std::string HubPollingDaemon::PortFilePath() { return underRoot("/opt/HubMonitor/HubMonitor.port"); }

std::string HubPollingDaemon::PidFilePath() { return underRoot("/var/run/HubMonitor.pid"); }

void HubPollingDaemon::Start() {
    if (m_listenFd >= 0) throw std::logic_error("the polling daemon is started already");
    const pid_t other = readPid(m_options.pidFile);
    const bool alive = other == getpid() ? g_daemonsWithFiles > 0 : processAlive(other);
    if (other != 0 && alive)
        throw std::runtime_error("a polling daemon runs already (pid " + std::to_string(other) + " in " +
                                 m_options.pidFile + ")");

    m_listenFd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_listenFd < 0) throw std::runtime_error(errnoText("cannot open a socket"));
    const int yes = 1;
    ::setsockopt(m_listenFd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(m_options.port));
    if (::bind(m_listenFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error(errnoText("cannot listen on 127.0.0.1:" + std::to_string(m_options.port)));
    if (::listen(m_listenFd, 16) != 0) throw std::runtime_error(errnoText("cannot listen"));
    socklen_t length = sizeof address;
    if (::getsockname(m_listenFd, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        throw std::runtime_error(errnoText("cannot learn the port listened on"));
    m_port = ntohs(address.sin_port);
    setNonBlocking(m_listenFd);

    writeFiles();
    trace("listening on 127.0.0.1:" + std::to_string(m_port));
}

void HubPollingDaemon::writeFiles() {
    // The port first: a client that sees the pid file goes on to read the port.
    const std::uint16_t port = htons(static_cast<std::uint16_t>(m_port));
    std::string bytes(2, '\0');
    std::memcpy(&bytes[0], &port, 2);
    writeFileAtomically(m_options.portFile, bytes);
    m_filesWritten = true;
    ++g_daemonsWithFiles;
    writeFileAtomically(m_options.pidFile, std::to_string(getpid()) + "\n");
}

void HubPollingDaemon::removeFiles() {
    if (!m_filesWritten) return;
    m_filesWritten = false;
    --g_daemonsWithFiles;
    // Only files that are still this daemon's: a successor may have taken over.
    if (readPid(m_options.pidFile) == getpid()) {
        ::unlink(m_options.pidFile.c_str());
        ::unlink(m_options.portFile.c_str());
    }
}

void HubPollingDaemon::Stop() {
    if (m_wakeWrite >= 0) {
        const char byte = 's';
        ssize_t ignored = ::write(m_wakeWrite, &byte, 1);
        (void)ignored;
    }
}

void HubPollingDaemon::Run() {
    if (m_listenFd < 0) throw std::logic_error("the polling daemon is not started");
    m_nextLook = Clock::now();
    bool stopping = false;
    while (!stopping) {
        Clock::time_point now = Clock::now();
        if (now >= m_nextLook) {
            lookAtArray();
            now = Clock::now();
            m_nextLook = now + std::chrono::milliseconds(m_options.intervalMs);
        }
        sendDueReports(now);

        // Sleep until the next look, heartbeat or end of a stall, or until a
        // client or Stop wakes us.
        Clock::time_point wake = m_nextLook;
        std::vector<pollfd> fds;
        fds.push_back({m_wakeRead, POLLIN, 0});
        fds.push_back({m_listenFd, POLLIN, 0});
        std::vector<Client*> polled;
        for (auto& client : m_clients) {
            const bool stalled = client->stalledUntil > now;
            if (stalled) wake = std::min(wake, client->stalledUntil);
            else if (client->loggedIn)
                wake = std::min(wake, client->lastReport + std::chrono::seconds(m_options.heartbeatS));
            short events = stalled ? 0 : POLLIN;
            if (!client->output.empty()) events |= POLLOUT;
            fds.push_back({client->fd, events, 0});
            polled.push_back(client.get());
        }
        const auto waitMs = std::chrono::duration_cast<std::chrono::milliseconds>(wake - now).count();
        const int timeout = static_cast<int>(std::clamp<long long>(waitMs, 0, 60000));
        if (::poll(fds.data(), fds.size(), timeout) < 0) {
            if (errno == EINTR) continue;
            trace(errnoText("poll failed"));
            break;
        }
        if (fds[0].revents != 0) {
            char buffer[64];
            while (::read(m_wakeRead, buffer, sizeof buffer) > 0) {
            }
            stopping = true;
        }
        if (fds[1].revents & POLLIN) acceptClients();
        for (std::size_t i = 0; i < polled.size(); ++i) {
            Client& client = *polled[i];
            const short revents = fds[i + 2].revents;
            if (client.closed || revents == 0) continue;
            if (revents & (POLLIN | POLLHUP | POLLERR)) readClient(client);
            if (!client.closed && (revents & POLLOUT)) flush(client);
        }
        m_clients.erase(std::remove_if(m_clients.begin(), m_clients.end(),
                                       [](const std::unique_ptr<Client>& c) { return c->closed; }),
                        m_clients.end());
    }
    trace("stopping");
    for (auto& client : m_clients) close(*client, "the daemon stops");
    m_clients.clear();
    ::close(m_listenFd);
    m_listenFd = -1;
    removeFiles();
}

void HubPollingDaemon::acceptClients() {
    for (;;) {
        sockaddr_in peer{};
        socklen_t length = sizeof peer;
        const int fd = ::accept4(m_listenFd, reinterpret_cast<sockaddr*>(&peer), &length,
                                 SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0) {
            if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) trace(errnoText("accept failed"));
            return;
        }
        ++m_clientsSeen;
        if (m_clients.size() >= kMaxClients) {
            trace("client " + std::to_string(m_clientsSeen) + " turned away: " + std::to_string(kMaxClients) +
                  " clients are connected already");
            ::close(fd);
            continue;
        }
        auto client = std::make_unique<Client>();
        client->fd = fd;
        client->name = "client " + std::to_string(m_clientsSeen);
        trace(client->name + " connected");
        m_clients.push_back(std::move(client));
    }
}

void HubPollingDaemon::readClient(Client& client) {
    std::uint8_t buffer[4096];
    for (;;) {
        const ssize_t got = ::recv(client.fd, buffer, sizeof buffer, 0);
        if (got == 0) {
            close(client, "closed by the peer");
            return;
        }
        if (got < 0) {
            if (errno == EINTR) continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) break;
            close(client, errnoText("receive failed"));
            return;
        }
        client.input.insert(client.input.end(), buffer, buffer + got);
        if (client.input.size() > 2 * Telegram::kMaxLength) break;  // handle what is there first
    }
    // Whole telegrams, one after another, as long as the client stays.
    while (!client.closed && client.input.size() >= Telegram::kHeadSize) {
        TelegramHead head;
        try {
            head = Telegram::DecodeHead(client.input.data(), client.input.size());
        } catch (const TelegramError& e) {
            close(client, std::string("malformed telegram: ") + e.what());
            return;
        }
        if (client.input.size() < head.length) break;
        std::vector<std::uint8_t> telegram(client.input.begin(), client.input.begin() + head.length);
        client.input.erase(client.input.begin(), client.input.begin() + head.length);
        handleTelegram(client, telegram);
    }
}

void HubPollingDaemon::handleTelegram(Client& client, const std::vector<std::uint8_t>& telegram) {
    TelegramHead head;
    try {
        head = Telegram::DecodeHead(telegram.data(), telegram.size());
        if (head.sender != Telegram::kProviderId || head.receiver != Telegram::kDaemonId)
            throw TelegramError("sender and receiver ids are not '$' and '#'");
        Telegram::CheckControl(head, telegram.data(), telegram.size());
    } catch (const TelegramError& e) {
        close(client, std::string("malformed telegram: ") + e.what());
        return;
    }
    if (client.closeWhenSent) return;  // logged out: whatever follows is ignored
    if (head.code == Telegram::kCodeLogin) {
        client.name = client.name.substr(0, client.name.find(" (")) + " (pid " + std::to_string(head.pid) + ")";
        trace(client.name + " logged in");
        client.loggedIn = true;
        client.reportDue = true;
        // The first report tells the array as it is now, not as last looked at.
        m_nextLook = Clock::now();
    } else {
        trace(client.name + " logged out");
        client.loggedIn = false;
        client.reportDue = false;
        client.closeWhenSent = true;
        if (client.output.empty()) close(client, "after logout");
    }
}

void HubPollingDaemon::lookAtArray() {
    try {
        const ArrayGenerations now = m_probe();
        if (!m_stateError.empty()) trace("the array's state is readable again");
        m_stateError.clear();
        m_stateReadable = true;
        if (now.logical != m_generations.logical || now.physical != m_generations.physical) {
            m_generations = now;
            for (auto& client : m_clients) {
                if (client->loggedIn &&
                    (client->reported.logical != now.logical || client->reported.physical != now.physical))
                    client->reportDue = true;
            }
        }
    } catch (const std::exception& e) {
        // Said once per spell of trouble, not at every look.
        if (m_stateReadable || m_stateError != e.what()) trace(std::string("cannot read the array's state: ") + e.what());
        m_stateError = e.what();
        m_stateReadable = false;
    }
}

void HubPollingDaemon::sendDueReports(Clock::time_point now) {
    for (auto& client : m_clients) {
        if (client->closed || !client->loggedIn || client->stalledUntil > now) continue;
        if (client->lastReport + std::chrono::seconds(m_options.heartbeatS) <= now) client->reportDue = true;
        if (client->reportDue) sendReport(*client, now);
    }
}

void HubPollingDaemon::sendReport(Client& client, Clock::time_point now) {
    AlarmReportContent content;
    content.logicalGeneration = m_generations.logical;
    content.physicalGeneration = m_generations.physical;
    // A state that cannot be read is a report the daemon could not get.
    content.result = m_stateReadable ? 0 : 1;

    std::optional<DaemonFault> fault;
    try {
        fault = m_faults();
    } catch (const std::exception& e) {
        trace(std::string("cannot read the faults: ") + e.what());
    }
    if (fault) {
        if (fault->mode == "drop") {
            close(client, "dropped (fault)");
            return;
        }
        if (fault->mode == "stall") {
            const auto length = std::chrono::milliseconds(static_cast<long long>(std::max(0.0, fault->seconds) * 1000));
            client.stalledUntil = now + length;
            trace(client.name + " stalled for " + std::to_string(fault->seconds) + " s (fault)");
            return;  // the report stays due until the stall ends
        }
        if (fault->mode == "result") {
            const int code = fault->returnCode & 0xff;
            content.result = static_cast<std::uint8_t>(code == 0 ? 1 : code);
            trace(client.name + " gets result " + std::to_string(content.result) + " (fault)");
        } else if (fault->mode == "unknown-code") {
            trace(client.name + " gets a telegram of unknown code (fault)");
            queue(client, Telegram::EncodeAlarmReport(content, static_cast<std::uint32_t>(getpid()), nowSeconds(),
                                                      kUnknownCode));
            if (client.closed) return;
        } else {
            trace("fault mode '" + fault->mode + "' is not one of drop, result, unknown-code, stall; ignored");
        }
    }
    queue(client, Telegram::EncodeAlarmReport(content, static_cast<std::uint32_t>(getpid()), nowSeconds()));
    client.reportDue = false;
    client.lastReport = now;
    client.reported = m_generations;
}

void HubPollingDaemon::queue(Client& client, const std::vector<std::uint8_t>& data) {
    if (client.output.size() + data.size() > kMaxPendingBytes) {
        close(client, "does not read its reports");
        return;
    }
    client.output.insert(client.output.end(), data.begin(), data.end());
    flush(client);
}

void HubPollingDaemon::flush(Client& client) {
    while (!client.output.empty()) {
        const ssize_t sent = ::send(client.fd, client.output.data(), client.output.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            if (errno == EINTR) continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) return;
            close(client, errnoText("send failed"));
            return;
        }
        client.output.erase(client.output.begin(), client.output.begin() + sent);
    }
    if (client.closeWhenSent) close(client, "after logout");
}

void HubPollingDaemon::close(Client& client, const std::string& why) {
    if (client.closed) return;
    trace(client.name + " closed: " + why);
    ::close(client.fd);
    client.fd = -1;
    client.closed = true;
    client.loggedIn = false;
}

}  // namespace arraysim
