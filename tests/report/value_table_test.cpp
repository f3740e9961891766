#include "report/value_table.h"

#include "solver/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(ValueTable, GivesEachSeatAndNashConv) {
    GamePtr game = kuhn2();
    game->blind[0] = 5;
    game->blind[1] = 10;
    const ProfileValue value{{-0.125, 0.125}, {0.375, 0.1875}};
    EXPECT_EQ(valueTable(*game, value),
              "        value          best response  gain           value\n"
              "        chips/hand     chips/hand     chips/hand     mbb/hand\n"
              "seat 0  -0.125000000   0.375000000    5.000e-01      -12.500\n"
              "seat 1  0.125000000    0.187500000    6.250e-02      12.500\n"
              "NashConv 5.625000e-01, per player 2.812500e-01 chips/hand\n");
    game->blind[0] = game->blind[1] = 0; // no blind to measure by
    EXPECT_NE(valueTable(*game, value).find("5.000e-01      0.000\n"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
