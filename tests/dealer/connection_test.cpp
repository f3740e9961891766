#include "dealer/connection.h"

#include "dealer/fake_player.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// Waits for what is on its way on the loopback interface.
bool nextLine(Connection& connection, std::string& line) {
    for (int i = 0; i < 1000; ++i) {
        connection.receive();
        if (connection.nextLine(line))
            return true;
        if (connection.ended())
            return false;
        pause(1);
    }
    return false;
}

bool waitForEnd(Connection& connection) {
    for (int i = 0; i < 1000 && !connection.ended(); ++i) {
        connection.receive();
        pause(1);
    }
    return connection.ended();
}

} // namespace

TEST(Connection, TakesLinesApart) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    std::string line;
    EXPECT_FALSE(connection.nextLine(line));
    link->client.send("one\ntwo\r\n\r\nfo");
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "one");
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "two");
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "");
    EXPECT_FALSE(connection.nextLine(line));
    link->client.send("ur\r");
    pause(5);
    connection.receive();
    EXPECT_FALSE(connection.nextLine(line));
    link->client.send("\n");
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "four");
}

TEST(Connection, HoldsBackWhatItHoldsWhenItMoves) {
    const auto link = makeLink();
    Connection first(link->dealerEnd);
    first.hold("kept back\n");
    EXPECT_FALSE(first.wantsToWrite());
    Connection second(std::move(first));
    EXPECT_FALSE(second.wantsToWrite());
    const auto other = makeLink();
    Connection third(other->dealerEnd);
    third = std::move(second);
    EXPECT_FALSE(third.wantsToWrite());
}

TEST(Connection, TakesDribbledBytes) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    std::string line;
    for (const char c : std::string("VERSION:2.0.0\r")) {
        link->client.send(std::string(1, c));
        connection.receive();
        EXPECT_FALSE(connection.nextLine(line));
    }
    link->client.send("\n");
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "VERSION:2.0.0");
}

TEST(Connection, CutsALineThatIsTooLong) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    std::thread writer([&] { link->client.send(std::string(1 << 20, 'x') + "\nnext\n"); });
    std::string line;
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, std::string(Connection::longestLine, 'x'));
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "next");
    writer.join();
}

TEST(Connection, LongestLineIsWhole) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    link->client.send(std::string(Connection::longestLine, 'x') + "\r");
    pause(5);
    std::string line;
    connection.receive();
    EXPECT_FALSE(connection.nextLine(line));
    link->client.send("\n");
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, std::string(Connection::longestLine, 'x'));
}

TEST(Connection, LinesBeforeTheEndAreTaken) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    link->client.send("last\nhalf");
    link->client.close();
    ASSERT_TRUE(waitForEnd(connection));
    EXPECT_EQ(connection.ending(), "closed the connection");
    std::string line;
    ASSERT_TRUE(connection.nextLine(line));
    EXPECT_EQ(line, "last");
    EXPECT_FALSE(connection.nextLine(line));
}

TEST(Connection, AResetIsAnEnd) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    link->client.reset();
    ASSERT_TRUE(waitForEnd(connection));
    EXPECT_EQ(connection.ending(), "Connection reset by peer");
    connection.send("to nobody\n"); // neither a signal nor an error of ours
    connection.send("to nobody\n");
    EXPECT_FALSE(connection.wantsToWrite());
}

TEST(Connection, WhatIsHeldGoesOutWithTheNext) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    connection.hold("a\n");
    connection.hold("b\n");
    EXPECT_FALSE(connection.wantsToWrite());
    connection.send("c\n");
    EXPECT_EQ(link->client.readLine(), "a");
    EXPECT_EQ(link->client.readLine(), "b");
    EXPECT_EQ(link->client.readLine(), "c");
    connection.hold("d\n");
    connection.flush();
    EXPECT_EQ(link->client.readLine(), "d");
}

TEST(Connection, APeerThatDoesNotReadIsBroken) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    const std::string text(1 << 16, 'x');
    int sends = 0;
    while (!connection.ended() && sends < 10000) {
        connection.send(text);
        ++sends;
    }
    EXPECT_TRUE(connection.ended());
    EXPECT_EQ(connection.ending(), "does not read what it is sent");
}

TEST(Connection, UnreadInputStaysWithinItsLimit) {
    const auto link = makeLink();
    Connection connection(link->dealerEnd);
    std::thread writer([&] {
        for (int i = 0; i < 40000; ++i)
            link->client.send("some line\n");
    });
    for (int i = 0; i < 200 && connection.wantsToRead(); ++i) {
        connection.receive();
        pause(1);
    }
    EXPECT_FALSE(connection.wantsToRead());
    std::string line;
    int lines = 0;
    while (lines < 40000 && nextLine(connection, line))
        ++lines;
    EXPECT_EQ(lines, 40000);
    writer.join();
}

namespace {

// Sends and receives one byte a call, interrupted or put off before each.
class Reluctant : public SocketCalls {
public:
    ssize_t receive(int fd, void* buffer, size_t) override {
        if (refuse())
            return -1;
        return SocketCalls::receive(fd, buffer, 1);
    }
    ssize_t send(int fd, const void* buffer, size_t) override {
        if (refuse())
            return -1;
        return SocketCalls::send(fd, buffer, 1);
    }

private:
    bool refuse() {
        errno = calls_ % 3 == 0 ? EINTR : EAGAIN;
        return calls_++ % 3 != 2;
    }
    int calls_ = 0;
};

} // namespace

TEST(Connection, InterruptedAndShortCallsAreInvisible) {
    Reluctant calls;
    const auto link = makeLink();
    Connection connection(link->dealerEnd, calls);
    connection.send("MATCHSTATE:0:0::Ks||\r\n");
    while (connection.wantsToWrite())
        connection.flush();
    EXPECT_EQ(link->client.readLine(), "MATCHSTATE:0:0::Ks||");
    link->client.send("MATCHSTATE:0:0::Ks||:c\r\n");
    std::string line;
    ASSERT_TRUE(nextLine(connection, line));
    EXPECT_EQ(line, "MATCHSTATE:0:0::Ks||:c");
}

} // namespace tamarin::test
