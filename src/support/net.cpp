#include "support/net.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <new>
#include <poll.h>
#include <unistd.h>

namespace tamarin {
namespace {

int waitFor(int fd, short events, int64_t timeoutMicros) {
    pollfd waiting{fd, events, 0};
    const timespec limit{static_cast<time_t>(timeoutMicros / 1'000'000),
                         static_cast<long>(timeoutMicros % 1'000'000 * 1000)};
    const int ready = ::ppoll(&waiting, 1, timeoutMicros < 0 ? nullptr : &limit, nullptr);
    if (ready > 0 && (waiting.revents & POLLNVAL)) {
        errno = EBADF;
        return -1;
    }
    return ready; // a socket in error or hung up counts as ready: the next call will tell
}

} // namespace

int SocketCalls::connect(int fd, const sockaddr* address, socklen_t length) {
    return ::connect(fd, address, length);
}
ssize_t SocketCalls::receive(int fd, void* buffer, size_t size) {
    // read and not recv, so that a pipe or a file can stand for a socket.
    return ::read(fd, buffer, size);
}
ssize_t SocketCalls::send(int fd, const void* buffer, size_t size) {
    const ssize_t sent = ::send(fd, buffer, size, MSG_NOSIGNAL);
    return sent < 0 && errno == ENOTSOCK ? ::write(fd, buffer, size) : sent;
}
int SocketCalls::waitReadable(int fd, int64_t timeoutMicros) {
    return waitFor(fd, POLLIN, timeoutMicros);
}
int SocketCalls::waitWritable(int fd, int64_t timeoutMicros) {
    return waitFor(fd, POLLOUT, timeoutMicros);
}
int64_t SocketCalls::nowMicros() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

SocketCalls& systemSockets() {
    static SocketCalls calls;
    return calls;
}

namespace {

bool wouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

struct Stream {
    int fd;
    SocketCalls& calls;
};

ssize_t streamRead(void* cookie, char* buffer, size_t size) {
    const Stream& stream = *static_cast<Stream*>(cookie);
    for (;;) {
        const ssize_t got = stream.calls.receive(stream.fd, buffer, size);
        if (got >= 0)
            return got;
        if (wouldBlock()) {
            if (stream.calls.waitReadable(stream.fd, -1) < 0 && errno != EINTR)
                return -1;
        } else if (errno != EINTR) {
            return -1;
        }
    }
}

// All or nothing for the caller: the C library takes fewer bytes than asked for as an error.
ssize_t streamWrite(void* cookie, const char* buffer, size_t size) {
    const Stream& stream = *static_cast<Stream*>(cookie);
    size_t done = 0;
    while (done < size) {
        const ssize_t sent = stream.calls.send(stream.fd, buffer + done, size - done);
        if (sent >= 0) {
            done += static_cast<size_t>(sent);
        } else if (wouldBlock()) {
            if (stream.calls.waitWritable(stream.fd, -1) < 0 && errno != EINTR)
                return 0;
        } else if (errno != EINTR) {
            return 0;
        }
    }
    return static_cast<ssize_t>(done);
}

int streamClose(void* cookie) {
    delete static_cast<Stream*>(cookie);
    return 0;
}

} // namespace

FILE* openSocketStream(int fd, const char* mode, SocketCalls& calls) {
    if (::fcntl(fd, F_GETFD) < 0)
        return nullptr;
    auto* stream = new (std::nothrow) Stream{fd, calls};
    if (!stream) {
        errno = ENOMEM;
        return nullptr;
    }
    FILE* file = ::fopencookie(stream, mode, {streamRead, streamWrite, nullptr, streamClose});
    if (!file)
        delete stream;
    return file;
}

} // namespace tamarin

namespace {

// Whether fd got connected. An interrupted connect goes on in the background: asking again waits
// for its end, or says that it is under way or done.
bool connectFully(int fd, const sockaddr_in& address, tamarin::SocketCalls& calls) {
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    constexpr int maxBusyRetries = 20; // of 10 ms: all local ports taken for the moment
    for (int busy = 0;;) {
        if (calls.connect(fd, generic, sizeof address) == 0 || errno == EISCONN)
            return true;
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN && busy++ < maxBusyRetries) {
            const timespec shortly{0, 10'000'000};
            ::nanosleep(&shortly, nullptr);
            continue;
        }
        if (errno != EALREADY && errno != EINPROGRESS)
            return false;
        if (calls.waitWritable(fd, -1) < 0 && errno != EINTR)
            return false;
        int outcome = 0;
        socklen_t size = sizeof outcome;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &outcome, &size) != 0 || outcome != 0)
            return false;
    }
}

// The time one call of getLine may take. It runs from the first wait.
class Deadline {
public:
    Deadline(int64_t timeoutMicros, tamarin::SocketCalls& calls)
        : timeout_(timeoutMicros), calls_(calls) {}

    bool limited() const { return timeout_ >= 0; }

    // What is left, negative when it is over. A time-out of 0 never is: it takes all that is there.
    int64_t remaining() {
        if (timeout_ <= 0)
            return timeout_;
        const int64_t now = calls_.nowMicros();
        if (start_ < 0)
            start_ = now;
        return timeout_ - (now - start_);
    }

private:
    int64_t timeout_;
    tamarin::SocketCalls& calls_;
    int64_t start_ = -1;
};

// Waits as long as the deadline lets it; whether there is something to read.
bool waitForMore(int fd, Deadline& deadline, tamarin::SocketCalls& calls) {
    for (;;) {
        const int64_t remaining = deadline.remaining();
        if (deadline.limited() && remaining < 0)
            return false;
        const int ready = calls.waitReadable(fd, remaining);
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

// Fills the used-up buffer: 1 filled, 0 end of stream, -1 time-out or error.
int refill(ReadBuf* rb, Deadline& deadline, tamarin::SocketCalls& calls) {
    bool wait = deadline.limited();
    for (;;) {
        if (wait && !waitForMore(rb->fd, deadline, calls))
            return -1;
        const ssize_t got = calls.receive(rb->fd, rb->buffer, sizeof rb->buffer);
        rb->position = 0;
        rb->count = got > 0 ? static_cast<int32_t>(got) : 0;
        if (got >= 0)
            return got > 0;
        if (errno != EINTR && !tamarin::wouldBlock())
            return -1;
        wait = wait || tamarin::wouldBlock();
    }
}

} // namespace

int connectTo(const char* host, unsigned short port) {
    return connectTo(host, port, tamarin::systemSockets());
}

int connectTo(const char* host, unsigned short port, tamarin::SocketCalls& calls) {
    const hostent* entry = ::gethostbyname(host);
    if (!entry || entry->h_addrtype != AF_INET || !entry->h_addr_list[0]) {
        std::fprintf(stderr, "ERROR: could not look up address for %s\n", host);
        return -1;
    }
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        std::fprintf(stderr, "ERROR: could not open socket\n");
        return -1;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    std::memcpy(&address.sin_addr, entry->h_addr_list[0],
                std::min(static_cast<size_t>(entry->h_length), sizeof address.sin_addr));
    if (!connectFully(fd, address, calls)) {
        std::fprintf(stderr, "ERROR: could not connect to %s:%u\n", host, unsigned{port});
        return -1; // the socket deliberately stays open
    }
    return fd;
}

int getListenSocket(unsigned short* port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    const int yes = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);

    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    const auto bindTo = [&](unsigned short number) {
        address.sin_port = htons(number);
        return ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    };
    bool bound = false;
    if (*port != 0) {
        bound = bindTo(*port);
    } else {
        constexpr int attempts = 11;
        for (int attempt = 0; attempt < attempts && !bound; ++attempt) {
            *port = static_cast<unsigned short>(::random() % 64512 + 1024);
            bound = bindTo(*port);
        }
    }
    if (bound && ::listen(fd, 8) == 0)
        return fd;
    const int cause = errno;
    ::close(fd);
    errno = cause;
    return -1;
}

ReadBuf* createReadBuf(int fd) {
    auto* rb = static_cast<ReadBuf*>(std::malloc(sizeof(ReadBuf)));
    if (!rb)
        return nullptr;
    rb->fd = fd;
    rb->position = 0;
    rb->count = 0;
    return rb;
}

void destroyReadBuf(ReadBuf* rb) {
    if (!rb)
        return;
    ::close(rb->fd);
    std::free(rb);
}

ssize_t getLine(ReadBuf* rb, size_t maxLen, char* line, int64_t timeoutMicros) {
    return getLine(rb, maxLen, line, timeoutMicros, tamarin::systemSockets());
}

ssize_t getLine(ReadBuf* rb, size_t maxLen, char* line, int64_t timeoutMicros,
                tamarin::SocketCalls& calls) {
    if (maxLen == 0)
        return 0;
    Deadline deadline(timeoutMicros, calls);
    size_t length = 0;
    while (length < maxLen - 1) {
        if (rb->position >= rb->count) {
            const int filled = refill(rb, deadline, calls);
            if (filled == 0)
                break;
            if (filled < 0) {
                line[length] = '\0';
                return -1;
            }
        }
        // As much as the buffer holds of this line.
        const char* from = rb->buffer + rb->position;
        const size_t room =
            std::min(maxLen - 1 - length, static_cast<size_t>(rb->count - rb->position));
        const void* newline = std::memchr(from, '\n', room);
        const size_t size =
            newline ? static_cast<size_t>(static_cast<const char*>(newline) - from) + 1 : room;
        std::memcpy(line + length, from, size);
        length += size;
        rb->position += static_cast<int32_t>(size);
        if (newline)
            break;
    }
    line[length] = '\0';
    return static_cast<ssize_t>(length);
}
