// Socket calls that go wrong on purpose, for the tests of whatever speaks over the network.
//
// They make the real calls and add chosen failures, receives and sends in small pieces, and a clock
// that a test can move.
#pragma once

#include "support/net.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace tamarin::test {

class FaultySockets : public SocketCalls {
public:
    // Instead of an errno: the call transfers one byte only (waits and connects go well).
    static constexpr int shortTransfer = -1;

    // The k-th call (counted from 1) fails with error, and with forEver every later one, too. A
    // failed call has done nothing.
    void failAt(size_t k, int error, bool forEver = false) {
        failAt_ = k;
        error_ = error;
        forEver_ = forEver;
    }
    // Each receive or send transfers at most what these give, asked anew each time.
    std::function<size_t()> receiveAtMost;
    std::function<size_t()> sendAtMost;
    // Called with the call's name before each; a test moves the clock or feeds the other end.
    std::function<void(const std::string&)> beforeCall;

    void advanceClock(int64_t micros) { clockOffset_ += micros; }
    size_t calls() const { return log_.size(); }
    const std::vector<std::string>& log() const { return log_; }
    bool metFault() const { return metFault_; }

    int connect(int fd, const sockaddr* address, socklen_t length) override {
        return begin("connect") > 0 ? -1 : SocketCalls::connect(fd, address, length);
    }
    ssize_t receive(int fd, void* buffer, size_t size) override {
        return transfer(begin("receive"), size, receiveAtMost,
                        [&](size_t most) { return SocketCalls::receive(fd, buffer, most); });
    }
    ssize_t send(int fd, const void* buffer, size_t size) override {
        return transfer(begin("send"), size, sendAtMost,
                        [&](size_t most) { return SocketCalls::send(fd, buffer, most); });
    }
    int waitReadable(int fd, int64_t timeoutMicros) override {
        return begin("waitReadable") > 0 ? -1 : SocketCalls::waitReadable(fd, timeoutMicros);
    }
    int waitWritable(int fd, int64_t timeoutMicros) override {
        return begin("waitWritable") > 0 ? -1 : SocketCalls::waitWritable(fd, timeoutMicros);
    }
    int64_t nowMicros() override { return SocketCalls::nowMicros() + clockOffset_; }

private:
    // The fault of this call: 0 none, an errno (also set), or shortTransfer.
    int begin(const char* name) {
        log_.emplace_back(name);
        if (beforeCall)
            beforeCall(name);
        const size_t k = log_.size();
        if (failAt_ == 0 || !(k == failAt_ || (forEver_ && k > failAt_)))
            return 0;
        metFault_ = true;
        if (error_ > 0)
            errno = error_;
        return error_;
    }
    template <class Call>
    static ssize_t transfer(int fault, size_t size, const std::function<size_t()>& atMost,
                            Call call) {
        if (fault > 0)
            return -1;
        if (fault == shortTransfer)
            size = std::min<size_t>(size, 1);
        if (atMost)
            size = std::min(size, std::max<size_t>(1, atMost()));
        return call(size);
    }

    size_t failAt_ = 0;
    int error_ = 0;
    bool forEver_ = false;
    bool metFault_ = false;
    int64_t clockOffset_ = 0;
    std::vector<std::string> log_;
};

} // namespace tamarin::test
