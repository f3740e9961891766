#include "dealer/scoreboard.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(Scoreboard, CountsHands) {
    Scoreboard board(2, 1);
    for (const double won : {1.0, -2.0, 4.0, 1.0}) {
        const double chips[] = {won, -won};
        board.add(chips);
    }
    EXPECT_EQ(board.hands(), 4U);
    EXPECT_EQ(board.units(), 4U);
    EXPECT_DOUBLE_EQ(board.chips(0), 4);
    EXPECT_DOUBLE_EQ(board.chips(1), -4);
    EXPECT_DOUBLE_EQ(board.perHand(0).mean, 1);
    // Squares 0, 9, 9, 0 around the mean of 1; variance 6; three degrees of freedom.
    EXPECT_NEAR(board.perHand(0).halfWidth, 3.182446 * std::sqrt(6.0 / 4), 1e-6);
    EXPECT_DOUBLE_EQ(board.perHand(1).mean, -1);
}

TEST(Scoreboard, CountsWholeBlocksOnly) {
    Scoreboard board(2, 2);
    const double hands[][2] = {{3, -3}, {-1, 1}, {2, -2}, {2, -2}, {100, -100}};
    for (const auto& hand : hands)
        board.add(hand);
    EXPECT_EQ(board.hands(), 4U);
    EXPECT_EQ(board.units(), 2U);
    EXPECT_EQ(board.handsLeftOver(), 1U);
    EXPECT_DOUBLE_EQ(board.chips(0), 6);
    // Blocks of 1 and 2 chips a hand: mean 1.5, variance 0.5, one degree of freedom.
    EXPECT_DOUBLE_EQ(board.perHand(0).mean, 1.5);
    EXPECT_NEAR(board.perHand(0).halfWidth, 12.706205 * 0.5, 1e-5);
}

TEST(Scoreboard, TakesSplitPots) {
    Scoreboard board(3, 1);
    const double third = 10.0 / 3;
    const double chips[] = {third, third, -2 * third};
    for (int i = 0; i < 1000; ++i)
        board.add(chips);
    EXPECT_NEAR(board.chips(0) + board.chips(1) + board.chips(2), 0, 1e-9);
}

TEST(ScoreboardDeathTest, RefusesChipsFromNowhere) {
    Scoreboard board(2, 1);
    const double chips[] = {1, -0.5};
    EXPECT_DEATH(board.add(chips), "sum");
}

} // namespace tamarin::test
