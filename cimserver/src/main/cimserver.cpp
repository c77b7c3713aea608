// The CIM server program: reads its configuration, starts the server with its
// providers and listeners, and runs until SIGTERM or SIGINT stops it in order.

#include <Pegasus/FrontEnd/NetworkFrontEnd.h>
#include <Pegasus/Indication/IndicationService.h>
#include <Pegasus/Server/CIMServer.h>
#include <Pegasus/Server/CIMServerConfig.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Pegasus;

namespace {

// Runs the server in this process until a stop signal. readyFd, when not -1,
// hears "ready" or the reason the server could not start.
int serve(const CIMServerConfig& config, int readyFd) {
    auto tell = [readyFd](const std::string& text) {
        if (readyFd < 0) return;
        ssize_t ignored = ::write(readyFd, text.data(), text.size());
        (void)ignored;
    };
    // The signals are taken by sigwait below, never by another thread.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGHUP);
    ::pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    ::signal(SIGPIPE, SIG_IGN);

    CIMServer server(config);
    // Indication delivery first: subscriptions and providers are enabled before
    // clients are served, and delivery ends after they are no longer served.
    IndicationService::attach(server);
    NetworkFrontEnd frontEnd(server);
    frontEnd.attach();
    try {
        server.start();
        server.writePidFile();
    } catch (const std::exception& e) {
        const std::string why = std::string("cimserver: the CIM server cannot start: ") + e.what();
        std::cerr << why << std::endl;
        tell(why);
        return 1;
    }
    std::cout << "CIM server started (version " << CIMServer::version() << ", pid " << ::getpid() << ")"
              << std::endl;
    tell("ready");
    if (readyFd >= 0) ::close(readyFd);

    int signal = 0;
    while (::sigwait(&stopSignals, &signal) != 0 || signal == SIGHUP) {
    }
    std::cout << "CIM server stopping (signal " << signal << ")" << std::endl;
    server.stop();
    return 0;
}

// Without --foreground: the server goes on in a child of its own session,
// its output in the log folder; this process waits until it serves (or says
// why not) and ends.
int serveInBackground(const CIMServerConfig& config) {
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0) {
        std::cerr << "cimserver: cannot make a pipe: " << std::strerror(errno) << std::endl;
        return 1;
    }
    std::cout.flush();
    std::cerr.flush();
    const pid_t child = ::fork();
    if (child < 0) {
        std::cerr << "cimserver: cannot fork: " << std::strerror(errno) << std::endl;
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
        const std::string logDir = CIMServerConfig::underRoot("/opt/pegasus/logs");
        ::mkdir(logDir.c_str(), 0755);
        const std::string logPath = logDir + "/cimserver.log";
        int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (log < 0) log = ::open("/dev/null", O_WRONLY);
        if (log >= 0) {
            ::dup2(log, STDOUT_FILENO);
            ::dup2(log, STDERR_FILENO);
            ::close(log);
        }
        std::_Exit(serve(config, ready[1]));
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
    if (answer == "ready") {
        std::cout << "CIM server started (pid " << child << ")" << std::endl;
        return 0;
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    std::cerr << (answer.empty() ? std::string("cimserver: the CIM server ended before it served") : answer)
              << std::endl;
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    // Operators follow the server's and the module's short lines in a log
    // file; each line reaches it when written, not when a buffer fills.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    CLI::App app{"The CIM server: serves the repository and its providers to WBEM clients"};
    std::string configFile;
    bool foreground = false;
    bool showVersion = false;
    app.add_flag("--version", showVersion, "Print the version and end");
    app.add_option("--config", configFile, "Configuration file (default /opt/pegasus/etc/cimserver.conf)");
    app.add_flag("--foreground", foreground, "Stay in the foreground instead of going on in the background");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }
    if (showVersion) {
        std::cout << CIMServer::version() << std::endl;
        return 0;
    }
    CIMServerConfig config;
    try {
        const std::string file = configFile.empty() ? CIMServerConfig::defaultFile() : configFile;
        struct stat info;
        // Without a file the defaults hold; a named file must exist.
        if (!configFile.empty() || ::stat(file.c_str(), &info) == 0) config = CIMServerConfig::load(file);
    } catch (const ConfigError& e) {
        std::cerr << "cimserver: " << e.what() << std::endl;
        return 1;
    }
    return foreground ? serve(config, -1) : serveInBackground(config);
}
