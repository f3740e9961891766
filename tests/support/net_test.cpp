#include "support/net.h"

#include "support/child_process.h"
#include "support/faulty_sockets.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {
namespace {

// Two connected sockets; the far end belongs to the test.
class SocketPair {
public:
    SocketPair() {
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        near_ = ends[0];
        far_ = ends[1];
    }
    ~SocketPair() {
        if (near_ >= 0)
            close(near_);
        closeFar();
    }
    int near() const { return near_; }
    int far() const { return far_; }
    int releaseNear() { return std::exchange(near_, -1); }
    void put(const std::string& text) {
        EXPECT_EQ(write(far_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void closeFar() {
        if (far_ >= 0)
            close(std::exchange(far_, -1));
    }
    std::string drainFar(size_t size) {
        std::string text(size, '\0');
        size_t used = 0;
        while (used < size) {
            const ssize_t got = read(far_, text.data() + used, size - used);
            if (got <= 0)
                break;
            used += static_cast<size_t>(got);
        }
        text.resize(used);
        return text;
    }

private:
    int near_;
    int far_;
};

// A reader on one end, with the calls as members for short tests.
class Reader {
public:
    explicit Reader(SocketPair& pair, SocketCalls& calls = systemSockets())
        : rb_(createReadBuf(pair.releaseNear())), calls_(calls) {}
    ~Reader() { destroyReadBuf(rb_); }

    ssize_t get(size_t maxLen = 1000, int64_t timeout = -1) {
        line.assign(maxLen, '#');
        const ssize_t size = getLine(rb_, maxLen, line.data(), timeout, calls_);
        if (size >= 0 && maxLen > 0) {
            EXPECT_EQ(line[static_cast<size_t>(size)], '\0');
            line.resize(static_cast<size_t>(size));
        }
        return size;
    }
    ReadBuf* buffer() { return rb_; }

    std::string line;

private:
    ReadBuf* rb_;
    SocketCalls& calls_;
};

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) >= 0;
}

// ---- getLine

TEST(GetLine, ReturnsLineAfterLine) {
    SocketPair pair;
    FaultySockets calls;
    pair.put("first\nsecond\r\n\nrest");
    pair.closeFar();
    Reader reader(pair, calls);
    EXPECT_EQ(reader.get(), 6);
    EXPECT_EQ(reader.line, "first\n");
    const size_t callsBefore = calls.calls();
    EXPECT_EQ(reader.get(1000, 0), 8); // in the buffer already: neither wait nor read
    EXPECT_EQ(reader.line, "second\r\n");
    EXPECT_EQ(reader.get(), 1);
    EXPECT_EQ(calls.calls(), callsBefore);
    EXPECT_EQ(reader.get(), 4);
    EXPECT_EQ(reader.line, "rest"); // the end of the stream ends the line
    EXPECT_EQ(reader.get(), 0);
    EXPECT_EQ(reader.line, "");
    EXPECT_EQ(reader.get(), 0);
}

TEST(GetLine, StoresNoMoreThanThereIsRoom) {
    SocketPair pair;
    pair.put("abcdef\nx\n");
    Reader reader(pair);
    EXPECT_EQ(reader.get(4), 3);
    EXPECT_EQ(reader.line, "abc");
    EXPECT_EQ(reader.get(4), 3);
    EXPECT_EQ(reader.line, "def");
    EXPECT_EQ(reader.get(4), 1);
    EXPECT_EQ(reader.line, "\n");
    EXPECT_EQ(reader.get(3), 2);
    EXPECT_EQ(reader.line, "x\n");
}

TEST(GetLine, WithRoomForTheTerminatorAloneReadsNothing) {
    SocketPair pair;
    FaultySockets calls;
    pair.put("abc\n");
    Reader reader(pair, calls);
    EXPECT_EQ(reader.get(1), 0);
    EXPECT_EQ(reader.line, "");
    EXPECT_EQ(reader.get(0), 0);
    EXPECT_EQ(calls.calls(), 0u);
    EXPECT_EQ(reader.get(), 4);
}

TEST(GetLine, KeepsZeroBytesAndAnyOthers) {
    SocketPair pair;
    const std::string line("a\0\xff\r\0\n", 6);
    pair.put(line);
    Reader reader(pair);
    EXPECT_EQ(reader.get(), 6);
    EXPECT_EQ(reader.line, line);
}

TEST(GetLine, ReadsLinesLongerThanItsBuffer) {
    SocketPair pair;
    const std::string line = std::string(20'000, 'x') + "\n";
    std::thread writer([&] { pair.put(line + "next\n"); });
    Reader reader(pair);
    EXPECT_EQ(reader.get(30'000, 10'000'000), 20'001);
    EXPECT_EQ(reader.line, line);
    EXPECT_EQ(reader.get(30'000, 10'000'000), 5);
    writer.join();
}

TEST(GetLine, DoesNotWaitWithATimeOutOfZero) {
    SocketPair pair;
    Reader reader(pair);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(reader.get(1000, 0), -1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    pair.put("now\n");
    EXPECT_EQ(reader.get(1000, 0), 4);
}

TEST(GetLine, WithoutATimeOutWaitsAsLongAsItTakes) {
    SocketPair pair;
    Reader reader(pair);
    std::thread writer([&] {
        usleep(50'000);
        pair.put("la");
        usleep(50'000);
        pair.put("te\n");
    });
    EXPECT_EQ(reader.get(), 5);
    EXPECT_EQ(reader.line, "late\n");
    writer.join();
}

TEST(GetLine, GivesUpAfterTheTimeOut) {
    SocketPair pair;
    Reader reader(pair);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(reader.get(1000, 50'000), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

// A dealer that drips one character a second must not hold the line for ever: the time-out is for
// the whole line and not for each piece.
TEST(GetLine, CountsTheTimeOfTheWholeLine) {
    SocketPair pair;
    FaultySockets calls;
    int waits = 0;
    calls.beforeCall = [&](const std::string& name) {
        if (name != "waitReadable")
            return;
        calls.advanceClock(400'000'000);
        if (++waits < 10)
            pair.put("x");
        else
            pair.closeFar(); // a reader without a sense of time must come to an end, too
    };
    Reader reader(pair, calls);
    EXPECT_EQ(reader.get(1000, 1'000'000'000), -1);
    EXPECT_EQ(waits, 3);
}

TEST(GetLine, ReportsAnError) {
    SocketPair pair;
    FaultySockets calls;
    calls.failAt(1, ECONNRESET);
    Reader reader(pair, calls);
    EXPECT_EQ(reader.get(), -1);
    EXPECT_EQ(reader.buffer()->count, 0);
    pair.put("again\n");
    EXPECT_EQ(reader.get(), 6);
}

TEST(GetLine, WaitsOnADescriptorThatDoesNotBlock) {
    SocketPair pair;
    fcntl(pair.near(), F_SETFL, O_NONBLOCK);
    Reader reader(pair);
    std::thread writer([&] {
        usleep(20'000);
        pair.put("text\n");
    });
    EXPECT_EQ(reader.get(), 5);
    writer.join();
}

// Whatever the pieces, the lines are those of the text.
RC_GTEST_PROP(GetLine, DoesNotDependOnThePieces, (unsigned seed)) {
    const auto text =
        *rc::gen::container<std::string>(rc::gen::elementOf(std::string("abcdefghijk\r\n\n:")));
    const auto maxLen = *rc::gen::inRange<size_t>(2, 12);
    const auto atMost = *rc::gen::inRange<size_t>(1, 9);
    const int64_t timeout = *rc::gen::elementOf(std::vector<int64_t>{-1, 10'000'000});
    std::vector<std::string> expected;
    for (size_t at = 0; at < text.size();) {
        const size_t newline = std::min(text.find('\n', at), text.size() - 1);
        const size_t size = std::min(newline + 1 - at, maxLen - 1);
        expected.push_back(text.substr(at, size));
        at += size;
    }
    SocketPair pair;
    FaultySockets calls;
    std::mt19937 random(seed);
    calls.receiveAtMost = [&] { return random() % atMost; };
    pair.put(text);
    pair.closeFar();
    Reader reader(pair, calls);
    std::vector<std::string> lines;
    while (reader.get(maxLen, timeout) > 0)
        lines.push_back(reader.line);
    RC_ASSERT(lines == expected);
}

// Interrupted, empty-handed and short calls at any place leave the lines as they are; the others
// end the reading in good order.
TEST(GetLine, SurvivesAFaultOfEachCall) {
    const std::string text = "first\nsecond\nthird\n";
    for (const int64_t timeout : {int64_t{-1}, int64_t{10'000'000}})
        for (const int error :
             {EINTR, EAGAIN, FaultySockets::shortTransfer, ECONNRESET, EPIPE, ETIMEDOUT}) {
            const bool harmless = error == EINTR || error == FaultySockets::shortTransfer;
            for (size_t k = 1; k < 200; ++k) {
                SocketPair pair;
                FaultySockets calls;
                calls.failAt(k, error);
                calls.receiveAtMost = [] { return size_t{4}; };
                pair.put(text);
                pair.closeFar();
                Reader reader(pair, calls);
                std::string read;
                ssize_t size;
                while ((size = reader.get(1000, timeout)) > 0)
                    read += reader.line;
                if (!calls.metFault()) {
                    EXPECT_GT(k, 5u);
                    break;
                }
                // A wait itself never says "try again".
                const bool transparent =
                    harmless || (error == EAGAIN && calls.log()[k - 1] == "receive");
                EXPECT_EQ(text.compare(0, read.size(), read), 0);
                if (transparent) {
                    EXPECT_EQ(read, text) << error << " at " << k;
                    EXPECT_EQ(size, 0);
                } else {
                    EXPECT_EQ(size, -1);
                }
            }
        }
}

TEST(ReadBuf, StartsEmptyAndClosesItsDescriptor) {
    SocketPair pair;
    const int fd = pair.releaseNear();
    ReadBuf* rb = createReadBuf(fd);
    EXPECT_EQ(rb->fd, fd);
    EXPECT_EQ(rb->position, 0);
    EXPECT_EQ(rb->count, 0);
    EXPECT_EQ(sizeof rb->buffer, 4096u);
    destroyReadBuf(rb);
    EXPECT_FALSE(isOpen(fd));
    destroyReadBuf(nullptr);
}

// ---- Streams

std::string readAll(FILE* stream) {
    std::string text;
    for (int c; (c = fgetc(stream)) != EOF;)
        text.push_back(static_cast<char>(c));
    return text;
}

std::string longText() {
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += "line " + std::to_string(i) + "\r\n";
    return text;
}

TEST(SocketStream, CarriesTextBothWays) {
    SocketPair pair;
    FILE* in = openSocketStream(pair.near(), "r");
    FILE* out = openSocketStream(pair.near(), "w");
    ASSERT_TRUE(in && out);
    EXPECT_GE(fprintf(out, "VERSION:%d\r\n", 2), 0);
    EXPECT_EQ(fflush(out), 0);
    EXPECT_EQ(pair.drainFar(11), "VERSION:2\r\n");
    // A line is there as soon as it has come, although the stream could read more.
    pair.put("a line\n");
    char line[100];
    ASSERT_TRUE(fgets(line, sizeof line, in));
    EXPECT_STREQ(line, "a line\n");
    pair.closeFar();
    EXPECT_FALSE(fgets(line, sizeof line, in));
    EXPECT_TRUE(feof(in));
    EXPECT_EQ(fclose(in), 0);
    EXPECT_EQ(fclose(out), 0);
    EXPECT_TRUE(isOpen(pair.near()));
}

TEST(SocketStream, RefusesAClosedDescriptor) {
    EXPECT_FALSE(openSocketStream(-1, "r"));
    EXPECT_EQ(errno, EBADF);
    SocketPair pair;
    EXPECT_FALSE(openSocketStream(pair.near(), "?"));
    EXPECT_EQ(errno, EINVAL);
}

TEST(SocketStream, NeverRaisesASignal) {
    SocketPair pair;
    pair.closeFar();
    FILE* out = openSocketStream(pair.near(), "w");
    fputs("text", out);
    EXPECT_NE(fflush(out), 0); // and the process lives, although SIGPIPE is not ignored here
    EXPECT_EQ(errno, EPIPE);
    EXPECT_TRUE(ferror(out));
    fclose(out);
}

TEST(SocketStream, WaitsOnADescriptorThatDoesNotBlock) {
    SocketPair pair;
    fcntl(pair.near(), F_SETFL, O_NONBLOCK);
    const std::string text(3'000'000, 'x'); // more than the socket holds
    std::string received;
    std::thread far([&] {
        usleep(20'000);
        received = pair.drainFar(text.size());
        pair.put("answer\n");
    });
    FILE* out = openSocketStream(pair.near(), "w");
    EXPECT_EQ(fwrite(text.data(), 1, text.size(), out), text.size());
    EXPECT_EQ(fclose(out), 0);
    shutdown(pair.near(), SHUT_WR);
    FILE* in = openSocketStream(pair.near(), "r");
    char line[100];
    EXPECT_TRUE(fgets(line, sizeof line, in));
    EXPECT_STREQ(line, "answer\n");
    far.join();
    EXPECT_EQ(received, text);
    fclose(in);
}

TEST(SocketStream, SurvivesAFaultOfEachCallWhileReading) {
    const std::string text = longText();
    for (const int error :
         {EINTR, EAGAIN, FaultySockets::shortTransfer, ECONNRESET, EPIPE, ETIMEDOUT}) {
        const bool harmless =
            error == EINTR || error == EAGAIN || error == FaultySockets::shortTransfer;
        for (size_t k = 1; k < 200; ++k) {
            SocketPair pair;
            FaultySockets calls;
            calls.failAt(k, error);
            calls.receiveAtMost = [] { return size_t{5000}; };
            pair.put(text);
            pair.closeFar();
            FILE* in = openSocketStream(pair.near(), "r", calls);
            const std::string got = readAll(in);
            EXPECT_EQ(ferror(in) != 0, calls.metFault() && !harmless);
            EXPECT_EQ(text.compare(0, got.size(), got), 0);
            if (harmless || !calls.metFault()) {
                EXPECT_EQ(got, text);
            }
            fclose(in);
            if (!calls.metFault())
                break;
        }
    }
}

TEST(SocketStream, SurvivesAFaultOfEachCallWhileWriting) {
    // Nobody reads meanwhile, so that it must fit well into what the socket holds.
    const std::string text = longText().substr(0, 10'000);
    for (const int error :
         {EINTR, EAGAIN, FaultySockets::shortTransfer, ECONNRESET, EPIPE, ETIMEDOUT}) {
        const bool harmless =
            error == EINTR || error == EAGAIN || error == FaultySockets::shortTransfer;
        for (size_t k = 1; k < 200; ++k) {
            SocketPair pair;
            FaultySockets calls;
            calls.failAt(k, error);
            calls.sendAtMost = [] { return size_t{300}; };
            FILE* out = openSocketStream(pair.near(), "w", calls);
            bool well = fwrite(text.data(), 1, text.size(), out) == text.size();
            well = fclose(out) == 0 && well;
            shutdown(pair.near(), SHUT_WR);
            const std::string got = pair.drainFar(text.size());
            EXPECT_EQ(well, harmless || !calls.metFault()) << error << " at " << k;
            if (well) {
                EXPECT_EQ(got, text);
            }
            if (!calls.metFault())
                break;
        }
    }
}

TEST(SocketStream, DoesNotDependOnThePieces) {
    const std::string text = longText();
    for (const size_t most : {size_t{1}, size_t{2}, size_t{64}}) {
        std::mt19937 random(7);
        SocketPair pair;
        FaultySockets calls;
        calls.receiveAtMost = calls.sendAtMost = [&] { return 1 + random() % most; };
        std::string received;
        std::thread far([&] { received = pair.drainFar(text.size()); });
        FILE* out = openSocketStream(pair.near(), "w", calls);
        fputs(text.c_str(), out);
        EXPECT_EQ(fclose(out), 0);
        shutdown(pair.near(), SHUT_WR);
        far.join();
        EXPECT_EQ(received, text);
        pair.put(text);
        pair.closeFar();
        FILE* in = openSocketStream(pair.near(), "r", calls);
        EXPECT_EQ(readAll(in), text);
        fclose(in);
    }
}

// ---- Connecting and listening

// An interrupted line of text between the test and whoever connected.
void expectConversation(int listener, int fd) {
    const int accepted = accept(listener, nullptr, nullptr);
    ASSERT_GE(accepted, 0);
    EXPECT_EQ(write(accepted, "hello\n", 6), 6);
    ReadBuf* rb = createReadBuf(fd);
    char line[100];
    EXPECT_EQ(getLine(rb, sizeof line, line, 5'000'000), 6);
    EXPECT_STREQ(line, "hello\n");
    destroyReadBuf(rb);
    close(accepted);
}

int countDescriptors() {
    int count = 0;
    for (int fd = 0; fd < 1024; ++fd)
        count += isOpen(fd);
    return count;
}

TEST(ConnectTo, ReachesAListener) {
    unsigned short port = 0;
    const int listener = getListenSocket(&port);
    ASSERT_GE(listener, 0);
    EXPECT_GE(port, 1024);
    for (const char* host : {"127.0.0.1", "localhost"}) {
        const int fd = connectTo(host, port);
        ASSERT_GE(fd, 0);
        expectConversation(listener, fd);
    }
    close(listener);
}

TEST(ConnectTo, SaysThatANameDoesNotResolve) {
    const int before = countDescriptors();
    for (const char* host : {"no-such-host.invalid", "", "::1"}) {
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(connectTo(host, 1234), -1);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  std::string("ERROR: could not look up address for ") + host + "\n");
    }
    EXPECT_EQ(countDescriptors(), before); // without creating a socket
}

TEST(ConnectTo, SaysThatNobodyListens) {
    unsigned short port = 0;
    close(getListenSocket(&port));
    const int before = countDescriptors();
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(connectTo("127.0.0.1", port), -1);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: could not connect to 127.0.0.1:" + std::to_string(port) + "\n");
    // The failed socket deliberately stays open.
    EXPECT_EQ(countDescriptors(), before + 1);
}

TEST(ConnectTo, SaysThatThereIsNoSocket) {
    const ChildOutcome outcome = runInChild([] {
        // The first look-up of a process reads the resolver's files; here only the socket may fail.
        (void)gethostbyname("127.0.0.1");
        const rlimit bound{3, 3};
        setrlimit(RLIMIT_NOFILE, &bound);
        return connectTo("127.0.0.1", 1234) == -1 ? 0 : 1;
    });
    EXPECT_TRUE(outcome.exited(0));
    EXPECT_EQ(outcome.errors, "ERROR: could not open socket\n");
}

TEST(ConnectTo, SurvivesInterruptions) {
    unsigned short port = 0;
    const int listener = getListenSocket(&port);
    for (const int error : {EINTR, EAGAIN, FaultySockets::shortTransfer}) {
        FaultySockets calls;
        calls.failAt(1, error);
        const int fd = connectTo("127.0.0.1", port, calls);
        ASSERT_GE(fd, 0);
        EXPECT_TRUE(calls.metFault());
        expectConversation(listener, fd);
    }
    for (const int error : {ECONNRESET, EPIPE, ETIMEDOUT, ECONNREFUSED}) {
        FaultySockets calls;
        calls.failAt(1, error, true);
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(connectTo("127.0.0.1", port, calls), -1);
        EXPECT_NE(::testing::internal::GetCapturedStderr().find("ERROR: could not connect to"),
                  std::string::npos);
    }
    close(listener);
}

// The connection is made in the background while the first call says it was interrupted.
class InterruptedConnect : public SocketCalls {
public:
    int connect(int fd, const sockaddr* address, socklen_t length) override {
        if (calls++ == 0) {
            EXPECT_EQ(SocketCalls::connect(fd, address, length), 0);
            errno = first;
            return -1;
        }
        return SocketCalls::connect(fd, address, length);
    }
    int first = EINTR;
    int calls = 0;
};

TEST(ConnectTo, NoticesThatAnInterruptedConnectWasDone) {
    unsigned short port = 0;
    const int listener = getListenSocket(&port);
    for (const int first : {EINTR, EALREADY, EINPROGRESS}) {
        InterruptedConnect calls;
        calls.first = first;
        const int fd = connectTo("127.0.0.1", port, calls);
        ASSERT_GE(fd, 0);
        expectConversation(listener, fd);
    }
    close(listener);
}

TEST(ConnectTo, SurvivesAStormOfRealSignals) {
    unsigned short port = 0;
    const int listener = getListenSocket(&port);
    const ChildOutcome outcome = runInChild([&] {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, nullptr);
        const itimerval often{{0, 200}, {0, 200}};
        setitimer(ITIMER_REAL, &often, nullptr);
        for (int i = 0; i < 200; ++i) {
            const int fd = connectTo("127.0.0.1", port);
            if (fd < 0)
                return 1;
            int accepted;
            while ((accepted = accept(listener, nullptr, nullptr)) < 0 && errno == EINTR) {
            }
            FILE* out = openSocketStream(fd, "w");
            fputs("hello\n", out);
            if (fclose(out) != 0)
                return 2;
            ReadBuf* rb = createReadBuf(accepted);
            char line[100];
            if (getLine(rb, sizeof line, line, 5'000'000) != 6)
                return 3;
            destroyReadBuf(rb);
            close(fd);
        }
        return 0;
    });
    EXPECT_TRUE(outcome.exited(0)) << outcome.status;
    close(listener);
}

TEST(GetListenSocket, TakesTheGivenPortOnce) {
    unsigned short port = 0;
    const int first = getListenSocket(&port);
    ASSERT_GE(first, 0);
    const int before = countDescriptors();
    unsigned short same = port;
    EXPECT_EQ(getListenSocket(&same), -1);
    EXPECT_EQ(same, port);
    EXPECT_EQ(countDescriptors(), before);
    close(first);
    const int again = getListenSocket(&same); // at once, whatever the last connection left behind
    EXPECT_GE(again, 0);
    close(again);
}

// The ports tried are those of the system library's random numbers; eleven are tried, not twelve.
TEST(GetListenSocket, TriesElevenRandomPorts) {
    for (const int taken : {0, 3, 10, 11}) {
        srandom(42);
        std::vector<unsigned short> ports;
        for (int i = 0; i < 12; ++i)
            ports.push_back(static_cast<unsigned short>(random() % 64512 + 1024));
        std::vector<int> holders;
        for (int i = 0; i < taken; ++i)
            holders.push_back(getListenSocket(&ports[static_cast<size_t>(i)]));
        srandom(42);
        unsigned short port = 0;
        const int fd = getListenSocket(&port);
        if (taken == 11) {
            EXPECT_EQ(fd, -1);
        } else {
            EXPECT_GE(fd, 0);
            const auto used = std::find(ports.begin(), ports.end(), port) - ports.begin();
            EXPECT_GE(used, taken);
            EXPECT_LE(used, 10);
        }
        close(fd);
        for (const int holder : holders)
            close(holder);
    }
}

} // namespace
} // namespace tamarin::test
