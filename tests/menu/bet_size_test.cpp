#include "menu/bet_size.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin {
namespace {

const char* const uneven = R"(GAMEDEF
nolimit
numPlayers = 3
numRounds = 2
stack = 1000 1700 400
blind = 5 10 0
firstPlayer = 3 1
numSuits = 4
numRanks = 13
numHoleCards = 2
numBoardCards = 0 3
END GAMEDEF
)";

State played(const Game& game, std::initializer_list<Action> actions) {
    State state{};
    initState(&game, 0, &state);
    for (Action action : actions) {
        EXPECT_TRUE(isValidAction(&game, &state, 0, &action));
        doAction(&game, &action, &state);
    }
    return state;
}

int64_t total(const std::string& size, const Game& game, const State& state) {
    const auto parsed = parseBetSize(size);
    EXPECT_TRUE(parsed.has_value()) << size;
    return raiseOfSize(*parsed, game, state);
}

TEST(BetSize, ReadsAndWrites) {
    const auto again = [](const std::string& text) {
        const auto size = parseBetSize(text);
        return size ? textOf(*size) : "";
    };
    EXPECT_EQ(again("1/2"), "1/2");
    EXPECT_EQ(again("2/4"), "1/2");
    EXPECT_EQ(again("0.75"), "3/4");
    EXPECT_EQ(again("2"), "2");
    EXPECT_EQ(again("1000"), "1000");
    EXPECT_EQ(again("0.0001"), "1/10000");
    EXPECT_EQ(again("1.3333"), "13333/10000");
    EXPECT_EQ(again("2.5b"), "5/2b");
    EXPECT_EQ(again("3b"), "3b");
    EXPECT_EQ(again("min"), "min");
    EXPECT_EQ(again("A"), "A");
    EXPECT_NE(*parseBetSize("3b"), *parseBetSize("3"));
}

TEST(BetSize, RefusesEverythingElse) {
    for (const char* text :
         {"",    "0",  "0.0",   "1001",        "1000.1", "1/0", "0/3", "1/10001", "1/",
          "/2",  "1.", ".5",    "1.23456",     "-1",     "+1",  "1 2", "a",       "Amin",
          "1bb", "b",  "1/2/3", "99999999999", "1e3",    "2p",  "MIN"})
        EXPECT_FALSE(parseBetSize(text).has_value()) << text;
}

TEST(BetSize, PotsAreThoseAfterACall) {
    const GamePtr game = test::parseGame(uneven);
    const State first = played(*game, {});
    EXPECT_EQ(potAfterCall(*game, first), 25); // 5 and 10, and 10 to call
    EXPECT_EQ(total("1", *game, first), 35);
    EXPECT_EQ(total("1/2", *game, first), 23); // 12.5, halves up
    EXPECT_EQ(total("0.3", *game, first), 18); // 7.5
    EXPECT_EQ(total("1/3", *game, first), 18); // 8.33
    const State raised = played(*game, {{actionRaise, 35}});
    EXPECT_EQ(potAfterCall(*game, raised), 80); // 35, 10, and 5 with 30 more
    EXPECT_EQ(total("2", *game, raised), 195);
}

TEST(BetSize, BlindsCountWhatIsPutInInTheRound) {
    const GamePtr game = test::parseGame(uneven);
    EXPECT_EQ(total("3b", *game, played(*game, {})), 30);
    EXPECT_EQ(total("2.25b", *game, played(*game, {})), 23);
    EXPECT_EQ(total("9b", *game, played(*game, {{actionRaise, 30}})), 90);
    const State flop = played(*game, {{actionRaise, 40}, {actionCall, 0}, {actionFold, 0}});
    EXPECT_EQ(flop.round, 1);
    EXPECT_EQ(total("3b", *game, flop), 70);
    const State limped = played(*game, {{actionCall, 0}, {actionCall, 0}, {actionCall, 0}});
    EXPECT_EQ(total("3b", *game, limped), 40);
}

TEST(BetSize, AllInIsTheStackOfTheSeat) {
    const GamePtr game = test::parseGame(uneven);
    EXPECT_EQ(total("A", *game, played(*game, {})), 400);
    EXPECT_EQ(total("A", *game, played(*game, {{actionCall, 0}})), 1000);
}

TEST(BetSize, IsMadeLegal) {
    const GamePtr game = test::parseGame(uneven);
    const State first = played(*game, {});
    EXPECT_EQ(legalRaise(0, *game, first), 20);
    EXPECT_EQ(legalRaise(19, *game, first), 20);
    EXPECT_EQ(legalRaise(21, *game, first), 21);
    EXPECT_EQ(legalRaise(390, *game, first), 390); // a big blind is left
    EXPECT_EQ(legalRaise(391, *game, first), 400);
    EXPECT_EQ(legalRaise(int64_t{1} << 40U, *game, first), 400);
    // A raise that is smaller than the rules' smallest is all-in where the stack has no more.
    EXPECT_EQ(legalRaise(0, *game, played(*game, {{actionFold, 0}, {actionRaise, 900}})), 1700);
    // The first seat cannot raise what is all it has.
    EXPECT_EQ(legalRaise(0, *game, played(*game, {{actionFold, 0}, {actionRaise, 1000}})),
              std::nullopt);
}

TEST(BetSize, AFullRoundIsSilent) {
    const GamePtr game = test::parseGame(uneven);
    State state = played(*game, {{actionCall, 0}, {actionCall, 0}, {actionCall, 0}});
    state.numActions[1] = MAX_NUM_ACTIONS - 2;
    testing::internal::CaptureStderr();
    int32_t least = 0;
    int32_t most = 0;
    EXPECT_FALSE(mayRaise(*game, state, least, most));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace tamarin
