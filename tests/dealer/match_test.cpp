#include "dealer/match.h"

#include "dealer/fake_player.h"
#include "game/games.h"

#include <atomic>
#include <map>
#include <set>
#include <utility>

#include <gtest/gtest.h>

namespace tamarin::test {

using namespace std::chrono_literals;

namespace {

constexpr const char* kuhn = "kuhn.limit.3p.game";

uint64_t faultsOf(const MatchResult& result, size_t player, Fault fault) {
    return result.players[player].faults[static_cast<size_t>(fault)];
}

uint64_t allFaults(const MatchResult& result) {
    uint64_t sum = 0;
    for (const PlayerResult& player : result.players)
        for (const uint64_t count : player.faults)
            sum += count;
    return sum;
}

void expectZeroSum(const MatchResult& result) {
    double sum = 0;
    for (size_t i = 0; i < result.players.size(); ++i)
        sum += result.board.chips(i);
    EXPECT_NEAR(sum, 0, 1e-9);
}

// A match in which player 0 does something odd and the others call.
struct OddMatch {
    explicit OddMatch(const Turn& odd) : table(game.get(), {odd, answers("c"), answers("c")}) {
        options.hands = 6;
        options.actionLimit = 2s;
    }
    MatchResult play() {
        events.faulty = [this](size_t player, Fault fault, uint32_t, const std::string& detail) {
            told.push_back(std::to_string(player) + " " + faultName(fault) + " " + detail);
        };
        MatchResult result = playMatch(game.get(), table.players, options, events);
        table.finish();
        expectZeroSum(result);
        return result;
    }
    // All hands end, with every fault of this one kind.
    MatchResult expectOnly(Fault fault) {
        MatchResult result = play();
        EXPECT_EQ(result.board.hands(), options.hands);
        EXPECT_EQ(result.failure, "");
        EXPECT_GT(faultsOf(result, 0, fault), 0U);
        EXPECT_EQ(faultsOf(result, 0, fault), allFaults(result));
        return result;
    }

    GamePtr game = loadGameFile(kuhn);
    FakeTable table;
    MatchOptions options;
    MatchEvents events;
    std::vector<std::string> told;
};

} // namespace

TEST(DealFromSeed, DependsOnSeedAndNumberAlone) {
    const GamePtr game = loadGameFile("holdem.limit.3p.game");
    const auto cards = [&](uint64_t seed, uint64_t deal) {
        State state{};
        dealFromSeed(game.get(), seed, deal, &state);
        std::vector<int> result;
        for (int seat = 0; seat < 3; ++seat)
            for (int i = 0; i < 2; ++i)
                result.push_back(state.holeCards[seat][i]);
        result.insert(result.end(), state.boardCards, state.boardCards + 5);
        return result;
    };
    EXPECT_EQ(cards(1, 7), cards(1, 7));
    std::set<std::vector<int>> different;
    for (const uint64_t seed : {uint64_t{1}, uint64_t{2}, uint64_t{1} << 32})
        for (const uint64_t deal : {uint64_t{0}, uint64_t{1}, uint64_t{1} << 32})
            different.insert(cards(seed, deal));
    EXPECT_EQ(different.size(), 9U);
}

// 24 ways to deal three of four cards: each about equally often.
TEST(DealFromSeed, DealsFairly) {
    const GamePtr game = loadGameFile(kuhn);
    std::map<std::vector<int>, int> counts;
    constexpr int deals = 24000;
    for (uint64_t deal = 0; deal < deals; ++deal) {
        State state{};
        dealFromSeed(game.get(), 5, deal, &state);
        ++counts[{state.holeCards[0][0], state.holeCards[1][0], state.holeCards[2][0]}];
    }
    ASSERT_EQ(counts.size(), 24U);
    double chiSquare = 0;
    for (const auto& [cards, count] : counts)
        chiSquare += (count - 1000.0) * (count - 1000.0) / 1000.0;
    EXPECT_LT(chiSquare, 49.7); // 23 degrees of freedom, 0.1 %
}

TEST(SeatsOfHand, MoveOnByOne) {
    MatchOptions options;
    EXPECT_EQ(seatsOfHand(options, 3, 0), (std::vector<size_t>{0, 1, 2}));
    EXPECT_EQ(seatsOfHand(options, 3, 1), (std::vector<size_t>{2, 0, 1}));
    EXPECT_EQ(seatsOfHand(options, 3, 2), (std::vector<size_t>{1, 2, 0}));
    EXPECT_EQ(seatsOfHand(options, 3, 3), (std::vector<size_t>{0, 1, 2}));
    options.fixedSeats = true;
    EXPECT_EQ(seatsOfHand(options, 3, 1), (std::vector<size_t>{0, 1, 2}));
    options.duplicate = true;
    EXPECT_EQ(seatsOfHand(options, 3, 1), (std::vector<size_t>{2, 0, 1}));
}

// A person is waited for, however long it takes; the others have their limits all the same.
TEST(UnhurriedPlayer, IsNeverLate) {
    OddMatch match([](Client& client, const std::string& line, int) {
        pause(60);
        client.send(line + ":c\r\n");
    });
    match.options.actionLimit = 20ms;
    match.options.handLimit = 30ms;
    match.options.hands = 3;
    match.table.players[0].unhurried = true;
    const MatchResult result = match.play();
    EXPECT_EQ(faultsOf(result, 0, Fault::late), 0U);
    EXPECT_EQ(result.players[0].actions[1], 3U);
    EXPECT_FALSE(result.players[0].gone);
}

TEST(CheckDealable, RefusesMoneyThatMakesNoSense) {
    for (const char* name : {kuhn, "holdem.limit.2p.reverse_blinds.game", "holdem.limit.3p.game",
                             "holdem.nolimit.2p.reverse_blinds.game"})
        EXPECT_TRUE(checkDealable(loadGameFile(name).get()).ok()) << name;
    const GamePtr game = loadGameFile(kuhn);
    game->blind[1] = -1;
    EXPECT_EQ(checkDealable(game.get()).error(), "seat 2 has a negative blind");
    game->blind[1] = 0;
    game->stack[2] = 0;
    EXPECT_EQ(checkDealable(game.get()).error(), "seat 3 has no stack");
    game->stack[2] = 5;
    game->raiseSize[0] = -1;
    EXPECT_EQ(checkDealable(game.get()).error(), "round 1 has a negative raise size");
}

// Nobody could read what it is sent, and each answer was waited for to the limit.
TEST(CheckDealable, RefusesABoardInTheFirstRound) {
    for (const char* name : {"kuhn.preflop.2p.game", "kuhn.preflop.3p.game"})
        EXPECT_TRUE(checkDealable(loadGameFile(name).get()).ok()) << name;
    for (const char* name : {"kuhn.flop.2p.game", "kuhn.flop.3p.game", "kuhn.turn.2p.game",
                             "kuhn.turn.3p.game", "kuhn.river.2p.game", "kuhn.river.3p.game"}) {
        const Status dealable = checkDealable(loadGameFile(name).get());
        ASSERT_FALSE(dealable.ok()) << name;
        EXPECT_TRUE(dealable.error().starts_with("it has board cards in its first round"))
            << dealable.error();
    }
}

TEST(Match, EverySeatSeesEveryState) {
    const GamePtr game = loadGameFile(kuhn);
    FakeTable table(game.get(), {answers("c"), answers("c"), answers("c")});
    MatchOptions options;
    options.hands = 2;
    std::vector<std::string> hands;
    MatchEvents events;
    events.handFinished = [&](const FinishedHand& hand) {
        char text[MAX_LINE_LEN];
        EXPECT_GT(printState(game.get(), hand.state, sizeof text, text), 0);
        hands.emplace_back(text);
        return Status{};
    };
    const MatchResult result = playMatch(game.get(), table.players, options, events);
    table.finish();
    ASSERT_EQ(hands.size(), 2U);
    EXPECT_EQ(result.players[0].actions, (std::array<uint64_t, 3>{0, 2, 0}));
    EXPECT_EQ(result.players[0].latency.count(), 2U);
    EXPECT_EQ(result.players[0].firstTenth.count(), 1U);
    EXPECT_EQ(result.players[0].lastTenth.count(), 1U);
    EXPECT_EQ(allFaults(result), 0U);
    expectZeroSum(result);

    // "STATE:0:ccc:As|Ks|Qs": the cards of the first hand, by seat.
    ASSERT_TRUE(hands[0].starts_with("STATE:0:ccc:"));
    const std::string cards = hands[0].substr(12);
    for (size_t player = 0; player < 3; ++player) {
        const auto& states = table.states(player);
        ASSERT_EQ(states.size(), 8U);
        EXPECT_EQ(table.carriageReturns(player), 8);
        const std::string own[] = {cards.substr(0, 2) + "||", "|" + cards.substr(3, 2) + "|",
                                   "||" + cards.substr(6, 2)};
        const char* betting[] = {"", "c", "cc"};
        for (size_t i = 0; i < 3; ++i)
            EXPECT_EQ(states[i], "MATCHSTATE:" + std::to_string(player) + ":0:" + betting[i] + ":" +
                                     own[player]);
        EXPECT_EQ(states[3], "MATCHSTATE:" + std::to_string(player) + ":0:ccc:" + cards);
        // In the second hand everybody has moved on by one seat.
        EXPECT_TRUE(
            states[4].starts_with("MATCHSTATE:" + std::to_string((player + 1) % 3) + ":1::"));
    }
}

TEST(Match, DuplicatePlaysEachDealFromEverySeat) {
    const GamePtr game = loadGameFile(kuhn);
    FakeTable table(game.get(), {answers("c"), answers("c"), answers("c")});
    MatchOptions options;
    options.hands = 30;
    options.duplicate = true;
    std::vector<std::vector<int>> cards;
    MatchEvents events;
    events.handFinished = [&](const FinishedHand& hand) {
        cards.push_back({hand.state->holeCards[0][0], hand.state->holeCards[1][0],
                         hand.state->holeCards[2][0]});
        return Status{};
    };
    const MatchResult result = playMatch(game.get(), table.players, options, events);
    ASSERT_EQ(cards.size(), 30U);
    std::set<std::vector<int>> deals;
    for (size_t i = 0; i < 30; i += 3) {
        EXPECT_EQ(cards[i], cards[i + 1]);
        EXPECT_EQ(cards[i], cards[i + 2]);
        deals.insert(cards[i]);
    }
    EXPECT_GT(deals.size(), 4U);
    // Three equal players: whatever the cards, every block comes out even.
    EXPECT_EQ(result.board.units(), 10U);
    for (size_t player = 0; player < 3; ++player) {
        EXPECT_EQ(result.board.chips(player), 0);
        EXPECT_EQ(result.board.perHand(player).halfWidth, 0);
    }
}

TEST(Match, PlaysTheBoardRoundByRound) {
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    FakeTable table(game.get(), {answers("c"), answers("c")});
    MatchOptions options;
    options.hands = 1;
    playMatch(game.get(), table.players, options);
    table.finish();
    const auto& states = table.states(0);
    ASSERT_EQ(states.size(), 9U);
    EXPECT_TRUE(states[2].starts_with("MATCHSTATE:0:0:cc/:"));
    EXPECT_TRUE(states[8].starts_with("MATCHSTATE:0:0:cc/cc/cc/cc:"));
    EXPECT_EQ(states[8].size(),
              std::string("MATCHSTATE:0:0:cc/cc/cc/cc:AsAs|AsAs/AsAsAs/As/As").size());
    EXPECT_EQ(table.states(1)[2].substr(0, 20), "MATCHSTATE:1:0:cc/:|");
}

TEST(Match, DribbledAnswerIsNoFault) {
    OddMatch match([](Client& client, const std::string& line, int) {
        for (const char c : line + ":c\r\n") {
            client.send(std::string(1, c));
            if (c == ':')
                pause(2);
        }
    });
    EXPECT_EQ(allFaults(match.play()), 0U);
}

TEST(Match, LineFeedAloneIsNoFault) {
    OddMatch match(
        [](Client& client, const std::string& line, int) { client.send(line + ":c\n"); });
    EXPECT_EQ(allFaults(match.play()), 0U);
}

TEST(Match, NonsenseBecomesCallOrFold) {
    OddMatch match([](Client& client, const std::string&, int) { client.send("what?\r\n"); });
    const MatchResult result = match.expectOnly(Fault::nonsense);
    EXPECT_EQ(result.players[0].actions[1], 6U); // nobody bets, so every answer becomes a call
    EXPECT_EQ(match.told.front(), "0 nonsense what?");
}

TEST(Match, WrongEchoIsNonsense) {
    OddMatch match([](Client& client, const std::string& line, int) {
        client.send("MATCHSTATE:0:99::" + line.substr(line.rfind(':') + 1) + ":c\r\n");
    });
    match.expectOnly(Fault::nonsense);
}

TEST(Match, LineWithoutEndIsNonsense) {
    OddMatch match([](Client& client, const std::string&, int) {
        client.send(std::string(100000, 'x') + "\n");
    });
    match.expectOnly(Fault::nonsense);
}

TEST(Match, IllegalActionBecomesCallOrFold) {
    OddMatch match(answers("f"));
    const MatchResult result = match.expectOnly(Fault::illegal);
    EXPECT_EQ(result.players[0].actions[1], 6U);
}

TEST(Match, LateAnswerBecomesCallOrFold) {
    OddMatch match([](Client& client, const std::string& line, int turn) {
        if (turn == 1)
            pause(150);
        client.send(line + ":c\r\n");
    });
    match.options.actionLimit = 50ms;
    const MatchResult result = match.expectOnly(Fault::late);
    // The answer that came too late is no fault a second time, and the answers after it count.
    EXPECT_EQ(allFaults(result), faultsOf(result, 0, Fault::late));
    EXPECT_LE(faultsOf(result, 0, Fault::late), 3U);
    EXPECT_FALSE(result.players[0].gone);
}

namespace {

// The machine's clock, which a test can push on.
class PushedClock : public Clock {
public:
    TimePoint now() const override { return steadyClock().now() + pushed; }
    Duration pushed{0};
};

} // namespace

// A dealer that was stopped for a while charged the player to act with its own sleep.
TEST(Match, ThePauseOfAStoppedDealerIsNobodysTime) {
    OddMatch match([](Client& client, const std::string& line, int) {
        pause(20);
        client.send(line + ":c\r\n");
    });
    PushedClock clock;
    match.options.actionLimit = 1s;
    match.options.handLimit = 2s;
    match.events.keepPlaying = [&] { return clock.pushed += 10s, true; };
    const MatchResult result =
        playMatch(match.game.get(), match.table.players, match.options, match.events, clock);
    EXPECT_EQ(result.board.hands(), 6U);
    EXPECT_EQ(allFaults(result), 0U);
    EXPECT_LT(result.players[0].latency.longest(), 1s);
    EXPECT_GE(result.players[0].latency.longest(), 15ms);
}

// The time in which the dealer is busy with something else counts as a wait that it meant, and the
// answer that came meanwhile is read before the player is late.
TEST(Match, AnAnswerThatHasComeIsReadBeforeItIsLate) {
    std::atomic<bool> answered{false};
    OddMatch match([&](Client& client, const std::string& line, int) {
        pause(20);
        client.send(line + ":c\r\n");
        answered = true;
    });
    match.options.actionLimit = 1ms;
    bool begun = false; // before the hand, nothing is awaited
    match.events.keepPlaying = [&] {
        if (std::exchange(begun, true)) {
            for (int i = 0; i < 500 && !answered; ++i)
                pause(10);
            pause(60); // for the others' answers
        }
        return true;
    };
    match.options.hands = 1;
    EXPECT_EQ(allFaults(match.play()), 0U);
}

TEST(Match, PlayerThatNeverAnswersIsGivenUp) {
    OddMatch match([](Client&, const std::string&, int) {});
    match.options.actionLimit = 20ms;
    match.options.hands = 30;
    const MatchResult result = match.play();
    EXPECT_EQ(result.board.hands(), 30U);
    EXPECT_EQ(faultsOf(result, 0, Fault::late), uint64_t{lateAnswersTaken});
    EXPECT_EQ(faultsOf(result, 0, Fault::gone), 30U - lateAnswersTaken + 1);
    EXPECT_TRUE(result.players[0].gone);
}

TEST(Match, HandLimitCountsAllAnswersOfAHand) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    FakeTable table(game.get(), {[](Client& client, const std::string& line, int) {
                                     pause(30);
                                     client.send(line + ":c\r\n");
                                 },
                                 answers("c")});
    MatchOptions options;
    options.hands = 1;
    options.actionLimit = 5s;
    options.handLimit = 70ms;
    const MatchResult result = playMatch(game.get(), table.players, options);
    // Four answers of 30 ms are due, and time for two of them.
    EXPECT_GE(faultsOf(result, 0, Fault::late), 1U);
    EXPECT_LE(faultsOf(result, 0, Fault::late), 3U);
    EXPECT_EQ(faultsOf(result, 1, Fault::late), 0U);
}

// Answers that never come use up the time of the hand as well.
TEST(Match, HandLimitCountsWhatWasWaitedForInVain) {
    const GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    FakeTable table(game.get(), {[](Client&, const std::string&, int) {}, answers("c")});
    MatchOptions options;
    options.hands = 1;
    options.actionLimit = 200ms;
    options.handLimit = 250ms;
    const MatchResult result = playMatch(game.get(), table.players, options);
    EXPECT_EQ(faultsOf(result, 0, Fault::late), 4U); // an answer a round
    EXPECT_GE(result.seconds, 0.25);
    EXPECT_LT(result.seconds, 0.6); // four times 200 ms would be 0.8 s
}

TEST(Match, PlayerThatLeavesIsPlayedFor) {
    OddMatch match([](Client& client, const std::string& line, int turn) {
        if (turn == 2)
            client.close();
        else
            client.send(line + ":c\r\n");
    });
    const MatchResult result = match.expectOnly(Fault::gone);
    EXPECT_EQ(faultsOf(result, 0, Fault::gone), 4U);
    EXPECT_TRUE(result.players[0].gone);
    EXPECT_EQ(match.told.front(), "0 gone closed the connection");
}

TEST(Match, ResetConnectionIsGone) {
    OddMatch match([](Client& client, const std::string&, int) { client.reset(); });
    match.expectOnly(Fault::gone);
}

TEST(Match, AnswerBeforeTheEndCounts) {
    OddMatch match([](Client& client, const std::string& line, int) {
        client.send(line + ":c\r\n");
        client.halfClose();
    });
    match.options.hands = 3;
    const MatchResult result = match.expectOnly(Fault::gone);
    EXPECT_EQ(faultsOf(result, 0, Fault::gone), 2U);
    EXPECT_EQ(result.players[0].latency.count(), 1U);
}

TEST(Match, UnexpectedLinesAreCounted) {
    OddMatch match([](Client& client, const std::string& line, int turn) {
        client.send(line + ":c\r\n" + (turn == 0 ? "and another thing\r\n" : ""));
    });
    const MatchResult result = match.expectOnly(Fault::unexpected);
    EXPECT_EQ(faultsOf(result, 0, Fault::unexpected), 1U);
}

TEST(Match, FaultCanStopTheMatch) {
    OddMatch match([](Client& client, const std::string& line, int turn) {
        client.send(turn == 2 ? "what?\r\n" : line + ":c\r\n");
    });
    match.options.stopOnFault = true;
    const MatchResult result = match.play();
    EXPECT_EQ(result.board.hands(), 2U);
    EXPECT_EQ(result.failure, "a: nonsense in hand 2: what?");
}

TEST(Match, EndsWhenEverybodyIsGone) {
    const GamePtr game = loadGameFile(kuhn);
    const Turn leave = [](Client& client, const std::string&, int) { client.close(); };
    FakeTable table(game.get(), {leave, leave, leave});
    MatchOptions options;
    options.hands = 1000000;
    const MatchResult result = playMatch(game.get(), table.players, options);
    EXPECT_EQ(result.failure, "every player is gone");
    EXPECT_LT(result.board.hands(), 3U);
}

TEST(Match, CanBeStopped) {
    OddMatch match(answers("c"));
    match.options.hands = 1000000;
    int asked = 0;
    match.events.keepPlaying = [&] { return ++asked < 200; };
    const MatchResult result = match.play();
    EXPECT_TRUE(result.stopped);
    EXPECT_GT(result.board.hands(), 0U);
    EXPECT_LT(result.board.hands(), 200U);
}

TEST(Match, CanBeStoppedWhileAPlayerThinks) {
    OddMatch match([](Client&, const std::string&, int) {});
    const TimePoint start = steadyClock().now();
    match.options.actionLimit = 1h;
    match.options.handLimit = 1h;
    match.events.keepPlaying = [&] { return steadyClock().now() - start < 100ms; };
    EXPECT_TRUE(match.play().stopped);
    EXPECT_LT(steadyClock().now() - start, 5s);
}

TEST(Match, EndsWhenAHandCannotBeRecorded) {
    OddMatch match(answers("c"));
    match.events.handFinished = [](const FinishedHand& hand) -> Status {
        if (hand.state->handId == 2)
            return Error{"disk full"};
        return {};
    };
    const MatchResult result = match.play();
    EXPECT_EQ(result.failure, "disk full");
    EXPECT_EQ(result.board.hands(), 3U);
}

// Others are told within moments, though the seat to act takes its time.
TEST(Match, StatesAreNotHeldWhileSomebodyThinks) {
    const GamePtr game = loadGameFile(kuhn);
    std::atomic<bool> thinking{false};
    std::atomic<bool> told{false};
    FakeTable table(game.get(), {answers("c"),
                                 [&](Client& client, const std::string& line, int) {
                                     thinking = true;
                                     for (int i = 0; i < 2000 && !told; ++i)
                                         pause(1);
                                     client.send(line + ":c\r\n");
                                 },
                                 answers("c")});
    // A third end of the table that only looks.
    MatchOptions options;
    options.hands = 1;
    std::thread watcher([&] {
        for (int i = 0; i < 2000 && !thinking; ++i)
            pause(1);
        for (int i = 0; i < 2000; ++i) {
            pause(1);
            if (table.countStates(0) >= 2 && table.countStates(2) >= 2)
                break;
        }
        told = table.countStates(0) >= 2 && table.countStates(2) >= 2;
    });
    const MatchResult result = playMatch(game.get(), table.players, options);
    watcher.join();
    EXPECT_TRUE(told);
    EXPECT_EQ(result.board.hands(), 1U);
}

} // namespace tamarin::test
