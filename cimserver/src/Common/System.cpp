#include <Pegasus/Common/System.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <mutex>
#include <string>

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <pwd.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

PEGASUS_NAMESPACE_BEGIN

const String System::CIMSERVER("cimserver");

namespace {

std::mutex g_namesMutex;
std::string g_hostName;        // cached, or the configured override
bool g_hostNameSet = false;
std::string g_fullName;
bool g_fullNameSet = false;

std::string systemHostName() {
    char name[256];
    if (::gethostname(name, sizeof name) != 0) return "localhost";
    name[sizeof name - 1] = '\0';
    return name;
}

}  // namespace

void System::getCurrentTime(Uint32& seconds, Uint32& milliseconds) {
    struct timeval now;
    ::gettimeofday(&now, nullptr);
    seconds = static_cast<Uint32>(now.tv_sec);
    milliseconds = static_cast<Uint32>(now.tv_usec / 1000);
}

void System::getCurrentTimeUsec(Uint32& seconds, Uint32& microseconds) {
    struct timeval now;
    ::gettimeofday(&now, nullptr);
    seconds = static_cast<Uint32>(now.tv_sec);
    microseconds = static_cast<Uint32>(now.tv_usec);
}

Uint64 System::getCurrentTimeUsec() {
    struct timeval now;
    ::gettimeofday(&now, nullptr);
    return static_cast<Uint64>(now.tv_sec) * 1000000u + static_cast<Uint64>(now.tv_usec);
}

String System::getCurrentASCIITime() {
    std::time_t now = std::time(nullptr);
    struct tm parts;
    ::localtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%m/%d/%Y-%H:%M:%S", &parts);
    return String(text);
}

void System::sleep(Uint32 seconds) {
    struct timespec left {static_cast<time_t>(seconds), 0};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

Boolean System::exists(const char* path) {
    struct stat info;
    return path != nullptr && ::stat(path, &info) == 0;
}

Boolean System::canRead(const char* path) { return path != nullptr && ::access(path, R_OK) == 0; }

Boolean System::canWrite(const char* path) { return path != nullptr && ::access(path, W_OK) == 0; }

Boolean System::isDirectory(const char* path) {
    struct stat info;
    return path != nullptr && ::stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

Boolean System::makeDirectory(const char* path) { return path != nullptr && ::mkdir(path, 0777) == 0; }

Boolean System::removeDirectory(const char* path) { return path != nullptr && ::rmdir(path) == 0; }

Boolean System::removeFile(const char* path) { return path != nullptr && ::unlink(path) == 0; }

Boolean System::renameFile(const char* oldPath, const char* newPath) {
    return oldPath != nullptr && newPath != nullptr && ::rename(oldPath, newPath) == 0;
}

Boolean System::copyFile(const char* fromPath, const char* toPath) {
    if (fromPath == nullptr || toPath == nullptr) return false;
    std::ifstream in(fromPath, std::ios::binary);
    if (!in) return false;
    std::ofstream out(toPath, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out << in.rdbuf();
    out.flush();
    return static_cast<bool>(out);
}

Boolean System::getFileSize(const char* path, Uint32& size) {
    struct stat info;
    if (path == nullptr || ::stat(path, &info) != 0) return false;
    size = static_cast<Uint32>(info.st_size);
    return true;
}

String System::getCurrentDirectory() {
    char buffer[4096];
    if (::getcwd(buffer, sizeof buffer) == nullptr) return String();
    return String(buffer);
}

String System::getHostName() {
    std::lock_guard<std::mutex> lock(g_namesMutex);
    if (!g_hostNameSet) {
        g_hostName = systemHostName();
        g_hostNameSet = true;
    }
    return String::fromUtf8(g_hostName);
}

String System::getFullyQualifiedHostName() {
    std::string shortName = getHostName().toUtf8();
    std::lock_guard<std::mutex> lock(g_namesMutex);
    if (!g_fullNameSet) {
        g_fullName = shortName;
        struct addrinfo hints {};
        hints.ai_flags = AI_CANONNAME;
        struct addrinfo* found = nullptr;
        if (::getaddrinfo(shortName.c_str(), nullptr, &hints, &found) == 0 && found != nullptr) {
            if (found->ai_canonname != nullptr && *found->ai_canonname != '\0')
                g_fullName = found->ai_canonname;
            ::freeaddrinfo(found);
        }
        g_fullNameSet = true;
    }
    return String::fromUtf8(g_fullName);
}

void System::setHostName(const String& hostName) {
    std::lock_guard<std::mutex> lock(g_namesMutex);
    g_hostName = hostName.toUtf8();
    g_hostNameSet = !g_hostName.empty();
    g_fullNameSet = false;
}

void System::setFullyQualifiedHostName(const String& hostName) {
    std::lock_guard<std::mutex> lock(g_namesMutex);
    g_fullName = hostName.toUtf8();
    g_fullNameSet = !g_fullName.empty();
}

String System::getSystemCreationClassName() { return String("CIM_ComputerSystem"); }

Uint32 System::lookupPort(const char* serviceName, Uint32 defaultPort) {
    if (serviceName == nullptr) return defaultPort;
    struct servent entry;
    struct servent* found = nullptr;
    char buffer[1024];
    if (::getservbyname_r(serviceName, "tcp", &entry, buffer, sizeof buffer, &found) == 0 &&
        found != nullptr)
        return ntohs(static_cast<uint16_t>(found->s_port));
    return defaultPort;
}

Boolean System::isLocalHost(const String& hostName) {
    const std::string name = hostName.toUtf8();
    if (name.empty() || ::strcasecmp(name.c_str(), "localhost") == 0) return true;
    if (::strcasecmp(name.c_str(), getHostName().toUtf8().c_str()) == 0) return true;
    if (::strcasecmp(name.c_str(), getFullyQualifiedHostName().toUtf8().c_str()) == 0) return true;
    // Any address of this machine's interfaces.
    struct addrinfo* found = nullptr;
    if (::getaddrinfo(name.c_str(), nullptr, nullptr, &found) != 0) return false;
    struct ifaddrs* interfaces = nullptr;
    bool local = false;
    if (::getifaddrs(&interfaces) == 0) {
        for (struct addrinfo* a = found; a != nullptr && !local; a = a->ai_next) {
            for (struct ifaddrs* i = interfaces; i != nullptr && !local; i = i->ifa_next) {
                if (i->ifa_addr == nullptr || i->ifa_addr->sa_family != a->ai_family) continue;
                if (a->ai_family == AF_INET) {
                    local = reinterpret_cast<sockaddr_in*>(a->ai_addr)->sin_addr.s_addr ==
                            reinterpret_cast<sockaddr_in*>(i->ifa_addr)->sin_addr.s_addr;
                } else if (a->ai_family == AF_INET6) {
                    local = std::memcmp(&reinterpret_cast<sockaddr_in6*>(a->ai_addr)->sin6_addr,
                                &reinterpret_cast<sockaddr_in6*>(i->ifa_addr)->sin6_addr,
                                sizeof(in6_addr)) == 0;
                }
            }
        }
        ::freeifaddrs(interfaces);
    }
    ::freeaddrinfo(found);
    return local;
}

String System::getEffectiveUserName() {
    struct passwd entry;
    struct passwd* found = nullptr;
    char buffer[4096];
    if (::getpwuid_r(::geteuid(), &entry, buffer, sizeof buffer, &found) != 0 || found == nullptr)
        return String();
    return String(found->pw_name);
}

Uint32 System::getPID() { return static_cast<Uint32>(::getpid()); }

Sint32 System::strcasecmp(const char* s1, const char* s2) {
    if (s1 == nullptr || s2 == nullptr) return s1 == s2 ? 0 : (s1 == nullptr ? -1 : 1);
    return ::strcasecmp(s1, s2);
}

PEGASUS_NAMESPACE_END
