// A connected socket as the sockets' library wants a stream, where every call ends by a deadline.
#pragma once

#include "support/clock.h"

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/role.hpp>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tamarin {

// Does not own the descriptor. One thread.
class DeadlineStream {
public:
    using executor_type = boost::asio::io_context::executor_type;
    using ErrorCode = boost::system::error_code;

    DeadlineStream(int fd, boost::asio::io_context& unused) : fd_(fd), unused_(&unused) {}

    // Nothing runs there: all calls are made and ended in the caller's thread.
    executor_type get_executor() { return unused_->get_executor(); }

    int fd() const { return fd_; }
    void setDeadline(TimePoint deadline) { deadline_ = deadline; }
    // From now on a call reads a byte at a time, so that whoever reads messages never takes more
    // than the one it reads, and waiting() tells whether there is another.
    void readBytewise() { bytewise_ = true; }
    bool waiting() const { return taken_ < filled_; }

    template <class Buffers>
    size_t read_some(const Buffers& buffers, ErrorCode& error) {
        const boost::asio::mutable_buffer target = firstOf<boost::asio::mutable_buffer>(buffers);
        if (target.size() == 0)
            return 0;
        if (!waiting() && !fill(error))
            return 0;
        const size_t size = std::min(bytewise_ ? size_t{1} : target.size(), filled_ - taken_);
        std::memcpy(target.data(), kept_.data() + taken_, size);
        taken_ += size;
        return size;
    }
    template <class Buffers>
    size_t write_some(const Buffers& buffers, ErrorCode& error) {
        const boost::asio::const_buffer source = firstOf<boost::asio::const_buffer>(buffers);
        if (source.size() == 0)
            return 0;
        return send(static_cast<const char*>(source.data()), source.size(), error);
    }
    // What the library asks for beside these and nobody here calls.
    template <class Buffers>
    size_t read_some(const Buffers& buffers) {
        ErrorCode error;
        return read_some(buffers, error);
    }
    template <class Buffers>
    size_t write_some(const Buffers& buffers) {
        ErrorCode error;
        return write_some(buffers, error);
    }

private:
    template <class Buffer, class Buffers>
    static Buffer firstOf(const Buffers& buffers) {
        const auto end = boost::asio::buffer_sequence_end(buffers);
        for (auto at = boost::asio::buffer_sequence_begin(buffers); at != end; ++at)
            if (const Buffer buffer(*at); buffer.size() > 0)
                return buffer;
        return Buffer();
    }

    bool wait(short events, ErrorCode& error) const {
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline_ - steadyClock().now());
            if (left.count() <= 0) {
                error = boost::beast::error::timeout;
                return false;
            }
            pollfd waiting{fd_, events, 0};
            const int ready = ::poll(&waiting, 1, static_cast<int>(left.count()) + 1);
            if (ready > 0)
                return true;
            if (ready < 0 && errno != EINTR) {
                error = ErrorCode(errno, boost::system::system_category());
                return false;
            }
        }
    }
    bool fill(ErrorCode& error) {
        for (;;) {
            if (!wait(POLLIN, error))
                return false;
            const ssize_t count = ::recv(fd_, kept_.data(), kept_.size(), MSG_DONTWAIT);
            if (count > 0) {
                taken_ = 0;
                filled_ = static_cast<size_t>(count);
                return true;
            }
            if (count == 0)
                error = boost::asio::error::eof;
            else if (errno == EINTR || errno == EAGAIN)
                continue;
            else
                error = ErrorCode(errno, boost::system::system_category());
            return false;
        }
    }
    size_t send(const char* data, size_t size, ErrorCode& error) const {
        for (;;) {
            if (!wait(POLLOUT, error))
                return 0;
            const ssize_t count = ::send(fd_, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count >= 0)
                return static_cast<size_t>(count);
            if (errno != EINTR && errno != EAGAIN) {
                error = ErrorCode(errno, boost::system::system_category());
                return 0;
            }
        }
    }

    int fd_;
    boost::asio::io_context* unused_;
    TimePoint deadline_{};
    bool bytewise_ = false;
    std::array<char, 4096> kept_{};
    size_t taken_ = 0;
    size_t filled_ = 0;
};

// Called by the library at the end of a WebSocket.
inline void teardown(boost::beast::role_type, DeadlineStream& stream,
                     DeadlineStream::ErrorCode& error) {
    ::shutdown(stream.fd(), SHUT_RDWR);
    error = {};
}

} // namespace tamarin
