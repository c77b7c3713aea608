#pragma once
// The array's polling daemon: clients log in over TCP on the loopback
// interface and get an alarm report after login, whenever the array's logical
// or physical side changes, and unchanged as a heartbeat. It also moves copies
// and snapshots on in simulated time, so progress shows while no tool runs.
//
//   arraysim hubpolling [--port N] [--interval-ms N] [--heartbeat-s N] [--foreground]

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace arraysim {

// How far each side of the array has moved.
struct ArrayGenerations {
    std::uint64_t logical = 0;
    std::uint64_t physical = 0;
};

// A fault the daemon is told to show one client once: "drop" the connection,
// a non-zero "result" (returnCode) in the report, an "unknown-code" telegram
// before the report, or "stall" (seconds without reading or reporting).
struct DaemonFault {
    std::string mode;
    int returnCode = 0;
    double seconds = 0;
};

class HubPollingDaemon {
public:
    struct Options {
        int port = 0;               // 0: chosen by the system
        int intervalMs = 500;       // how often the array's state is looked at
        int heartbeatS = 10;        // longest time between two reports to a client
        std::string portFile;       // empty: PortFilePath()
        std::string pidFile;        // empty: PidFilePath()
    };

    // Looks at the array (moving copies on first) and gives its generations;
    // throws when the state cannot be read, which clients see as a failed report.
    using Probe = std::function<ArrayGenerations()>;
    // The next fault meant for the daemon, consumed, or none.
    using FaultSource = std::function<std::optional<DaemonFault>()>;

    HubPollingDaemon(Options options, Probe probe, FaultSource faults);
    ~HubPollingDaemon();
    HubPollingDaemon(const HubPollingDaemon&) = delete;
    HubPollingDaemon& operator=(const HubPollingDaemon&) = delete;

    // Listens on 127.0.0.1 and writes the port file, then the pid file. Throws
    // std::runtime_error with the reason (another daemon runs, port taken, ...).
    void Start();

    // The port listened on, after Start.
    int Port() const { return m_port; }

    // Serves clients until Stop; then closes them and removes both files.
    void Run();

    // Ends Run (at once, if it comes before Run). Safe from another thread and
    // from a signal handler.
    void Stop();

    // "/opt/HubMonitor/HubMonitor.port" and "/var/run/HubMonitor.pid", under
    // $SMIS_ROOT when it is set.
    static std::string PortFilePath();
    static std::string PidFilePath();

    // Registers "hubpolling", wired to the state store and the fault store.
    static void AddSubcommand(CLI::App& app);

private:
    using Clock = std::chrono::steady_clock;
    struct Client;

    void acceptClients();
    void readClient(Client& client);
    void handleTelegram(Client& client, const std::vector<std::uint8_t>& telegram);
    void lookAtArray();
    void sendDueReports(Clock::time_point now);
    void sendReport(Client& client, Clock::time_point now);
    void queue(Client& client, const std::vector<std::uint8_t>& data);
    void flush(Client& client);
    void close(Client& client, const std::string& why);
    void writeFiles();
    void removeFiles();

    Options m_options;
    Probe m_probe;
    FaultSource m_faults;
    int m_listenFd = -1;
    int m_wakeRead = -1;
    int m_wakeWrite = -1;
    int m_port = 0;
    bool m_filesWritten = false;
    ArrayGenerations m_generations;
    bool m_stateReadable = false;
    std::string m_stateError;  // the last reason the state could not be read
    Clock::time_point m_nextLook;
    std::vector<std::unique_ptr<Client>> m_clients;
    unsigned m_clientsSeen = 0;
};

}  // namespace arraysim
