// Line-oriented socket input and output over POSIX TCP.
#pragma once

#include <cstdint>
#include <cstdio>
#include <sys/socket.h>
#include <sys/types.h>

namespace tamarin {

// The socket calls that carry a match, one virtual function each, with the return values and errno
// of the calls they stand for. The base class makes the real calls; a test derives from it and
// fails the k-th. send() never raises SIGPIPE.
class SocketCalls {
public:
    virtual ~SocketCalls() = default;
    virtual int connect(int fd, const sockaddr* address, socklen_t length);
    virtual ssize_t receive(int fd, void* buffer, size_t size);
    virtual ssize_t send(int fd, const void* buffer, size_t size);
    // Waits until fd can be read; timeoutMicros < 0 waits without limit. 1 ready, 0 timed out, -1.
    virtual int waitReadable(int fd, int64_t timeoutMicros);
    virtual int waitWritable(int fd, int64_t timeoutMicros);
    virtual int64_t nowMicros(); // steady
};

// The real calls; lives for the whole process.
SocketCalls& systemSockets();

// A buffered text stream over a connected socket, mode "r" or "w". Interrupted calls and short
// writes are retried, and a call that would block waits. The stream does not own the descriptor:
// closing it leaves the socket open. Null, with errno, when memory is exhausted or fd is invalid.
FILE* openSocketStream(int fd, const char* mode, SocketCalls& calls = systemSockets());

} // namespace tamarin

// A connected IPv4 stream socket, or -1 after one line on standard error:
// "ERROR: could not look up address for HOST\n", "ERROR: could not open socket\n" or
// "ERROR: could not connect to HOST:PORT\n".
int connectTo(const char* host, unsigned short port);
int connectTo(const char* host, unsigned short port, tamarin::SocketCalls& calls);

// A listening IPv4 socket on all interfaces (backlog 8), or -1. When *port is 0, up to eleven
// random ports of 1024..65535 are tried and the one taken is written back.
int getListenSocket(unsigned short* port);

// A line reader over one socket; owns the descriptor. One thread at a time.
struct ReadBuf {
    int32_t fd;
    int32_t position; // of the next unread byte in buffer
    int32_t count;    // valid bytes in buffer
    char buffer[4096];
};

// A reader for fd with an empty buffer; null when memory is exhausted.
ReadBuf* createReadBuf(int fd);

// Closes the descriptor and frees the reader.
void destroyReadBuf(ReadBuf* rb);

// Reads one line, storing at most maxLen - 1 characters (the newline included) and a terminator.
// Returns the number stored, 0 at end of stream with nothing read, -1 on time-out or error. The
// whole line must arrive within timeoutMicros; negative waits without limit, 0 does not wait.
ssize_t getLine(ReadBuf* rb, size_t maxLen, char* line, int64_t timeoutMicros);
ssize_t getLine(ReadBuf* rb, size_t maxLen, char* line, int64_t timeoutMicros,
                tamarin::SocketCalls& calls);
