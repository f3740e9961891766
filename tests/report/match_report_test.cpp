#include "report/match_report.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// Four hands between two players who are known to the last digit.
struct SmallMatch {
    explicit SmallMatch(uint64_t unitHands = 1) : result(Scoreboard(2, unitHands)) {
        for (const double won : {10.0, -20.0, 40.0, 10.0}) {
            const double chips[] = {won, -won};
            result.board.add(chips);
        }
        result.players.resize(2);
        result.players[0].name = "first";
        result.players[0].actions = {1, 2, 3};
        result.players[0].latency.add(std::chrono::microseconds(50));
        result.players[1].name = "second";
        result.players[1].actions = {4, 5, 6};
        result.players[1].faults[static_cast<size_t>(Fault::late)] = 2;
        result.players[1].faults[static_cast<size_t>(Fault::gone)] = 1;
        result.players[1].gone = true;
        result.played = 4;
        result.seconds = 2;
        report.options.hands = 4;
        report.options.seed = 9;
    }

    GamePtr game = test::loadGameFile("holdem.limit.2p.reverse_blinds.game");
    MatchResult result;
    MatchReport report{"some.game", game.get(), {}, &result};
};

} // namespace

TEST(MatchReport, Table) {
    const SmallMatch match;
    // Mean 10, variance 600 over four hands: 3.182 * sqrt(150) = 38.98 chips a hand.
    EXPECT_EQ(reportAsTable(match.report), R"(some.game: 4 hands, seed 9, seats rotated, 2 hands/s
player  chips    chips/hand (95 %)    mbb/hand (95 %)  fold  call  raise  median    p99  faults
first     +40  +10.0000 +- 38.9768  +1000.0 +- 3897.7     1     2      3   50 us  50 us  none
second    -40  -10.0000 +- 38.9768  -1000.0 +- 3897.7     4     5      6    0 us   0 us  2 late, 1 gone (left the match)
)");
}

TEST(MatchReport, FreedOfLuckBesideThePlainResult) {
    SmallMatch match;
    match.report.freed = {{{1.5, 0.25}, {}}, {{-1.5, 0.25}, {}}};
    const std::string table = reportAsTable(match.report);
    EXPECT_NE(table.find("mbb/hand (95 %)  luck-free (95 %)  fold"), std::string::npos) << table;
    EXPECT_NE(table.find("+1000.0 +- 3897.7    +150.0 +- 25.0     1"), std::string::npos) << table;
    match.report.freed[0].expected = Interval{2, 0.5};
    match.report.freed[1].expected = Interval{-2, 0.5};
    EXPECT_NE(reportAsTable(match.report).find("-150.0 +- 25.0         -200.0 +- 50.0"),
              std::string::npos)
        << reportAsTable(match.report);
    const auto json = reportAsJson(match.report);
    EXPECT_EQ(json["players"][0]["luckFreeChipsPerHand"]["mean"], 1.5);
    EXPECT_EQ(json["players"][1]["worthOfDealsPerHand"]["mean"], -2);
    EXPECT_FALSE(reportAsJson(SmallMatch().report)["players"][0].contains("luckFreeChipsPerHand"));
}

TEST(MatchReport, TableOfAMatchThatWasStopped) {
    SmallMatch match(3);
    match.report.options.duplicate = true;
    match.result.stopped = true;
    match.report.options.hands = 3000;
    const std::string table = reportAsTable(match.report);
    EXPECT_TRUE(table.starts_with(
        "some.game: 3 hands in 1 duplicate blocks, seed 9, seats duplicate, 2 hands/s\n"
        "stopped before all 3,000 hands were played\n"
        "1 hands of an unfinished block are not counted\n"
        "player"))
        << table;
    // One block has no interval.
    EXPECT_NE(table.find("first     +30           +10.0000 "), std::string::npos) << table;
}

TEST(MatchReport, Json) {
    const SmallMatch match;
    const auto json = reportAsJson(match.report);
    EXPECT_EQ(json["game"], "some.game");
    EXPECT_EQ(json["hands"], 4);
    EXPECT_EQ(json["bigBlind"], 10);
    EXPECT_EQ(json["duplicateBlocks"], nullptr);
    EXPECT_EQ(json["failure"], nullptr);
    ASSERT_EQ(json["players"].size(), 2U);
    const auto& first = json["players"][0];
    EXPECT_EQ(first["chips"], 40);
    EXPECT_DOUBLE_EQ(first["chipsPerHand"]["mean"].get<double>(), 10);
    EXPECT_NEAR(first["chipsPerHand"]["plusMinus95"].get<double>(), 38.9769, 1e-3);
    EXPECT_DOUBLE_EQ(first["mbbPerHand"]["mean"].get<double>(), 1000);
    EXPECT_EQ(first["actions"]["raise"], 3);
    EXPECT_EQ(first["responseMicroseconds"]["answers"], 1);
    EXPECT_EQ(json["players"][1]["faults"]["late"], 2);
    EXPECT_EQ(json["players"][1]["faults"]["nonsense"], 0);
    EXPECT_EQ(json["players"][1]["gone"], true);
}

TEST(MatchReport, WithoutBlindsThereIsNoMbb) {
    SmallMatch match;
    match.game->blind[0] = match.game->blind[1] = 0;
    EXPECT_EQ(bigBlind(*match.game), 0);
    EXPECT_EQ(reportAsJson(match.report)["players"][0]["mbbPerHand"], nullptr);
    EXPECT_EQ(reportAsTable(match.report).find("inf"), std::string::npos);
}

TEST(Printable, EscapesAndCuts) {
    EXPECT_EQ(printable("a\x01\xFF~ \n"), "a\\x01\\xFF~ \\x0A");
    EXPECT_EQ(printable(std::string(301, 'x')), std::string(300, 'x') + "...");
}

} // namespace tamarin::test
