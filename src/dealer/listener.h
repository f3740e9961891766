// Ports on which the dealer waits for its players.
#pragma once

#include "support/result.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tamarin {

inline constexpr const char* loopbackAddress = "127.0.0.1";

class Listener {
public:
    // A port of one IPv4 address of this machine, or of all with "0.0.0.0"; port 0 picks a free
    // one. On the loopback address only this machine can reach it.
    static Result<Listener> at(const std::string& address, uint16_t port);
    static Result<Listener> local() { return at(loopbackAddress, 0); }

    Listener(Listener&& other) noexcept;
    Listener& operator=(Listener&& other) noexcept;
    ~Listener();

    int fd() const { return fd_; }
    uint16_t port() const { return port_; }

    struct Visitor {
        int fd; // close-on-exec; the caller's to close
        std::string host;
        uint16_t port;
    };
    // Somebody who has connected, without waiting.
    std::optional<Visitor> accept();

private:
    Listener(int fd, uint16_t port) : fd_(fd), port_(port) {}
    int fd_ = -1;
    uint16_t port_ = 0;
};

} // namespace tamarin
