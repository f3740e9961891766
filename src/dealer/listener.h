// Ports on which the dealer waits for its players.
#pragma once

#include "support/result.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tamarin {

class Listener {
public:
    // A free port that only this machine can reach.
    static Result<Listener> local();
    // The given port on all interfaces; 0 picks one.
    static Result<Listener> everywhere(uint16_t port);

    Listener(Listener&& other) noexcept;
    Listener& operator=(Listener&& other) noexcept;
    ~Listener();

    int fd() const { return fd_; }
    uint16_t port() const { return port_; }

    struct Visitor {
        int fd; // close-on-exec; the caller's to close
        std::string address;
    };
    // Somebody who has connected, without waiting.
    std::optional<Visitor> accept();

private:
    Listener(int fd, uint16_t port) : fd_(fd), port_(port) {}
    int fd_ = -1;
    uint16_t port_ = 0;
};

} // namespace tamarin
