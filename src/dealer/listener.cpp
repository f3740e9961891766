#include "dealer/listener.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

Result<Listener> Listener::at(const std::string& address, uint16_t port) {
    // Those who connect without meaning to play must not keep the player out of the queue.
    constexpr int queueLength = 1024;
    const auto failed = [&] {
        return Error{"could not listen on " + address + ":" + std::to_string(port) + ": " +
                     std::strerror(errno)};
    };
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return failed();
    Listener listener(fd, port);
    // A port whose connections of an earlier match still linger is free all the same.
    const int yes = 1;
    if (port != 0)
        ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    if (::inet_pton(AF_INET, address.c_str(), &place.sin_addr) != 1)
        return Error{"'" + address + "' is no IPv4 address"};
    socklen_t length = sizeof place;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&place), length) != 0 ||
        ::listen(fd, queueLength) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&place), &length) != 0)
        return failed();
    listener.port_ = ntohs(place.sin_port);
    return listener;
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
    return Visitor{fd, text, ntohs(address.sin_port)};
}

} // namespace tamarin
