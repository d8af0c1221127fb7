#pragma once

#include "support/HeadlessDesktop.h"

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vardel::testing {

// A TCP port on the loopback interface that nothing listens on now, for a page server of the test's own.
inline int freePort()
{
    int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    bool bound = ::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
        && ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    ::close(socket);
    if (!bound)
        throw HeadlessDesktopError("cannot find a free port");
    return ntohs(address.sin_port);
}

// Whether a server listens on the loopback port yet.
inline bool acceptsConnections(int port)
{
    int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool connected = ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return connected;
}

} // namespace vardel::testing
