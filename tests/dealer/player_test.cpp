#include "dealer/player.h"

#include "dealer/fake_player.h"

#include <gtest/gtest.h>

namespace tamarin::test {

using namespace std::chrono_literals;

namespace {

Player startPlayer(const std::string& script) {
    Child::Command command;
    command.file = "/bin/sh";
    command.arguments = {"sh", "-c", script};
    Player player;
    player.name = "p";
    auto child = Child::start(command);
    EXPECT_TRUE(child.ok());
    player.child = std::move(*child);
    return player;
}

Duration timeOf(const std::function<void()>& work) {
    const TimePoint start = steadyClock().now();
    work();
    return steadyClock().now() - start;
}

void waitForOutput(Player& player, const std::string& line) {
    for (int i = 0; i < 1000; ++i) {
        if (!player.child->output().lastLines().empty() &&
            player.child->output().lastLines().back() == line)
            return;
        servePlayers({&player, 1}, 10ms);
    }
    FAIL() << "no line " << line;
}

} // namespace

TEST(ServePlayers, WaitsNoLongerThanAsked) {
    const auto link = makeLink();
    std::vector<Player> players(1);
    players[0].connection.emplace(link->dealerEnd);
    EXPECT_GE(timeOf([&] { servePlayers(players, 20ms); }), 20ms);
    EXPECT_LT(timeOf([&] { servePlayers(players, 0ms); }), 20ms);
    EXPECT_LT(timeOf([&] { servePlayers(players, -5ms); }), 20ms);
    EXPECT_LT(timeOf([&] { servePlayers(players, 1h); }), 1s);
}

TEST(ServePlayers, ReadsAndWrites) {
    const auto link = makeLink();
    std::vector<Player> players(1);
    players[0].connection.emplace(link->dealerEnd);
    link->client.send("hello\n");
    servePlayers(players, 1s);
    std::string line;
    ASSERT_TRUE(players[0].connection->nextLine(line));
    EXPECT_EQ(line, "hello");

    // More than the kernel takes at once, so that the rest waits for the reader.
    const std::string text(999, 'x');
    int lines = 0;
    while (!players[0].connection->wantsToWrite() && lines < 100000) {
        players[0].connection->send(text + "\n");
        ++lines;
    }
    ASSERT_TRUE(players[0].connection->wantsToWrite());
    std::thread reader([&] {
        for (int i = 0; i < lines; ++i)
            ASSERT_EQ(link->client.readLine(), text);
    });
    while (players[0].connection->wantsToWrite())
        servePlayers(players, 100ms);
    reader.join();
}

TEST(ServePlayers, DoesNotSpinOnAPlayerThatHasLeft) {
    const auto link = makeLink();
    std::vector<Player> players(1);
    players[0].connection.emplace(link->dealerEnd);
    link->client.close();
    for (int i = 0; i < 100 && !players[0].connection->ended(); ++i)
        servePlayers(players, 100ms);
    ASSERT_TRUE(players[0].connection->ended());
    EXPECT_GE(timeOf([&] { servePlayers(players, 20ms); }), 20ms);
}

TEST(DismissPlayers, LetsAPlayerFinishByItself) {
    std::vector<Player> players;
    const std::string file = testing::TempDir() + "dismissed_" + std::to_string(getpid());
    players.push_back(startPlayer("echo ready; sleep 0.2; echo done >" + file));
    waitForOutput(players[0], "ready");
    dismissPlayers(players, false);
    EXPECT_TRUE(players.empty());
    EXPECT_EQ(::access(file.c_str(), F_OK), 0);
    ::unlink(file.c_str());
}

TEST(DismissPlayers, AsksWhenThereIsHurry) {
    std::vector<Player> players;
    players.push_back(startPlayer("echo ready; sleep 1000"));
    waitForOutput(players[0], "ready");
    EXPECT_LT(timeOf([&] { dismissPlayers(players, true); }), 1s);
}

TEST(DismissPlayers, MakesThoseWhoDoNotListen) {
    std::vector<Player> players;
    players.push_back(startPlayer("trap '' TERM; echo ready; while :; do sleep 1; done"));
    waitForOutput(players[0], "ready");
    const Duration time = timeOf([&] { dismissPlayers(players, true); });
    EXPECT_GE(time, 1s);
    EXPECT_LT(time, 5s);
}

TEST(DismissPlayers, ClosesInGoodOrder) {
    const auto link = makeLink();
    std::vector<Player> players(1);
    players[0].connection.emplace(link->dealerEnd);
    players[0].connection->hold("last state\n");
    // Unread input at closing time would reset the connection and lose the last line.
    link->client.send("something unasked\n");
    std::thread player([&] {
        pause(20);
        EXPECT_EQ(link->client.readLine(), "last state");
        EXPECT_EQ(link->client.readLine(), "");
        link->client.close();
    });
    dismissPlayers(players, false);
    player.join();
}

} // namespace tamarin::test
