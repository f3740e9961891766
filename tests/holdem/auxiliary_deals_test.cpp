#include "holdem/auxiliary_deals.h"

#include "solver/auxiliary_fixture.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::array<double, AuxiliaryGame::numBuckets> evenChances() {
    std::array<double, AuxiliaryGame::numBuckets> chances;
    chances.fill(0.5);
    return chances;
}

TEST(AuxiliaryDeals, DependOnTheEngineAlone) {
    const GamePtr game = auxiliaryGameOf(2, 1);
    QuickTables quick(2, 1);
    const ClusterLookup lookup{quick.tables.indexer(1), quick.tables.getClusterTable(2, 1)};
    std::vector<double> seats[2][2];
    for (auto& run : seats) {
        AuxiliaryGame auxiliary(*game);
        auxiliary.start(evenChances());
        AuxiliaryTraining training(auxiliary, lookup);
        std::minstd_rand0 engine(5);
        training.run(1, engine);
        training.run(2, engine); // in pieces, or at once
        const UtilityFiller filler(auxiliary, lookup, 1);
        run[0].resize(100);
        run[1].resize(100);
        double* tables[] = {run[0].data(), run[1].data()};
        std::minstd_rand0 other(6);
        filler.fill(1000, 1100, tables, other);
    }
    EXPECT_EQ(seats[0][0], seats[1][0]);
    EXPECT_EQ(seats[0][1], seats[1][1]);
}

TEST(AuxiliaryDeals, BetterHandsAreWorthMore) {
    const GamePtr game = auxiliaryGameOf(2, 0);
    EquityTables tables;
    // Pairs are the strongest cluster, all else the weakest but one.
    std::vector<unsigned char> clusters(169);
    for (size_t i = 0; i < 169; ++i) {
        uint8_t cards[2];
        ASSERT_TRUE(hand_unindex(&tables.preflop_indexer, 0, i, cards));
        clusters[i] = cards[0] / 4 == cards[1] / 4 ? 80 : 20;
    }
    AuxiliaryGame auxiliary(*game);
    auxiliary.start(evenChances());
    const ClusterLookup lookup{&tables.preflop_indexer, clusters.data()};
    AuxiliaryTraining training(auxiliary, lookup);
    std::minstd_rand0 engine(11);
    training.run(200, engine);
    const UtilityFiller filler(auxiliary, lookup, 0);
    double utility[2][169];
    double* at[] = {utility[0], utility[1]};
    filler.fill(0, 169, at, engine);
    for (const auto& seat : utility) {
        double pairs = 0;
        double others = 0;
        for (size_t i = 0; i < 169; ++i)
            (clusters[i] == 80 ? pairs : others) += seat[i];
        EXPECT_GT(pairs / 13, others / 156);
    }
}

} // namespace
} // namespace tamarin::test
