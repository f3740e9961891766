#include "bots/token_greeting.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

struct Pair {
    Pair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0); }
    ~Pair() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    std::string heard() const {
        char buffer[4096];
        const ssize_t size = ::read(ends[1], buffer, sizeof buffer);
        return {buffer, static_cast<size_t>(std::max<ssize_t>(size, 0))};
    }
    int ends[2] = {-1, -1};
};

} // namespace

TEST(TokenGreeting, ComesBeforeTheFirstWords) {
    const Pair pair;
    TokenGreeting calls("s3cret");
    EXPECT_EQ(calls.send(pair.ends[0], "VERSION:2.0.0\n", 14), 14);
    EXPECT_EQ(pair.heard(), "#token s3cret\nVERSION:2.0.0\n");
    EXPECT_EQ(calls.send(pair.ends[0], "more\n", 5), 5);
    EXPECT_EQ(pair.heard(), "more\n");
}

TEST(TokenGreeting, SaysNothingWithoutAToken) {
    const Pair pair;
    TokenGreeting calls("");
    EXPECT_EQ(calls.send(pair.ends[0], "VERSION:2.0.0\n", 14), 14);
    EXPECT_EQ(pair.heard(), "VERSION:2.0.0\n");
}

// A connection that takes nothing for now is asked again, and the words come once.
TEST(TokenGreeting, IsNotLostWhenTheConnectionIsFull) {
    const Pair pair;
    const std::string filler(1024, 'x');
    while (::write(pair.ends[0], filler.data(), filler.size()) > 0) {
    }
    TokenGreeting calls("s3cret");
    EXPECT_EQ(calls.send(pair.ends[0], "VERSION:2.0.0\n", 14), -1);
    EXPECT_EQ(errno, EAGAIN);
    while (!pair.heard().empty()) {
    }
    EXPECT_EQ(calls.send(pair.ends[0], "VERSION:2.0.0\n", 14), 14);
    EXPECT_EQ(pair.heard(), "#token s3cret\nVERSION:2.0.0\n");
}

} // namespace tamarin::test
