#include "dealer/listener.h"

#include "dealer/fake_player.h"

#include <gtest/gtest.h>

namespace tamarin::test {

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

uint32_t addressOf(const Listener& listener) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    EXPECT_EQ(getsockname(listener.fd(), reinterpret_cast<sockaddr*>(&address), &length), 0);
    return address.sin_addr.s_addr;
}

} // namespace

TEST(Listener, LocalPortsAreOnTheLoopback) {
    auto listener = Listener::local();
    ASSERT_TRUE(listener.ok());
    EXPECT_FALSE(listener->accept());
    EXPECT_EQ(addressOf(*listener), htonl(INADDR_LOOPBACK));
    Client client(listener->port());
    EXPECT_TRUE(client.connected());
    const auto visitor = acceptSoon(*listener);
    ASSERT_TRUE(visitor);
    EXPECT_EQ(visitor->host, "127.0.0.1");
    EXPECT_GT(visitor->port, 0);
    ::close(visitor->fd);
}

TEST(Listener, AllAddressesAreForTheAsking) {
    auto listener = Listener::at("0.0.0.0", 0);
    ASSERT_TRUE(listener.ok());
    EXPECT_GE(listener->port(), 1024);
    EXPECT_EQ(addressOf(*listener), htonl(INADDR_ANY));
    const auto other = Listener::at("127.0.0.3", 0);
    ASSERT_TRUE(other.ok());
    EXPECT_EQ(addressOf(*other), htonl(0x7f000003));
    Client client(listener->port());
    EXPECT_TRUE(client.connected());
    const auto visitor = acceptSoon(*listener);
    ASSERT_TRUE(visitor);
    ::close(visitor->fd);

    const auto second = Listener::at("0.0.0.0", listener->port());
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(second.error(), "could not listen on 0.0.0.0:" + std::to_string(listener->port()) +
                                  ": Address already in use");
}

TEST(Listener, RefusesWhatIsNoAddressOfThisMachine) {
    EXPECT_EQ(Listener::at("localhost", 0).error(), "'localhost' is no IPv4 address");
    EXPECT_EQ(Listener::at("192.0.2.1", 4000).error(),
              "could not listen on 192.0.2.1:4000: Cannot assign requested address");
}

// A port is free again at once, though connections of an earlier match may linger there.
TEST(Listener, TakesAPortAgain) {
    const uint16_t port = Listener::local()->port();
    {
        auto listener = Listener::at(loopbackAddress, port);
        ASSERT_TRUE(listener.ok()) << listener.error();
        Client client(port);
        const auto visitor = acceptSoon(*listener);
        ASSERT_TRUE(visitor);
        ::close(visitor->fd); // this end closes first, and lingers
        EXPECT_EQ(client.readLine(), "");
    }
    const auto again = Listener::at(loopbackAddress, port);
    EXPECT_TRUE(again.ok()) << again.error();
}

// As many as knock at once, while the dealer looks elsewhere.
TEST(Listener, ManyMayWait) {
    auto listener = Listener::local();
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 200; ++i) {
        clients.push_back(std::make_unique<Client>(listener->port()));
        ASSERT_TRUE(clients.back()->connected());
    }
    for (int i = 0; i < 200; ++i) {
        const auto visitor = acceptSoon(*listener);
        ASSERT_TRUE(visitor) << i;
        ::close(visitor->fd);
    }
}

TEST(Listener, ClosesItsPort) {
    uint16_t port;
    {
        auto listener = Listener::local();
        port = listener->port();
    }
    EXPECT_FALSE(Client(port).connected());
}

} // namespace tamarin::test
