#include "dealer/listener.h"

#include "dealer/fake_player.h"

#include <gtest/gtest.h>

using namespace tamarin;
using tamarin::test::Client;
using tamarin::test::pause;

namespace {

std::optional<Listener::Visitor> acceptSoon(Listener& listener) {
    for (int i = 0; i < 1000; ++i) {
        if (auto visitor = listener.accept())
            return visitor;
        pause(1);
    }
    return std::nullopt;
}

} // namespace

TEST(Listener, LocalPortsAreOnTheLoopback) {
    auto listener = Listener::local();
    ASSERT_TRUE(listener.ok());
    EXPECT_FALSE(listener->accept());
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ASSERT_EQ(getsockname(listener->fd(), reinterpret_cast<sockaddr*>(&address), &length), 0);
    EXPECT_EQ(address.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    Client client(listener->port());
    EXPECT_TRUE(client.connected());
    const auto visitor = acceptSoon(*listener);
    ASSERT_TRUE(visitor);
    EXPECT_TRUE(visitor->address.starts_with("127.0.0.1:"));
    ::close(visitor->fd);
}

TEST(Listener, EverywherePicksAPort) {
    auto listener = Listener::everywhere(0);
    ASSERT_TRUE(listener.ok());
    EXPECT_GE(listener->port(), 1024);
    Client client(listener->port());
    EXPECT_TRUE(client.connected());
    const auto visitor = acceptSoon(*listener);
    ASSERT_TRUE(visitor);
    ::close(visitor->fd);

    const auto second = Listener::everywhere(listener->port());
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(second.error(), "could not listen on port " + std::to_string(listener->port()) +
                                  ": Address already in use");
}

TEST(Listener, ClosesItsPort) {
    uint16_t port;
    {
        auto listener = Listener::local();
        port = listener->port();
    }
    EXPECT_FALSE(Client(port).connected());
}
