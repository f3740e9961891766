#include "abstraction/EquityTables.h"
#include "abstraction/sparse_tables.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Clusters = PlayingDirectory;

// Pre-flop equities rise with the index, so that every hand's cluster can be said beforehand.
double risingEquity(size_t index) {
    return 0.2 + 0.6 * static_cast<double>(index) / (roundSizes[0] - 1);
}

void setRisingPreflop(EquityTables& tables) {
    auto* const table = new double[roundSizes[0]];
    for (size_t i = 0; i < roundSizes[0]; ++i)
        table[i] = risingEquity(i);
    tables.setEquityTable(2, 0, table);
}

TEST_F(Clusters, DoClusterCutsTheRangeIntoHundredAndWritesIt) {
    std::vector<double> equities{0.5, 0, 1, 0.005, 0.00499, 0.995};
    const std::unique_ptr<unsigned char[]> clusters(
        doCluster(equities.size(), equities.data(), "lookup/some_c"));
    const std::vector<int> expected{50, 0, 100, 1, 0, 100}; // halves go up
    for (size_t i = 0; i < equities.size(); ++i)
        EXPECT_EQ(clusters[i], expected[i]) << i;
    EXPECT_EQ(std::filesystem::file_size("lookup/some_c"), equities.size());
}

TEST_F(Clusters, OfNothingButEqualEquitiesAreAllZero) {
    std::vector<double> equities(5, 0.5);
    const std::unique_ptr<unsigned char[]> clusters(doCluster(5, equities.data(), "lookup/some_c"));
    for (size_t i = 0; i < 5; ++i)
        EXPECT_EQ(clusters[i], 0);
}

void writeSmallClusters() {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            writeWhole(clusterPath(players, round), smallBytes(players, round, 0, 100));
}

TEST_F(Clusters, EachTableComesFromItsOwnFile) {
    writeSmallClusters();
    SmallTables tables;
    const Said said = saidDuring([&] { tables.loadCluster(); });
    EXPECT_EQ(said.errors, "");
    EXPECT_EQ(said.output, "pre-flop size: 169\nflop size: 1009\nturn size: 1006\n"
                           "river size: 1003\nloading clusters...\n"
                           "Cluster tables loaded from file!\n");
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const std::vector<uint8_t> right = smallBytes(players, round, 0, 100);
            EXPECT_EQ(copyOf(tables.getClusterTable(players, round), right.size()), right);
            EXPECT_EQ(tables.getCluster(static_cast<unsigned char>(8), players, round), right[8]);
            const auto first = static_cast<size_t>(
                std::find(right.begin(), right.end(), right[160]) - right.begin());
            EXPECT_EQ(tables.findClusterIndex(right[160], players, round), first);
        }
}

// From the equities of the same players and round.
void expectMadeClusters(SmallTables& tables) {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const std::vector<double> equities = smallEquities(players, round);
            const auto [least, greatest] = std::ranges::minmax(equities);
            std::vector<uint8_t> right;
            for (const double equity : equities)
                right.push_back(
                    static_cast<uint8_t>(std::round((equity - least) / (greatest - least) * 100)));
            EXPECT_EQ(copyOf(tables.getClusterTable(players, round), right.size()), right)
                << players << ' ' << round;
            EXPECT_EQ(readWhole<uint8_t>(clusterPath(players, round)), right);
        }
}

TEST_F(Clusters, OneMissingFileMakesAllEightAnew) {
    writeSmallEquities();
    writeSmallClusters();
    std::filesystem::remove(clusterPath(3, 1));
    SmallTables tables;
    EXPECT_EQ(saidDuring([&] { tables.loadCluster(); }).output,
              "pre-flop size: 169\nflop size: 1009\nturn size: 1006\nriver size: 1003\n"
              "loading clusters...\n"
              "generating pre-flop clusters 2p\ngenerating pre-flop clusters 3p\n"
              "generating flop clusters 2p\ngenerating flop clusters 3p\n"
              "generating turn clusters 2p\ngenerating turn clusters 3p\n"
              "generating river clusters 2p\ngenerating river clusters 3p\n");
    expectMadeClusters(tables);
}

TEST_F(Clusters, OneDamagedFileMakesAllEightAnew) {
    writeSmallEquities();
    writeSmallClusters();
    std::vector<uint8_t> damaged = smallBytes(2, 3, 0, 100);
    damaged[1002] = 101;
    writeWhole(clusterPath(2, 3), damaged);
    SmallTables tables;
    EXPECT_EQ(saidDuring([&] { tables.loadCluster(); }).errors,
              "ERROR: lookup/river_2p_c holds cluster 101 at hand 1002 (byte 1002), not 0..100: "
              "rebuilding it\n");
    expectMadeClusters(tables);
    EXPECT_EQ(readWhole<uint8_t>(clusterPath(2, 3) + ".bad"), damaged);
}

TEST_F(Clusters, OfAHandIsThatOfItsIndex) {
    EquityTables tables;
    setRisingPreflop(tables);
    unsigned char clusters[169];
    for (size_t i = 0; i < 169; ++i)
        clusters[i] = static_cast<unsigned char>(i % 101);
    tables.setClusterTable(2, 0, clusters);
    for (size_t i = 0; i < 169; ++i) {
        unsigned char cards[2];
        ASSERT_TRUE(hand_unindex(&tables.preflop_indexer, 0, i, cards));
        EXPECT_EQ(tables.getCluster(cards, 2, 0), clusters[i]);
    }
}

TEST_F(Clusters, AndEquitiesGoBackAndForth) {
    EquityTables tables;
    setRisingPreflop(tables);
    EXPECT_EQ(tables.equityToCluster(0.2, 2, 0), 0);
    EXPECT_EQ(tables.equityToCluster(risingEquity(168), 2, 0), 100);
    EXPECT_LT(tables.equityToCluster(0.1, 2, 0), 0);
    EXPECT_GT(tables.equityToCluster(0.95, 2, 0), 100);
    for (double equity = 0.2; equity < 0.8; equity += 0.0013) {
        const auto cluster = static_cast<unsigned char>(tables.equityToCluster(equity, 2, 0));
        EXPECT_LE(std::fabs(tables.clusterToEquity(cluster, 2, 0) - equity), 0.6 / 200 + 1e-12);
    }
}

TEST_F(Clusters, LastHandOfAClusterThatTheFirstIndexRoundKnows) {
    EquityTables tables;
    std::vector<unsigned char> clusters(roundSizes[1], 3);
    clusters[168] = 4;
    tables.setClusterTable(2, 1, clusters.data());
    unsigned char cards[2];
    EXPECT_EQ(tables.findClusterIndexHand(3, 2, 1, cards), 0);
    EXPECT_EQ(hand_index_last(&tables.preflop_indexer, cards), 167U);
    tables.findClusterIndexHand(4, 2, 1, cards);
    EXPECT_EQ(hand_index_last(&tables.preflop_indexer, cards), 168U);
}

} // namespace
} // namespace tamarin::test
