#include "abstraction/table_names.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(TableNames, AreThoseOfTheFiles) {
    EXPECT_EQ(equityPath(2, 0), "lookup/preflop_2p");
    EXPECT_EQ(clusterPath(3, 3), "lookup/river_3p_c");
    EXPECT_EQ(holdemPath(3, 1, 2), "lookup/holdem_flop_3p_2");
    EXPECT_EQ(utilityPath(2, 2, 1), "lookup/utility_turn_2p_1");
    EXPECT_EQ(auxiliaryGameName(2, 0), "kuhn.preflop.2p.game");
    EXPECT_EQ(auxiliaryGameName(3, 3), "kuhn.river.3p.game");
}

TEST(TableNames, LieBelowADirectory) {
    EXPECT_EQ(inDirectory("run", equityPath(2, 0)), "run/lookup/preflop_2p");
    EXPECT_EQ(inDirectory("run/", equityPath(2, 0)), "run/lookup/preflop_2p");
    EXPECT_EQ(inDirectory("/", "lookup"), "/lookup");
    EXPECT_EQ(inDirectory(".", "lookup"), "lookup");
    EXPECT_EQ(inDirectory("", "lookup"), "lookup");
    EXPECT_EQ(inDirectory("..", "lookup"), "../lookup");
}

} // namespace
} // namespace tamarin::test
