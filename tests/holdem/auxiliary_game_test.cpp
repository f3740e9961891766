#include "holdem/auxiliary_game.h"

#include "solver/auxiliary_fixture.h"

#include <limits>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(AuxiliaryGame, FitsTheAuxiliaryGamesAndNoOthers) {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < 4; ++round)
            EXPECT_TRUE(AuxiliaryGame::fits(*auxiliaryGameOf(players, round)));
    EXPECT_FALSE(AuxiliaryGame::fits(*kuhn3()));
    EXPECT_FALSE(AuxiliaryGame::fits(*holdem2()));
    EXPECT_FALSE(AuxiliaryGame::fits(*twoCards()));
}

// A solver of the two-player pre-flop game, with its tree and before any training.
class AuxiliaryNodes : public ::testing::Test {
protected:
    AuxiliaryNodes() {
        solver.setEquityTables(&quick.tables);
        const QuietOutput quiet;
        solver.trainIS(0, quick.tables.indexer(0), 0, 0);
    }
    const GamePtr game = auxiliaryGameOf(2, 0);
    QuickTables quick{2, 0};
    CFR solver{game.get()};
};

// start() against the solver's own tree and elimination.
TEST_F(AuxiliaryNodes, StartAsTheSolversDo) {
    AuxiliaryGame fromNodes(*game);
    ASSERT_TRUE(fromNodes.read(&solver.nodeMap(0, 0)));
    AuxiliaryGame fresh(*game);
    std::array<double, AuxiliaryGame::numBuckets> winProb;
    for (int b = 0; b < AuxiliaryGame::numBuckets; ++b)
        winProb[static_cast<size_t>(b)] =
            quick.tables.clusterToEquity(static_cast<unsigned char>(b), 2, 0);
    fresh.start(winProb);

    const AuxiliaryGame::Values left(fromNodes);
    const AuxiliaryGame::Values right(fresh);
    const AuxiliaryGame::Ranks seat0Wins{2, 1, -1};
    for (uint8_t a = 0; a < AuxiliaryGame::numBuckets; ++a)
        for (uint8_t b = 0; b < AuxiliaryGame::numBuckets; ++b) {
            const uint8_t buckets[] = {a, b};
            const uint32_t outcome = AuxiliaryGame::outcome(seat0Wins);
            EXPECT_EQ(left.ofPair(buckets, outcome), right.ofPair(buckets, outcome));
        }
}

TEST(AuxiliaryGame, ValuesOfAnUntrainedGameAddUpToNothing) {
    const GamePtr game = auxiliaryGameOf(3, 0);
    AuxiliaryGame auxiliary(*game);
    std::array<double, AuxiliaryGame::numBuckets> even;
    even.fill(0.5);
    auxiliary.start(even);
    const AuxiliaryGame::Values values(auxiliary);
    const uint8_t buckets[] = {1, 50, 99};
    const AuxiliaryGame::Ranks ranks{5, 9, 9};
    double util[3];
    values.of(buckets, AuxiliaryGame::outcome(ranks), util);
    EXPECT_NEAR(util[0] + util[1] + util[2], 0, 1e-12);
    EXPECT_LT(util[0], 0);
    EXPECT_GT(util[1], 0);
}

TEST_F(AuxiliaryNodes, WithNumbersThatNoTrainingLeavesAreRefused) {
    AuxiliaryGame auxiliary(*game);
    CFRNode& node = *solver.nodeMap(1, 0).at("1:0:50:c");
    for (const double sum : {-0.5, -std::numeric_limits<double>::infinity()}) {
        node.strategySum[1] = sum;
        EXPECT_FALSE(auxiliary.read(&solver.nodeMap(0, 0))) << sum;
    }
    node.strategySum[1] = 0.5;
    EXPECT_TRUE(auxiliary.read(&solver.nodeMap(0, 0)));
    node.regretSum[1] = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(auxiliary.read(&solver.nodeMap(0, 0)));
}

TEST(AuxiliaryGame, RefusesNodesOfAnotherTree) {
    const GamePtr game = auxiliaryGameOf(2, 0);
    NodeMap maps[2];
    AuxiliaryGame auxiliary(*game);
    EXPECT_FALSE(auxiliary.read(maps));
}

} // namespace
} // namespace tamarin::test
