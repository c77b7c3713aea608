#ifndef ORVSMIS_SMISSOCKET_H
#define ORVSMIS_SMISSOCKET_H

#include <netinet/in.h>
#include <sys/socket.h>

namespace orvsmis {

// Thin wrappers over the socket calls, tracing failures. Each gives 0 or -1
// unless told otherwise.
int openSocket(int* fd, int domain, int type, int protocol);
int closeSocket(int fd);
// The port goes in as it is given (already in network order).
int getSockAddr(const char* ip, unsigned short port, int family, struct sockaddr_in* addr);
// Retries while the peer is not yet there (EAGAIN), up to 5 s, 100 ms apart.
int connectPeer(int fd, const struct sockaddr* addr, socklen_t length);
// Receives until length bytes are there: length, 0 when the peer closed, -1 on error.
int recvData(int fd, void* buffer, int length);
// Sends until everything is gone.
int sendData(int fd, const void* buffer, int length);
int setSockNonBlock(int fd);

}  // namespace orvsmis

#endif
