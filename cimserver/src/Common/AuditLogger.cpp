#include <Pegasus/Common/AuditLogger.h>
#include <Pegasus/Common/Tracer.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

PEGASUS_NAMESPACE_BEGIN

namespace {

std::mutex g_auditMutex;
std::string g_auditFile;

// Keeps the line one line: a newline in a method name must not forge a record.
std::string oneLine(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) out += (c == '\n' || c == '\r') ? ' ' : c;
    return out;
}

}  // namespace

void AuditLogger::setLogFile(const std::string& path) {
    std::lock_guard<std::mutex> lock(g_auditMutex);
    g_auditFile = path;
}

std::string AuditLogger::logFile() {
    std::lock_guard<std::mutex> lock(g_auditMutex);
    return g_auditFile;
}

void AuditLogger::write(const OperationContext& context, const std::string& text) {
    std::string user = "-";
    if (context.contains(IdentityContainer::NAME)) {
        try {
            IdentityContainer identity(context.get(IdentityContainer::NAME));
            const std::string name = identity.getUserName().toUtf8();
            if (!name.empty()) user = oneLine(name);
        } catch (...) {
            // a context without a usable identity is logged as "-"
        }
    }
    struct timeval now;
    ::gettimeofday(&now, nullptr);
    struct tm parts;
    time_t seconds = now.tv_sec;
    ::gmtime_r(&seconds, &parts);
    char stamp[40];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &parts);
    char millis[8];
    std::snprintf(millis, sizeof millis, ".%03dZ", static_cast<int>(now.tv_usec / 1000));
    const std::string line = std::string(stamp) + millis + " user=" + user + " " + oneLine(text) + "\n";

    std::lock_guard<std::mutex> lock(g_auditMutex);
    if (g_auditFile.empty()) {
        PEG_TRACE((TRC_SERVER, Tracer::LEVEL2, "audit (no audit log set): %s", line.c_str()));
        return;
    }
    const int fd = ::open(g_auditFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0640);
    if (fd < 0) {
        PEG_TRACE((TRC_SERVER, Tracer::LEVEL1, "cannot open the audit log %s: %s", g_auditFile.c_str(),
            std::strerror(errno)));
        return;
    }
    const ssize_t written = ::write(fd, line.data(), line.size());
    if (written != static_cast<ssize_t>(line.size()))
        PEG_TRACE((TRC_SERVER, Tracer::LEVEL1, "cannot write the audit log %s", g_auditFile.c_str()));
    ::close(fd);
}

void outputFedRampLog(const OperationContext& context, const std::string& text) {
    AuditLogger::write(context, text);
}

PEGASUS_NAMESPACE_END
