#include "report/result_text.h"

#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(ResultText, IsInThousandthsOfTheBigBlindOrInChips) {
    Game game{};
    EXPECT_STREQ(unitOf(game).name, "chips/hand");
    EXPECT_EQ(unitOf(game).factor, 1);
    EXPECT_EQ(unitOf(game).digits, 4);
    game.blind[1] = 20;
    game.numPlayers = 2;
    EXPECT_STREQ(unitOf(game).name, "mbb/hand");
    EXPECT_EQ(unitOf(game).factor, 50);
    EXPECT_EQ(unitOf(game).digits, 1);
}

TEST(ResultText, HasItsIntervalWhereThereIsOne) {
    EXPECT_EQ(resultWithInterval({1.5, 0.25}, 100, 1), "+150.0 +- 25.0");
    EXPECT_EQ(resultWithInterval({-1.5, 0.25}, 1, 4), "-1.5000 +- 0.2500");
    EXPECT_EQ(resultWithInterval({-1.5, std::numeric_limits<double>::infinity()}, 2, 1), "-3.0");
}

} // namespace
} // namespace tamarin::test
