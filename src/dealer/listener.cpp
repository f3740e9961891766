#include "dealer/listener.h"

#include "support/net.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

Result<Listener> Listener::local() {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return Error{std::string{"could not open a socket: "} + std::strerror(errno)};
    Listener listener(fd, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(fd, 8) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return Error{std::string{"could not listen on the loopback interface: "} +
                     std::strerror(errno)};
    listener.port_ = ntohs(address.sin_port);
    return listener;
}

Result<Listener> Listener::everywhere(uint16_t port) {
    const uint16_t wanted = port;
    const int fd = getListenSocket(&port);
    if (fd < 0)
        return Error{"could not listen on port " + std::to_string(wanted) + ": " +
                     std::strerror(errno)};
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    return Listener(fd, port);
}

Listener::Listener(Listener&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)), port_(other.port_) {}

Listener& Listener::operator=(Listener&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = std::exchange(other.fd_, -1);
        port_ = other.port_;
    }
    return *this;
}

Listener::~Listener() {
    if (fd_ >= 0)
        ::close(fd_);
}

std::optional<Listener::Visitor> Listener::accept() {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    const int fd = ::accept4(fd_, reinterpret_cast<sockaddr*>(&address), &length, SOCK_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    char text[INET_ADDRSTRLEN] = "?";
    ::inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return Visitor{fd, std::string{text} + ":" + std::to_string(ntohs(address.sin_port))};
}

} // namespace tamarin
