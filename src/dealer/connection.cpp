#include "dealer/connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

Connection::Connection(int fd, SocketCalls& calls) : fd_(fd), calls_(&calls) {
    fcntl(fd_, F_SETFL, fcntl(fd_, F_GETFL) | O_NONBLOCK);
    // A state is one small write that somebody waits for. Fails on a socket that is not TCP, where
    // there is nothing to switch off.
    const int on = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // Notices a peer whose machine has gone.
    setsockopt(fd_, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
}

Connection::Connection(Connection&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)), calls_(other.calls_), input_(std::move(other.input_)),
      taken_(other.taken_), scanned_(other.scanned_), output_(std::move(other.output_)),
      holding_(other.holding_), broken_(other.broken_), ended_(other.ended_),
      ending_(std::move(other.ending_)) {}

Connection& Connection::operator=(Connection&& other) noexcept {
    if (this != &other) {
        close();
        fd_ = std::exchange(other.fd_, -1);
        calls_ = other.calls_;
        input_ = std::move(other.input_);
        taken_ = other.taken_;
        scanned_ = other.scanned_;
        output_ = std::move(other.output_);
        holding_ = other.holding_;
        broken_ = other.broken_;
        ended_ = other.ended_;
        ending_ = std::move(other.ending_);
    }
    return *this;
}

Connection::~Connection() {
    close();
}

void Connection::close() {
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
}

void Connection::end(std::string why) {
    if (!ended_)
        ending_ = std::move(why);
    ended_ = true;
}

void Connection::send(std::string_view text) {
    if (broken_)
        return;
    output_ += text;
    flush();
    if (output_.size() > outputLimit) {
        broken_ = true;
        end("does not read what it is sent");
    }
}

void Connection::hold(std::string_view text) {
    constexpr size_t worthSending = 16384;
    if (broken_)
        return;
    holding_ |= output_.empty();
    output_ += text;
    if (output_.size() >= worthSending)
        send({});
}

void Connection::flush() {
    holding_ = false;
    size_t sent = 0;
    while (sent < output_.size() && !broken_) {
        const ssize_t count = calls_->send(fd_, output_.data() + sent, output_.size() - sent);
        if (count >= 0)
            sent += static_cast<size_t>(count);
        else if (errno == EAGAIN || errno == EWOULDBLOCK)
            break;
        else if (errno != EINTR)
            // The reply to an earlier state may still be on its way in, so only sending ends here;
            // receive() finds out the rest.
            broken_ = true;
    }
    if (broken_)
        output_.clear();
    else
        output_.erase(0, sent);
}

void Connection::receive() {
    char buffer[4096];
    while (wantsToRead()) {
        const ssize_t count = calls_->receive(fd_, buffer, sizeof buffer);
        if (count > 0) {
            input_.append(buffer, static_cast<size_t>(count));
            if (static_cast<size_t>(count) < sizeof buffer)
                return;
        } else if (count == 0) {
            end("closed the connection");
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return;
        } else if (errno != EINTR) {
            end(std::strerror(errno));
        }
    }
}

bool Connection::nextLine(std::string& line) {
    const size_t newline = input_.find('\n', scanned_);
    if (newline == std::string::npos) {
        input_.erase(0, taken_);
        taken_ = 0;
        // Of a line that is too long the head stays and the rest is thrown away as it comes.
        if (input_.size() > longestLine + 1)
            input_.resize(longestLine + 1);
        scanned_ = input_.size();
        return false;
    }
    size_t length = newline - taken_;
    if (length > 0 && input_[newline - 1] == '\r')
        --length;
    line.assign(input_, taken_, std::min(length, longestLine));
    taken_ = scanned_ = newline + 1;
    return true;
}

void Connection::finishSending() {
    flush();
    ::shutdown(fd_, SHUT_WR);
}

} // namespace tamarin
