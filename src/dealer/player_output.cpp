#include "dealer/player_output.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

PlayerOutput::PlayerOutput(int fd, std::string prefix, FILE* shown, const Clock& clock)
    : fd_(fd), prefix_(std::move(prefix)), shown_(shown), clock_(&clock), allowedAt_(clock.now()),
      secondBegan_(allowedAt_) {}

PlayerOutput::PlayerOutput(PlayerOutput&& other) noexcept {
    *this = std::move(other);
}

PlayerOutput& PlayerOutput::operator=(PlayerOutput&& other) noexcept {
    if (this != &other) {
        close();
        fd_ = std::exchange(other.fd_, -1);
        prefix_ = std::move(other.prefix_);
        shown_ = other.shown_;
        clock_ = other.clock_;
        partial_ = std::move(other.partial_);
        lines_ = std::move(other.lines_);
        allowance_ = other.allowance_;
        allowedAt_ = other.allowedAt_;
        secondBegan_ = other.secondBegan_;
        shownInSecond_ = other.shownInSecond_;
        passedOver_ = std::exchange(other.passedOver_, 0);
    }
    return *this;
}

PlayerOutput::~PlayerOutput() {
    close();
}

void PlayerOutput::close() {
    tellPassedOver();
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
}

double PlayerOutput::allowanceNow() const {
    const double earned = seconds(clock_->now() - allowedAt_) * double{bytesASecond};
    return std::min(allowance_ + earned, double{burst});
}

int PlayerOutput::fdToPoll() const {
    // The clock is asked only of a player that has printed nearly all it may.
    if (fd_ < 0 || allowance_ >= piece)
        return fd_;
    return allowanceNow() >= piece ? fd_ : -1;
}

void PlayerOutput::take() {
    if (fd_ < 0)
        return;
    allowance_ = allowanceNow();
    allowedAt_ = clock_->now();
    if (allowance_ >= piece)
        allowance_ -= static_cast<double>(read(piece));
}

void PlayerOutput::takeRest() {
    // What is printed meanwhile is left, or a player that never stops would never be done with.
    int waiting = 0;
    if (fd_ >= 0 && ::ioctl(fd_, FIONREAD, &waiting) == 0)
        read(static_cast<size_t>(std::max(waiting, 0)));
    if (fd_ >= 0)
        read(1); // finds the end, if it is that
}

// Reads until atMost bytes have come, or there are no more for now.
size_t PlayerOutput::read(size_t atMost) {
    char buffer[4096];
    size_t done = 0;
    while (fd_ >= 0 && done < atMost) {
        const ssize_t count = ::read(fd_, buffer, std::min(sizeof buffer, atMost - done));
        if (count > 0) {
            add(buffer, static_cast<size_t>(count));
            done += static_cast<size_t>(count);
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else if (count < 0 && errno == EAGAIN) {
            break;
        } else {
            if (!partial_.empty())
                addLine(std::exchange(partial_, {}));
            close();
        }
    }
    return done;
}

void PlayerOutput::add(const char* data, size_t size) {
    for (const char* const end = data + size; data < end;) {
        const auto* newline =
            static_cast<const char*>(std::memchr(data, '\n', static_cast<size_t>(end - data)));
        const auto length = static_cast<size_t>((newline ? newline : end) - data);
        partial_.append(data, std::min(length, longestLine - partial_.size()));
        data += length;
        if (newline) {
            ++data;
            addLine(std::exchange(partial_, {}));
        }
    }
}

void PlayerOutput::addLine(std::string line) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
        line.pop_back();
    if (!prefix_.empty())
        show(line);
    if (line.empty())
        return;
    lines_.push_back(std::move(line));
    if (lines_.size() > linesKept)
        lines_.pop_front();
}

void PlayerOutput::show(const std::string& line) {
    const TimePoint now = clock_->now();
    if (now - secondBegan_ >= std::chrono::seconds(1)) {
        tellPassedOver();
        secondBegan_ = now;
        shownInSecond_ = 0;
    }
    if (++shownInSecond_ > linesShownASecond)
        ++passedOver_;
    else
        std::fprintf(shown_, "%s%s\n", prefix_.c_str(), line.c_str());
}

void PlayerOutput::tellPassedOver() {
    if (passedOver_ > 0)
        std::fprintf(shown_, "%s(further output passed over: %" PRIu64 " lines)\n", prefix_.c_str(),
                     passedOver_);
    passedOver_ = 0;
}

} // namespace tamarin
