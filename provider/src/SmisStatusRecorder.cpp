#include "SmisStatusRecorder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <Pegasus/Common/AutoFileLock.h>

#include "AutoLock.h"
#include "FixedPath.h"
#include "Mutex.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

const char* const STATUS_FILE = "/opt/pegasus/etc/status";
const char* const STATUS_LOCK_FILE = "/opt/pegasus/etc/status.lock";
const mode_t STATUS_MODE = 0644;

// The last value each layer reported: 0 not ready, 1 ready, 2 abnormal.
int smisStatus = 1;
int pollStatus = 1;

Mutex& recordLock() {
    static Mutex lock;
    return lock;
}

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

bool InitializeStatusFile() {
    const std::string path = FixedPath::Resolve(STATUS_LOCK_FILE);
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, STATUS_MODE);
    if (fd < 0) {
        SMIS_TRACE(LEVEL1, "Error[ InitializeStatusFile ] : cannot create %s ,%s", path.c_str(),
            std::strerror(errno));
        return false;
    }
    ::fchmod(fd, STATUS_MODE);
    ::close(fd);
    return true;
}

bool WriteStatus(const char* text) {
    const std::string lockPath = FixedPath::Resolve(STATUS_LOCK_FILE);
    const std::string path = FixedPath::Resolve(STATUS_FILE);
    Pegasus::AutoFileLock fileLock(lockPath.c_str());
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, STATUS_MODE);
    if (fd < 0) {
        SMIS_TRACE(LEVEL1, "Error[ WriteStatus ] : cannot open %s ,%s", path.c_str(),
            std::strerror(errno));
        return false;
    }
    ::fchmod(fd, STATUS_MODE);
    const std::string content = std::string(" ") + (text != nullptr ? text : "");
    const bool written = writeAll(fd, content.data(), content.size());
    if (::close(fd) != 0 || !written) {
        SMIS_TRACE(LEVEL1, "Error[ WriteStatus ] : cannot write %s ,%s", path.c_str(),
            std::strerror(errno));
        return false;
    }
    return true;
}

void RecordSmisLayerStatus(int value, const char* text) {
    AutoLock lock(recordLock());
    // An abnormal polling link keeps its word in the file.
    if (pollStatus == 1 && value != smisStatus) WriteStatus(text);
    smisStatus = value;
}

void RecordPollingStatus(int value, const char* text) {
    AutoLock lock(recordLock());
    // An abnormal provider keeps its word in the file.
    if ((smisStatus == 0 || smisStatus == 1) && value != pollStatus) WriteStatus(text);
    pollStatus = value;
}

}  // namespace orvsmis
