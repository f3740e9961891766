#include "dealer/seating.h"

#include "dealer/fake_player.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <list>

#include <gtest/gtest.h>

namespace tamarin::test {

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

// A player that the dealer starts and that takes its time, and people who find its port meanwhile.
// What the player is sent first it passes on, so that one can see who has the seat.
class PrivateSeatTest : public SeatingTest {
protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "seat.XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    // The player connects once the people are done; arrival is how it does that.
    SeatPlan
    patientSeat(const std::string& arrival = "exec 3<>/dev/tcp/$1/$2; echo VERSION:2.0.0 >&3; "
                                             "read -r said <&3; echo $said >welcomed; cat <&3") {
        SeatPlan plan = shellSeat("a", "echo $2 >port.new; mv port.new port; "
                                       "while [ ! -e go ]; do sleep 0.01; done; " +
                                           arrival);
        plan.command->directory = folder;
        return plan;
    }
    std::string contents(const std::string& name) const {
        std::ifstream file(folder + "/" + name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string waitFor(const std::string& name) const {
        for (int i = 0; i < 1000 && contents(name).empty(); ++i)
            pause(10);
        return contents(name);
    }

    // Seats the player while the people do what they do; then it must be the player who hears what
    // the seat is told.
    void seat(const std::function<void(uint16_t port)>& meanwhile, const SeatPlan& plan) {
        std::thread people([&] {
            meanwhile(static_cast<uint16_t>(std::stoi(waitFor("port"))));
            std::ofstream(folder + "/go") << "go";
        });
        auto players = seatPlayers({plan}, options);
        people.join();
        ASSERT_TRUE(players.ok()) << players.error();
        (*players)[0].connection->send("welcome\n");
        EXPECT_EQ(waitFor("welcomed"), "welcome\n");
        dismissPlayers(*players, true);
    }
    void seat(const std::function<void(uint16_t port)>& meanwhile) {
        seat(meanwhile, patientSeat());
    }

    std::string folder;
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
    EXPECT_EQ(errorOf({shellSeat("quick", "exec 3<>/dev/tcp/$1/$2; echo VERSION:2.0.0 >&3; "
                                          "sleep 0.5"),
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
    auto taken = Listener::local();
    SeatPlan plan = listeningSeat("far");
    plan.port = taken->port();
    EXPECT_EQ(errorOf({plan}), "far: could not listen on 127.0.0.1:" +
                                   std::to_string(taken->port()) + ": Address already in use");
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
    EXPECT_TRUE(notices[0].starts_with("waiting for far on 127.0.0.1 port "));
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

// Somebody connected to the player's port and left, and the match was over before it began.
TEST_F(PrivateSeatTest, AStrangerWhoLeavesCostsNothing) {
    seat([](uint16_t port) {
        Client(port).close();
        Client(port).reset();
        Client closed(port);
        closed.halfClose();
        EXPECT_EQ(closed.readLine(), "");
    });
    ASSERT_EQ(notices.size(), 3U);
    for (const std::string& notice : notices)
        EXPECT_TRUE(notice.starts_with("a: turned away 127.0.0.1:")) << notice;
    EXPECT_TRUE(notices[2].ends_with(", which is no process of this player")) << notices[2];
}

// Whoever came first and spoke the greeting had the seat, and saw its cards.
TEST_F(PrivateSeatTest, AStrangerWhoGreetsFirstIsTurnedAway) {
    seat([](uint16_t port) {
        Client stranger(port);
        stranger.send("VERSION:2.0.0\n");
        EXPECT_EQ(stranger.readLine(), "");
        Client talker(port);
        talker.send("GET / HTTP/1.1\r\n\r\n");
        EXPECT_EQ(talker.readLine(), "");
    });
    ASSERT_EQ(notices.size(), 2U);
    EXPECT_TRUE(notices[0].ends_with(", which is no process of this player")) << notices[0];
    EXPECT_TRUE(notices[1].ends_with(", which is no process of this player")) << notices[1];
}

TEST_F(PrivateSeatTest, AnotherPlayersProcessIsAStrangerToo) {
    SeatPlan thief = shellSeat("b", "while [ ! -e port ]; do sleep 0.01; done; "
                                    "exec 4<>/dev/tcp/127.0.0.1/$(cat port); "
                                    "echo VERSION:2.0.0 >&4; read -r said <&4; echo $said >stolen; "
                                    "echo go >go; exec 3<>/dev/tcp/$1/$2; "
                                    "echo VERSION:2.0.0 >&3; cat <&3");
    thief.command->directory = folder;
    auto players = seatPlayers({patientSeat(), thief}, options);
    ASSERT_TRUE(players.ok()) << players.error();
    for (Player& player : *players)
        player.connection->send("welcome\n");
    EXPECT_EQ(waitFor("welcomed"), "welcome\n");
    EXPECT_EQ(contents("stolen"), "\n");
    dismissPlayers(*players, true);
}

TEST_F(PrivateSeatTest, AFloodOfStrangersNeitherStarvesThePlayerNorGrows) {
    std::atomic<bool> over{false};
    std::vector<std::thread> flood;
    std::atomic<int> come{0};
    options.startLimit = 30s;
    const TimePoint start = steadyClock().now();
    seat([&](uint16_t port) {
        for (int i = 0; i < 2; ++i)
            flood.emplace_back([&, port, i] {
                std::list<Client> silent;
                while (!over) {
                    silent.emplace_back(port);
                    ++come;
                    if (i == 0)
                        silent.back().send("VERSION:2.0.0\n");
                    if (i == 0 || silent.size() > 100)
                        silent.pop_front();
                }
            });
        while (come < 300)
            pause(1);
    });
    over = true;
    for (std::thread& thread : flood)
        thread.join();
    // Where the queue is full for a moment the player's system knocks again after a second or two.
    EXPECT_LT(steadyClock().now() - start, 20s);
    // Five are named, the others counted.
    ASSERT_EQ(notices.size(), 6U);
    EXPECT_TRUE(notices[4].ends_with("; others are only counted")) << notices[4];
    EXPECT_TRUE(notices[5].starts_with("a: turned away ") && notices[5].ends_with(" in all"))
        << notices[5];
}

TEST_F(PrivateSeatTest, ThePortIsThereForThisMachineAlone) {
    seat([](uint16_t port) {
        EXPECT_FALSE(Client(port, INADDR_LOOPBACK, INADDR_LOOPBACK + 1).connected());
        EXPECT_TRUE(Client(port).connected());
    });
}

// While others are still awaited nobody can knock any more at a seat that is taken.
TEST_F(PrivateSeatTest, ThePortIsClosedOnceThePlayerIsSeated) {
    SeatPlan soon = shellSeat("a", "echo $2 >port.new; mv port.new port; exec 3<>/dev/tcp/$1/$2; "
                                   "echo VERSION:2.0.0 >&3; cat <&3");
    SeatPlan late =
        shellSeat("b", "while [ ! -e go ]; do sleep 0.01; done; " + saying("VERSION:2.0.0\\n"));
    soon.command->directory = late.command->directory = folder;
    bool closed = false;
    std::thread people([&] {
        const auto port = static_cast<uint16_t>(std::stoi(waitFor("port")));
        for (int i = 0; i < 500 && !closed; ++i) {
            closed = !Client(port).connected();
            pause(10);
        }
        std::ofstream(folder + "/go") << "go";
    });
    auto players = seatPlayers({soon, late}, options);
    people.join();
    ASSERT_TRUE(players.ok()) << players.error();
    EXPECT_TRUE(closed);
    dismissPlayers(*players, true);
}

TEST_F(PrivateSeatTest, ThePlayerMayBeAGrandchildInAGroupOfItsOwn) {
    for (const char* start : {"bash -c ", "setsid bash -c ", "set -m; bash -c "}) {
        seat([](uint16_t) {},
             patientSeat(std::string(start) +
                         "'exec 3<>/dev/tcp/$0/$1; echo VERSION:2.0.0 >&3; read -r said <&3; "
                         "echo $said >welcomed; cat <&3' $1 $2 & wait"));
        EXPECT_TRUE(notices.empty()) << start << notices.front();
        TearDown();
        SetUp();
    }
}

// Where the system does not tell who is who it is as it always was, but strangers cost nothing.
TEST_F(PrivateSeatTest, WithoutKnowledgeWhoeverGreetsFirstHasTheSeat) {
    options.processes = "/nonexistent";
    options.greetingLimit = 300ms;
    seat([](uint16_t port) {
        Client(port).close();
        Client talker(port);
        talker.send("GET / HTTP/1.1\r\n\r\n");
        EXPECT_EQ(talker.readLine(), "");
        Client silent(port);
        EXPECT_EQ(silent.readLine(), "");
    });
    ASSERT_EQ(notices.size(), 4U);
    EXPECT_TRUE(notices[0].ends_with("closed the connection before its version line"));
    EXPECT_TRUE(notices[1].ends_with("says 'GET / HTTP/1.1' instead of VERSION:2.0.0"));
    EXPECT_TRUE(notices[2].ends_with("sent no version line within 0.3 s"));
    EXPECT_EQ(notices[3], "a: the system does not tell whose the connections are; whoever greets "
                          "first has the seat");
}

TEST_F(PrivateSeatTest, WithoutKnowledgeALostSeatIsFilledAgain) {
    options.processes = "/nonexistent";
    std::thread people([&] {
        const auto port = static_cast<uint16_t>(std::stoi(waitFor("port")));
        Client stranger(port);
        stranger.send("VERSION:2.0.0\n");
        pause(100);
        stranger.close();
        pause(100);
        std::ofstream(folder + "/go") << "go";
    });
    SeatPlan other = shellSeat("b", "while [ ! -e go ]; do sleep 0.01; done; sleep 0.1; " +
                                        saying("VERSION:2.0.0\\n"));
    other.command->directory = folder;
    auto players = seatPlayers({patientSeat(), other}, options);
    people.join();
    ASSERT_TRUE(players.ok()) << players.error();
    (*players)[0].connection->send("welcome\n");
    EXPECT_EQ(waitFor("welcomed"), "welcome\n");
    ASSERT_EQ(notices.size(), 2U); // the uncertainty is told of once
    EXPECT_EQ(notices[1], "a: the player closed the connection; waiting for another");
    dismissPlayers(*players, true);
}

// The silent ones once kept everybody else out, four at a time, ten seconds each.
TEST_F(SeatingTest, SilenceDoesNotKeepThePlayerOut) {
    std::thread people;
    std::list<Client> silent;
    std::unique_ptr<Client> player;
    options.notice = [&](const std::string& text) {
        notices.push_back(text);
        if (notices.size() > 1)
            return;
        people = std::thread([&, port = noticedPort()] {
            for (int i = 0; i < 100; ++i)
                silent.emplace_back(port);
            const auto closed = [&] {
                return std::ranges::count_if(silent, &Client::closedByPeer);
            };
            for (int i = 0; i < 2000 && closed() < 84; ++i)
                pause(1);
            EXPECT_EQ(closed(), 84); // sixteen may stay
            player = std::make_unique<Client>(port);
            player->send("VERSION:2.0.0\n");
        });
    };
    const TimePoint start = steadyClock().now();
    auto players = seatPlayers({listeningSeat("far")}, options);
    people.join();
    ASSERT_TRUE(players.ok()) << players.error();
    EXPECT_LT(steadyClock().now() - start, 5s);
    (*players)[0].connection->send("welcome\n");
    EXPECT_EQ(player->readLine(), "welcome");
    ASSERT_GE(notices.size(), 2U);
    EXPECT_TRUE(notices[1].ends_with(", which made way for others")) << notices[1];
}

// A machine that sends many makes way for others of its own.
TEST_F(SeatingTest, NumbersFromOneHostDoNotDriveOutAnother) {
    std::thread people;
    std::unique_ptr<Client> player;
    options.notice = [&](const std::string& text) {
        notices.push_back(text);
        if (notices.size() > 1)
            return;
        people = std::thread([&, port = noticedPort()] {
            player = std::make_unique<Client>(port);
            std::list<Client> others;
            for (int i = 0; i < 100; ++i)
                others.emplace_back(port, INADDR_LOOPBACK + 1);
            for (int i = 0; i < 2000 && std::ranges::count_if(others, &Client::closedByPeer) < 85;
                 ++i)
                pause(1);
            EXPECT_FALSE(player->closedByPeer());
            EXPECT_EQ(std::ranges::count_if(others, &Client::closedByPeer), 85);
            player->send("VERSION:2.0.0\n");
            EXPECT_EQ(player->readLine(), "welcome");
        });
    };
    auto players = seatPlayers({listeningSeat("far")}, options);
    if (players.ok())
        (*players)[0].connection->send("welcome\n");
    people.join();
    ASSERT_TRUE(players.ok()) << players.error();
    ASSERT_GE(notices.size(), 2U);
    EXPECT_TRUE(notices[1].starts_with("far: turned away 127.0.0.2:")) << notices[1];
}

TEST_F(SeatingTest, ATokenIsAskedOfThoseFromElsewhereAlone) {
    options.token = "s3cret";
    std::thread people;
    std::unique_ptr<Client> player;
    options.notice = [&](const std::string& text) {
        notices.push_back(text);
        if (notices.size() > 1)
            return;
        people = std::thread([&, port = noticedPort()] {
            for (const char* words : {"VERSION:2.0.0\n", "#token s3cre\nVERSION:2.0.0\n",
                                      "#token s3cret\nVERSION:1.0.0\n"}) {
                Client wrong(port);
                wrong.send(words);
                EXPECT_EQ(wrong.readLine(), "");
            }
            player = std::make_unique<Client>(port);
            player->send("#token s3cret\r\nVERSION:2.0.0\r\n");
        });
    };
    auto players =
        seatPlayers({listeningSeat("far"), shellSeat("near", saying("VERSION:2.0.0\\n"))}, options);
    people.join();
    ASSERT_TRUE(players.ok()) << players.error();
    (*players)[0].connection->send("welcome\n");
    EXPECT_EQ(player->readLine(), "welcome");
    ASSERT_EQ(notices.size(), 4U);
    EXPECT_TRUE(notices[1].ends_with(", which gives no token")) << notices[1];
    EXPECT_TRUE(notices[2].ends_with(", which gives a wrong token")) << notices[2];
    EXPECT_TRUE(notices[3].ends_with(", which says 'VERSION:1.0.0' instead of VERSION:2.0.0"));
    for (const std::string& notice : notices)
        EXPECT_EQ(notice.find("s3cre"), std::string::npos) << notice;
    dismissPlayers(*players, true);
}

} // namespace tamarin::test
