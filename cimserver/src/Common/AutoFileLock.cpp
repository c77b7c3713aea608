#include <Pegasus/Common/AutoFileLock.h>
#include <Pegasus/Common/Tracer.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

PEGASUS_NAMESPACE_BEGIN

AutoFileLock::AutoFileLock(const char* fileName) {
    if (fileName == nullptr) return;
    _fd = ::open(fileName, O_WRONLY | O_CLOEXEC);
    if (_fd < 0) {
        PEG_TRACE((TRC_OS_ABSTRACTION, Tracer::LEVEL1, "AutoFileLock: cannot open %s: %s", fileName,
            std::strerror(errno)));
        return;
    }
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    whole.l_start = 0;
    whole.l_len = 0;
    int rc;
    do {
        rc = ::fcntl(_fd, F_SETLKW, &whole);
    } while (rc != 0 && errno == EINTR);
    if (rc != 0) {
        PEG_TRACE((TRC_OS_ABSTRACTION, Tracer::LEVEL1, "AutoFileLock: cannot lock %s: %s", fileName,
            std::strerror(errno)));
        return;
    }
    _locked = true;
}

AutoFileLock::~AutoFileLock() {
    if (_fd < 0) return;
    if (_locked) {
        struct flock whole {};
        whole.l_type = F_UNLCK;
        whole.l_whence = SEEK_SET;
        ::fcntl(_fd, F_SETLK, &whole);
    }
    ::close(_fd);
}

PEGASUS_NAMESPACE_END
