#include "abstraction/EquityTables.h"

#include "abstraction/sparse_tables.h"
#include "support/tree_paths.h"

#include <type_traits>

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

static_assert(std::has_virtual_destructor_v<EquityTables>);

TEST(EquityTablesObject, SaysThatItCreatesIndexers) {
    ::testing::internal::CaptureStdout();
    EquityTables tables;
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Creating indexers... done!\n");
}

TEST(EquityTablesObject, KnowsItsRounds) {
    EquityTables tables;
    for (int round = 0; round < holdemRounds; ++round)
        EXPECT_EQ(tables.getRoundSize(round), roundSizes[static_cast<size_t>(round)]);
    EXPECT_EQ(tables.getRoundSize(4), 0U);
    EXPECT_EQ(tables.getRoundSize(-1), 0U);
}

TEST(EquityTablesObject, StartsWithoutTables) {
    EquityTables tables;
    for (int players = 0; players <= 4; ++players)
        for (int round = -1; round <= 4; ++round) {
            EXPECT_EQ(tables.getEquityTable(players, round), nullptr);
            EXPECT_EQ(tables.getClusterTable(players, round), nullptr);
            EXPECT_EQ(tables.getHoldemTable(players, round, 0), nullptr);
            EXPECT_EQ(tables.getUtilityTable(players, round, 0), nullptr);
        }
}

TEST(EquityTablesObject, SettersKeepThePointerAndIgnoreOtherPairs) {
    EquityTables tables;
    auto* const equities = new double[roundSizes[0]]();
    unsigned char clusters[1] = {};
    tables.setEquityTable(3, 0, equities);
    tables.setClusterTable(2, 1, clusters);
    tables.setEquityTable(4, 0, nullptr);
    tables.setEquityTable(2, 4, nullptr);
    tables.setClusterTable(1, 0, nullptr);
    EXPECT_EQ(tables.getEquityTable(3, 0), equities);
    EXPECT_EQ(tables.getClusterTable(2, 1), clusters);
    tables.free(); // releases equities
    EXPECT_EQ(tables.getEquityTable(3, 0), nullptr);
    EXPECT_EQ(tables.getClusterTable(2, 1), clusters);
}

TEST(LoadGameDeathTest, EndsTheProgramWithoutAGame) {
    EXPECT_EXIT(loadGame("no/such.game"), ::testing::ExitedWithCode(1),
                "ERROR: could not open game no/such.game\n");
    EXPECT_EXIT(loadGame("/dev/null"), ::testing::ExitedWithCode(1),
                "ERROR: could not read game /dev/null\n");
}

TEST(LoadGame, ReadsADefinition) {
    const GamePtr game(loadGame(test::inTree("games/kuhn.limit.3p.game").c_str()));
    ASSERT_NE(game, nullptr);
    EXPECT_EQ(game->numPlayers, 3);
}

} // namespace
} // namespace tamarin::testing
