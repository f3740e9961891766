// A dealer for tests: one listening socket on the loopback, one player, everything by hand.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace tamarin::test {

class LoopbackDealer {
public:
    static constexpr int patience = 10000; // milliseconds; a test that waits longer has failed

    LoopbackDealer() {
        listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (listener_ < 0 || bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            listen(listener_, 8) != 0 ||
            getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error("no listening socket");
        port_ = ntohs(address.sin_port);
    }
    LoopbackDealer(const LoopbackDealer&) = delete;
    LoopbackDealer& operator=(const LoopbackDealer&) = delete;
    ~LoopbackDealer() {
        hangUp();
        stopListening();
    }

    unsigned short port() const { return port_; }

    // A port nobody listens on.
    void stopListening() {
        if (listener_ >= 0) {
            close(listener_);
            listener_ = -1;
        }
    }

    bool accept() {
        pollfd waiting{listener_, POLLIN, 0};
        if (poll(&waiting, 1, patience) != 1)
            return false;
        player_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const int on = 1;
        setsockopt(player_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        return player_ >= 0;
    }

    void send(const std::string& text) {
        size_t sent = 0;
        while (sent < text.size()) {
            const ssize_t n = ::send(player_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (n <= 0)
                return;
            sent += static_cast<size_t>(n);
        }
    }

    // The next line with its end, or what there was when the stream ended or nothing more came.
    std::string readLine(int timeout = patience) {
        for (;;) {
            const size_t end = received_.find('\n');
            if (end != std::string::npos) {
                std::string line = received_.substr(0, end + 1);
                received_.erase(0, end + 1);
                return line;
            }
            if (player_ < 0)
                return {};
            pollfd waiting{player_, POLLIN, 0};
            char buffer[4096];
            ssize_t n = 0;
            if (poll(&waiting, 1, timeout) != 1 ||
                (n = recv(player_, buffer, sizeof buffer, 0)) <= 0) {
                std::string rest;
                rest.swap(received_);
                return rest;
            }
            received_.append(buffer, static_cast<size_t>(n));
        }
    }

    // Everything up to the end of the stream.
    std::string readAll() {
        std::string all;
        for (std::string line = readLine(); !line.empty(); line = readLine())
            all += line;
        return all;
    }

    void hangUp() {
        if (player_ >= 0) {
            close(player_);
            player_ = -1;
        }
    }

    // Nothing more will be sent; answers can still be read.
    void halfClose() { shutdown(player_, SHUT_WR); }

    // Closes with a reset instead of an orderly end.
    void reset() {
        const linger now{1, 0};
        setsockopt(player_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        hangUp();
    }

private:
    int listener_ = -1;
    int player_ = -1;
    unsigned short port_ = 0;
    std::string received_;
};

} // namespace tamarin::test
