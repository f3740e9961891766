#include "holdem/pot_odds.h"

#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class PotOdds : public testing::Test {
protected:
    PotOdds() { initState(game.get(), 0, &state); }
    void act(ActionType type, int32_t size = 0) {
        const Action action{type, size};
        doAction(game.get(), &action, &state);
    }
    ActionType play(int seat, double equity) const {
        return playByPotOdds(*game, state, seat, equity);
    }

    GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    State state{};
};

// Seat 1 has put in 50 of 100: 50 more for a pot of 200, a quarter.
TEST_F(PotOdds, CallsWhatIsWorthThePrice) {
    EXPECT_EQ(priceOfCall(*game, state, 1), 50);
    EXPECT_EQ(play(1, 0.25), actionCall);
    EXPECT_EQ(play(1, 0.2499), actionFold);
    act(actionRaise, 300);
    EXPECT_EQ(priceOfCall(*game, state, 0), 200); // for a pot of 600
    EXPECT_EQ(play(0, 0.334), actionCall);
    EXPECT_EQ(play(0, 0.333), actionFold);
}

TEST_F(PotOdds, ChecksWhenNothingIsOwed) {
    act(actionCall);
    EXPECT_EQ(priceOfCall(*game, state, 0), 0);
    EXPECT_EQ(play(0, 0.0), actionCall);
}

// No more than the stack is asked of anybody.
TEST_F(PotOdds, AsksForTheStackAtMost) {
    act(actionRaise, 20000);
    game->stack[0] = 1000;
    EXPECT_EQ(priceOfCall(*game, state, 0), 900); // for a pot of 21,000
    EXPECT_EQ(play(0, 0.043), actionCall);
    EXPECT_EQ(play(0, 0.042), actionFold);
}

} // namespace
} // namespace tamarin::test
