#include "MemoryCautioner.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "ConfigManager.h"
#include "FixedPath.h"
#include "IndicationSender.h"
#include "SmisStatusRecorder.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

const char* const REPOSITORY_LINK = "/opt/pegasus/repository";
const char* const DISABLE_SCRIPT = "/opt/pegasus/bin/disable_cimserver.sh";
const unsigned CRITICAL_EXIT_SLEEP_SECONDS = 600;

}  // namespace

int MemoryCautioner::mMallocSize = 0;
int MemoryCautioner::m_maxDbSize = 42;
std::string MemoryCautioner::m_dbPathName = "/opt/pegasus/repository/root#orv.db";

MemoryCautioner* MemoryCautioner::Instance() {
    static MemoryCautioner* instance = new MemoryCautioner();
    return instance;
}

MemoryCautioner::MemoryCautioner() {
    mMallocSize = GetCheckMallocSize();
    m_maxDbSize = ConfigManager::GetConfigIntValue("smis", "MaxDbSize", 42);
    m_dbPathName = ConfigManager::GetConfigStringValue("smis", "DBLocation",
        "/opt/pegasus/repository/root#orv.db");
}

int MemoryCautioner::GetCheckMallocSize() {
    const int size = ConfigManager::GetConfigIntValue("smis", "checkMallocSize", 5120);
    if (size <= 0) {
        SMIS_TRACE(LEVEL3, "(CheckMallocSize =< 0) in Config File.");
        return 0;
    }
    return size;
}

bool MemoryCautioner::PassMemoryThresholdCheck(ResultInfo& info) {
    if (mMallocSize <= 0) {
        SMIS_TRACE(LEVEL4, "Do not check malloc size.");
        return true;
    }
    const size_t bytes = static_cast<size_t>(mMallocSize) * 1024u;
    // The write keeps the compiler from leaving the probe out.
    volatile char* probe = static_cast<volatile char*>(std::malloc(bytes));
    if (probe == nullptr) {
        SMIS_TRACE(LEVEL1, "malloc is failed!");
        info.Set(false, "00030", "Achieve the max memory limit");
        return false;
    }
    probe[0] = 1;
    probe[bytes - 1] = 1;
    std::free(const_cast<char*>(probe));
    return true;
}

long MemoryCautioner::GetResidentSizeKB() {
    // The resident size: the virtual size of a threaded process is swollen by
    // the allocator's per-thread arenas and says nothing about real use.
    std::FILE* status = std::fopen("/proc/self/status", "r");
    if (status == nullptr) return -1;
    char line[256];
    long kb = -1;
    while (std::fgets(line, sizeof line, status) != nullptr) {
        if (std::strncmp(line, "VmRSS:", 6) == 0) {
            char* end = nullptr;
            const long value = std::strtol(line + 6, &end, 10);
            if (end != line + 6 && value >= 0) kb = value;
            break;
        }
    }
    std::fclose(status);
    return kb;
}

bool MemoryCautioner::PassMemoryThresholdCheckEx(ResultInfo& info) {
    const long kb = GetResidentSizeKB();
    if (kb < 0) {
        SMIS_TRACE(LEVEL3, "Info[ CheckDbSize ] : open /proc/ failed");
        return true;
    }
    if (kb < MAX_PROCESS_KB) return true;
    SMIS_TRACE(LEVEL1, "Info[ CheckMemory ] : resident size %ld KB reaches the limit %ld KB", kb,
        MAX_PROCESS_KB);
    info.Set(false, "00030", "Achieve the max memory limit");
    return false;
}

bool MemoryCautioner::PassDataBaseThresholdCheck(ResultInfo& info) {
    const std::string path = FixedPath::Resolve(m_dbPathName);
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
        const int error = errno;
        if (error != ENOENT) return true;  // present but unreadable: nothing to measure
        SMIS_TRACE(LEVEL1,
            "Info[ CheckDbSize ] : Open db failed. Current path is \"%s\". errno is %d",
            path.c_str(), error);
        info.Set(false, "00033", "Open db failed.");
        return false;
    }
    struct stat st;
    const int rc = ::fstat(fd, &st);
    ::close(fd);
    if (rc != 0) {
        SMIS_TRACE(LEVEL1, "Info[ CheckDbSize ] : fstat failed on \"%s\"", path.c_str());
        info.Set(false, "", "");
        return false;
    }
    const long long megabytes = static_cast<long long>(st.st_size) >> 20;
    if (megabytes >= m_maxDbSize) {
        SMIS_TRACE(LEVEL1, "Info[ CheckDbSize ] : Current size is %lld, the limit is %d",
            megabytes, m_maxDbSize);
        info.Set(false, "00031", "Achieve the max database size");
        return false;
    }
    SMIS_TRACE(LEVEL4, "Info[ CheckDbSize ] : Pass check. Current size is %d",
        static_cast<int>(megabytes));
    return true;
}

int MemoryCautioner::AreaType() {
    const std::string link = FixedPath::Resolve(REPOSITORY_LINK);
    char target[4096];
    const ssize_t n = ::readlink(link.c_str(), target, sizeof target - 1);
    if (n < 0) return 3;
    target[n] = '\0';
    const std::string where(target);
    if (where == "/var_flash/pegasus/repository") return 0;
    if (where == "/mnt/share_log/pegasus/repository") return 1;
    if (where == "/mnt/perf_log/pegasus/repository") return 2;
    return 3;
}

bool MemoryCautioner::PassFlashAreaCheck(ResultInfo& info) {
    if (AreaType() != 0) return true;
    SMIS_TRACE(LEVEL1, "Info[ CheckFlashArea ] : Provider can not run at flash area");
    info.Set(false, "00032", "Run at flash area.");
    return false;
}

void MemoryCautioner::CriticalExit() {
    const std::string script = FixedPath::Resolve(DISABLE_SCRIPT);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        // The child of a threaded process: no exit handlers of the parent's
        // copy may run here, hence _exit.
        if (std::system(script.c_str()) == -1) ::_exit(1);
        ::sleep(CRITICAL_EXIT_SLEEP_SECONDS);
        ::_exit(0);
    }
    if (child < 0) {
        SMIS_TRACE(LEVEL1, "Error[ CriticalExit ] : fork failed ,%s", std::strerror(errno));
    }
    // Give the script time to stop the CIM server in order.
    unsigned left = CRITICAL_EXIT_SLEEP_SECONDS;
    while (left > 0) left = ::sleep(left);
    std::exit(0);
}

void* CheckMemoryThread(void*) {
    ResultInfo info;
    while (true) {
        try {
            if (!MemoryCautioner::Instance()->PassMemoryThresholdCheckEx(info)) break;
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ CheckMemoryThread ] : %s", e.what());
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[ CheckMemoryThread ] : unknown failure");
        }
        ::sleep(1);
    }
    try {
        SMIS_TRACE(LEVEL1, "CritialError[%s]: %s. Cimserver exit.", info.code.c_str(),
            info.message.c_str());
        IndicationSender sender;
        sender.SendCriticalAlertIndication(Pegasus::String(info.message.c_str()));
        if (info.code == "00030") RecordSmisLayerStatus(2, "abnormal (max memory used)");
    } catch (...) {
        // The exit below must happen whatever went wrong on the way.
    }
    MemoryCautioner::CriticalExit();
}

}  // namespace orvsmis
