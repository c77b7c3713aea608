// The "hubpolling" subcommand of arraysim: the polling daemon wired to the
// array's state (generations, copy progress) and to the armed faults.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include "FaultStore.h"
#include "HubPollingDaemon.h"
#include "StateStore.h"

#include "CopyProgress.h"

namespace arraysim {

namespace {

void trace(const std::string& line) {
    char stamp[32];
    std::time_t now = std::time(nullptr);
    struct tm parts;
    gmtime_r(&now, &parts);
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%SZ", &parts);
    std::cerr << stamp << " hubpolling[" << getpid() << "]: " << line << std::endl;
}

std::string errnoText(const std::string& what) { return what + ": " + std::strerror(errno); }


HubPollingDaemon* g_signalled = nullptr;

void onStopSignal(int) {
    if (g_signalled != nullptr) g_signalled->Stop();
}

long long wallMillis() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

// Moves copies on, then gives both generations. Nothing is written when
// nothing moved.
HubPollingDaemon::Probe stateProbe() {
    auto store = std::make_shared<StateStore>(StateStore::DefaultDir());
    return [store]() {
        ArrayState state = store->Update([](ArrayState& s) { CopyProgress::Advance(s, wallMillis()); });
        return ArrayGenerations{state.logicalGeneration, state.physicalGeneration};
    };
}

HubPollingDaemon::FaultSource faultSource() {
    auto faults = std::make_shared<FaultStore>(StateStore::DefaultDir());
    return [faults]() -> std::optional<DaemonFault> {
        const std::optional<Fault> fault = faults->Take("hubpolling");
        if (!fault) return std::nullopt;
        return DaemonFault{fault->mode, fault->returnCode, fault->seconds};
    };
}

// Runs the daemon until a stop signal. readyFd, when not -1, hears "ready PORT"
// or the reason the daemon could not start.
int serve(const HubPollingDaemon::Options& options, int readyFd) {
    auto tell = [readyFd](const std::string& text) {
        if (readyFd < 0) return;
        ssize_t ignored = ::write(readyFd, text.data(), text.size());
        (void)ignored;
    };
    std::unique_ptr<HubPollingDaemon> daemon;
    try {
        daemon = std::make_unique<HubPollingDaemon>(options, stateProbe(), faultSource());
        daemon->Start();
    } catch (const std::exception& e) {
        const std::string why = std::string("hubpolling: ") + e.what();
        if (readyFd < 0) std::cerr << why << std::endl;
        tell(why);
        return 1;
    }
    g_signalled = daemon.get();
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    tell("ready " + std::to_string(daemon->Port()));
    if (readyFd >= 0) ::close(readyFd);
    int status = 0;
    try {
        daemon->Run();
    } catch (const std::exception& e) {
        trace(std::string("stopped: ") + e.what());
        status = 1;
    }
    g_signalled = nullptr;
    daemon.reset();
    return status;
}

// Without --foreground: the daemon goes on in a child of its own session; this
// process waits until it listens (or says why not) and ends.
int serveInBackground(const HubPollingDaemon::Options& options) {
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0) {
        std::cerr << errnoText("hubpolling: cannot make a pipe") << std::endl;
        return 1;
    }
    std::cout.flush();
    std::cerr.flush();
    const pid_t child = ::fork();
    if (child < 0) {
        std::cerr << errnoText("hubpolling: cannot fork") << std::endl;
        return 1;
    }
    if (child == 0) {
        ::close(ready[0]);
        ::setsid();
        const int null = ::open("/dev/null", O_RDONLY);
        if (null >= 0) {
            ::dup2(null, STDIN_FILENO);
            ::close(null);
        }
        // The caller may read our output to its end: the daemon's traces go to
        // its log, never to the pipe the caller waits on.
        const std::string logPath = StateStore::DefaultDir() + "/hubpolling.log";
        int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (log < 0) log = ::open("/dev/null", O_WRONLY);
        if (log >= 0) {
            ::dup2(log, STDOUT_FILENO);
            ::dup2(log, STDERR_FILENO);
            ::close(log);
        }
        std::exit(serve(options, ready[1]));
    }
    ::close(ready[1]);
    std::string answer;
    char buffer[512];
    ssize_t got;
    while ((got = ::read(ready[0], buffer, sizeof buffer)) != 0) {
        if (got < 0) {
            if (errno == EINTR) continue;
            break;
        }
        answer.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(ready[0]);
    if (answer.compare(0, 6, "ready ") == 0) {
        std::cout << "hubpolling: pid " << child << " listening on 127.0.0.1:" << answer.substr(6) << std::endl;
        return 0;
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    std::cerr << (answer.empty() ? std::string("hubpolling: the daemon ended before it listened") : answer)
              << std::endl;
    return 1;
}

}  // namespace

void HubPollingDaemon::AddSubcommand(CLI::App& app) {
    auto* sub = app.add_subcommand("hubpolling", "Run the polling daemon: alarm reports to logged-in clients "
                                                 "on 127.0.0.1, port in HubMonitor.port");
    auto options = std::make_shared<Options>();
    auto foreground = std::make_shared<bool>(false);
    sub->add_option("--port", options->port, "Port to listen on (default: chosen by the system)")
        ->check(CLI::Range(0, 65535));
    sub->add_option("--interval-ms", options->intervalMs,
                    "How often the array's state is looked at and copies move on (default 500)")
        ->check(CLI::Range(10, 3600000));
    sub->add_option("--heartbeat-s", options->heartbeatS,
                    "Longest time between two reports to a client (default 10)")
        ->check(CLI::Range(1, 86400));
    sub->add_flag("--foreground", *foreground, "Stay in the foreground instead of going on in the background");
    sub->callback([options, foreground]() {
        const int status = *foreground ? serve(*options, -1) : serveInBackground(*options);
        if (status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace arraysim
