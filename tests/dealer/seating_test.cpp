#include "dealer/seating.h"

#include "dealer/fake_player.h"

#include <algorithm>

#include <gtest/gtest.h>

using namespace tamarin;
using namespace tamarin::test;
using namespace std::chrono_literals;

namespace {

SeatPlan shellSeat(const std::string& name, const std::string& script) {
    SeatPlan plan;
    plan.name = name;
    plan.command.emplace();
    plan.command->file = "/bin/bash";
    plan.command->arguments = {"bash", "-c", script, "bash"};
    return plan;
}

// Connects to HOST and PORT, says the text, and stays.
std::string saying(const std::string& text) {
    return "exec 3<>/dev/tcp/$1/$2; printf '" + text + "' >&3; cat <&3";
}

SeatPlan listeningSeat(const std::string& name) {
    SeatPlan plan;
    plan.name = name;
    return plan;
}

class SeatingTest : public testing::Test {
protected:
    SeatingTest() {
        options.startLimit = 10s;
        options.notice = [this](const std::string& text) { notices.push_back(text); };
    }
    std::string errorOf(const std::vector<SeatPlan>& plans) {
        auto players = seatPlayers(plans, options);
        EXPECT_FALSE(players.ok());
        return players.ok() ? "" : players.error();
    }
    // The port that the notice of a listening seat named; waits in the player's thread.
    uint16_t noticedPort() const {
        const std::string& text = notices.at(0);
        return static_cast<uint16_t>(std::stoi(text.substr(text.rfind(' ') + 1)));
    }

    SeatingOptions options;
    std::vector<std::string> notices;
};

} // namespace

TEST_F(SeatingTest, SeatsPlayersInOrder) {
    auto players = seatPlayers({shellSeat("late", "sleep 0.1; " + saying("VERSION:2.0.0\\n")),
                                shellSeat("soon", saying("VERSION:2.0.0\\r\\n"))},
                               options);
    ASSERT_TRUE(players.ok()) << players.error();
    ASSERT_EQ(players->size(), 2U);
    EXPECT_EQ((*players)[0].name, "late");
    EXPECT_EQ((*players)[1].name, "soon");
    EXPECT_TRUE((*players)[0].connection && (*players)[1].connection);
    dismissPlayers(*players, true);
}

TEST_F(SeatingTest, TakesAGreetingInPieces) {
    auto players = seatPlayers(
        {shellSeat("a", "exec 3<>/dev/tcp/$1/$2; for c in VERS ION: 2.0 .0; do printf $c >&3; "
                        "sleep 0.02; done; printf '\\n' >&3; cat <&3")},
        options);
    ASSERT_TRUE(players.ok()) << players.error();
}

TEST_F(SeatingTest, WrongVersionIsAFault) {
    EXPECT_EQ(errorOf({shellSeat("old", saying("VERSION:1.0.0\\n"))}).substr(0, 62),
              "old: the player says 'VERSION:1.0.0' instead of VERSION:2.0.0 ");
    EXPECT_TRUE(errorOf({shellSeat("odd", saying("\\001VERSION:2.0.0\\n"))})
                    .starts_with("odd: the player says '\\x01VERSION:2.0.0' instead of"));
}

TEST_F(SeatingTest, NoGreetingIsAFault) {
    options.greetingLimit = 100ms;
    EXPECT_TRUE(errorOf({shellSeat("mute", saying(""))})
                    .starts_with("mute: the player sent no version line within"));
}

TEST_F(SeatingTest, EarlyEndShowsTheLastWords) {
    EXPECT_EQ(errorOf({shellSeat("bad", "echo I cannot; echo play >&2; exit 3")}),
              "bad: the player ended with status 3; its last output: I cannot | play, before it "
              "connected");
    EXPECT_EQ(errorOf({shellSeat("none", "no_such_program_anywhere 2>/dev/null")}),
              "none: the player ended with status 127 and no output, before it connected");
}

TEST_F(SeatingTest, LeavingBeforeTheMatchIsAFault) {
    EXPECT_EQ(errorOf({shellSeat("quick", "exec 3<>/dev/tcp/$1/$2; echo VERSION:2.0.0 >&3"),
                       shellSeat("slow", "sleep 1000")}),
              "quick: the player closed the connection before the match began (its process ended "
              "with status 0 and no output)");
}

TEST_F(SeatingTest, PlayerThatNeverConnectsIsNotWaitedForLong) {
    options.startLimit = 200ms;
    const TimePoint start = steadyClock().now();
    EXPECT_EQ(errorOf({shellSeat("lazy", "echo training; sleep 1000"), listeningSeat("far")}),
              "lazy, far did not connect within " + std::string("0.2 s") +
                  " (--start-limit); lazy is running; its last output: training");
    EXPECT_LT(steadyClock().now() - start, 3s);
}

TEST_F(SeatingTest, WaitingCanBeStopped) {
    int asked = 0;
    options.keepWaiting = [&] { return ++asked < 3; };
    EXPECT_EQ(errorOf({listeningSeat("far")}), "stopped while waiting for far");
}

TEST_F(SeatingTest, TakenPortIsAnError) {
    auto taken = Listener::everywhere(0);
    SeatPlan plan = listeningSeat("far");
    plan.port = taken->port();
    EXPECT_EQ(errorOf({plan}), "far: could not listen on port " + std::to_string(taken->port()) +
                                   ": Address already in use");
}

TEST_F(SeatingTest, StrangersAreTurnedAway) {
    std::thread people;
    std::unique_ptr<Client> player;
    options.notice = [&](const std::string& text) {
        notices.push_back(text);
        if (notices.size() > 1)
            return;
        people = std::thread([&, port = noticedPort()] {
            Client browser(port);
            browser.send("GET / HTTP/1.1\r\n\r\n");
            EXPECT_EQ(browser.readLine(), ""); // closed
            Client scanner(port);
            scanner.close();
            Client silent(port); // holds its place without a word
            player = std::make_unique<Client>(port);
            player->send("VERSION:2.0.0\n");
            EXPECT_EQ(silent.readLine(), ""); // closed once somebody is seated
        });
    };
    auto players = seatPlayers({listeningSeat("far")}, options);
    ASSERT_TRUE(players.ok()) << players.error();
    people.join();
    ASSERT_GE(notices.size(), 2U);
    EXPECT_TRUE(notices[0].starts_with("waiting for far on port "));
    EXPECT_TRUE(notices[1].starts_with("far: turned away 127.0.0.1:")) << notices[1];
    EXPECT_TRUE(notices[1].ends_with("says 'GET / HTTP/1.1' instead of VERSION:2.0.0"));
    (*players)[0].connection->send("welcome\n");
    EXPECT_EQ(player->readLine(), "welcome");
}

TEST_F(SeatingTest, FarPlayerMayComeBackBeforeTheMatch) {
    std::thread people;
    std::unique_ptr<Client> player;
    options.notice = [&](const std::string& text) {
        notices.push_back(text);
        if (notices.size() > 1)
            return;
        people = std::thread([&, port = noticedPort()] {
            Client first(port);
            first.send("VERSION:2.0.0\n");
            pause(50);
            first.close();
            pause(50);
            player = std::make_unique<Client>(port);
            player->send("VERSION:2.0.0\n");
        });
    };
    auto players = seatPlayers(
        {listeningSeat("far"), shellSeat("slow", "sleep 0.5; " + saying("VERSION:2.0.0\\n"))},
        options);
    people.join();
    ASSERT_TRUE(players.ok()) << players.error();
    EXPECT_EQ(notices.back(), "far: the player closed the connection; waiting for another");
    (*players)[0].connection->send("welcome\n");
    EXPECT_EQ(player->readLine(), "welcome");
    dismissPlayers(*players, true);
}
