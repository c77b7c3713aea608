#include "SmisSocket.h"

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

#include "SmisTrace.h"
#include "ThreadSyncTool.h"

namespace orvsmis {

namespace {
const int CONNECT_WAIT_MS = 5000;
const int CONNECT_PAUSE_MS = 100;
}  // namespace

int openSocket(int* fd, int domain, int type, int protocol) {
    int s = ::socket(domain, type, protocol);
    if (s < 0) {
        SMIS_TRACE(LEVEL1, "syscall socket failed, Error code: %d", errno);
        return -1;
    }
    *fd = s;
    return 0;
}

int closeSocket(int fd) {
    if (fd < 0) return -1;
    if (::close(fd) != 0) {
        SMIS_TRACE(LEVEL2, "syscall close failed, Error code: %d", errno);
        return -1;
    }
    return 0;
}

int getSockAddr(const char* ip, unsigned short port, int family, struct sockaddr_in* addr) {
    memset(addr, 0, sizeof(*addr));
    addr->sin_family = static_cast<sa_family_t>(family);
    addr->sin_port = port;
    if (::inet_pton(family, ip, &addr->sin_addr) != 1) {
        SMIS_TRACE(LEVEL1, "syscall inet_pton failed for %s, Error code: %d", ip, errno);
        return -1;
    }
    return 0;
}

int connectPeer(int fd, const struct sockaddr* addr, socklen_t length) {
    int waited = 0;
    for (;;) {
        if (::connect(fd, addr, length) == 0) return 0;
        int err = errno;
        if (err == EINTR) continue;
        if (err != EAGAIN || waited >= CONNECT_WAIT_MS) {
            SMIS_TRACE(LEVEL1, "syscall connect failed, Error code: %d", err);
            return -1;
        }
        sleepForMilliSecond(CONNECT_PAUSE_MS);
        waited += CONNECT_PAUSE_MS;
    }
}

int recvData(int fd, void* buffer, int length) {
    char* at = static_cast<char*>(buffer);
    int got = 0;
    while (got < length) {
        ssize_t n = ::recv(fd, at + got, static_cast<size_t>(length - got), 0);
        if (n == 0) {
            SMIS_TRACE(LEVEL2, "peer socket closed");
            return 0;
        }
        if (n < 0) {
            if (errno == EINTR) continue;
            SMIS_TRACE(LEVEL1, "syscall recv failed, Error code: %d", errno);
            return -1;
        }
        got += static_cast<int>(n);
    }
    return length;
}

int sendData(int fd, const void* buffer, int length) {
    const char* at = static_cast<const char*>(buffer);
    int sent = 0;
    while (sent < length) {
        // No SIGPIPE: a daemon that went away must not end the server's process.
        ssize_t n = ::send(fd, at + sent, static_cast<size_t>(length - sent), MSG_NOSIGNAL);
        if (n < 0) {
            if (errno == EINTR) continue;
            SMIS_TRACE(LEVEL1, "syscall send failed, Error code: %d", errno);
            return -1;
        }
        sent += static_cast<int>(n);
    }
    return 0;
}

int setSockNonBlock(int fd) {
    int flags = ::fcntl(fd, F_GETFL, 0);
    if (flags < 0) {
        SMIS_TRACE(LEVEL1, "syscall fcntl(F_GETFL) failed, Error code: %d", errno);
        return -1;
    }
    if (::fcntl(fd, F_SETFL, flags | O_NONBLOCK) < 0) {
        SMIS_TRACE(LEVEL1, "syscall fcntl(F_SETFL) failed, Error code: %d", errno);
        return -1;
    }
    return 0;
}

}  // namespace orvsmis
