#include "table_builder/table_check.h"

#include "abstraction/sparse_tables.h"
#include "eval/seven_card_files.h"
#include "eval/seven_card_table.h"

#include <algorithm>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Check = PlayingDirectory;

std::string problemOf(const std::string& path) {
    for (const CheckedTable& table : checkTables({}))
        if (table.file->path == path)
            return table.problem;
    return "not checked";
}

void writeClusters(uint8_t first) {
    std::vector<uint8_t> clusters(roundSizes[0]);
    for (size_t i = 0; i < clusters.size(); ++i)
        clusters[i] = static_cast<uint8_t>((i * 100 + 84) / 168);
    clusters[0] = first;
    writeSparse(clusterPath(2, 0), roundSizes[0], clusters);
}

std::vector<double> rising() {
    std::vector<double> equities(roundSizes[0]);
    for (size_t i = 0; i < equities.size(); ++i)
        equities[i] = 0.3 + 0.5 * static_cast<double>(i) / 168;
    return equities;
}

TEST_F(Check, FindsNothingWrongWhereNothingIs) {
    for (const CheckedTable& table : checkTables({})) {
        EXPECT_EQ(table.state, TableState::missing);
        EXPECT_EQ(table.problem, "");
    }
}

TEST_F(Check, RemakesEveryCluster) {
    writeSparse(equityPath(2, 0), roundSizes[0], rising());
    writeClusters(0);
    EXPECT_EQ(problemOf(clusterPath(2, 0)), "");
    writeClusters(1);
    EXPECT_EQ(problemOf(clusterPath(2, 0)), "is wrong at hand 0");
}

// A look at some hands was once all that the file was trusted on.
TEST_F(Check, ComparesTheWholeSevenCardTable) {
    ASSERT_TRUE(buildSevenCardFiles("lookup").ok());
    EXPECT_EQ(problemOf(sevenCardTablePath), "");
    std::fstream file(sevenCardTablePath, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(100'000'000);
    const int byte = file.get();
    file.seekp(100'000'000).put(static_cast<char>(byte ^ 1));
    file.close();
    const auto sampled = checkSevenCardFile(sevenCardTablePath);
    ASSERT_TRUE(sampled.ok());
    EXPECT_EQ(sampled->state, TableFileState::good) << "a few hands do not show it";
    EXPECT_EQ(problemOf(sevenCardTablePath), "does not rank hands as the rules do");
}

TEST_F(Check, LooksAtRanges) {
    writeClusters(101);
    EXPECT_EQ(problemOf(clusterPath(2, 0)), "holds cluster 101 at hand 0 (byte 0), not 0..100");
    std::vector<double> equities = rising();
    writeSparse(equityPath(3, 0), roundSizes[0], equities);
    EXPECT_EQ(problemOf(equityPath(3, 0)), "");
    equities[7] = 1.5;
    writeSparse(equityPath(3, 0), roundSizes[0], equities);
    EXPECT_EQ(problemOf(equityPath(3, 0)), "holds equity 1.5 at hand 7 (byte 56), not 0..1");
    writeSparse<double>(utilityPath(2, 0, 1), roundSizes[0], {3.0});
    EXPECT_EQ(problemOf(utilityPath(2, 0, 1)), "holds utility 3 at hand 0 (byte 0), not -2..2");
    writeSparse<uint8_t>(holdemPath(2, 0, 1), roundSizes[0], {10});
    EXPECT_EQ(problemOf(holdemPath(2, 0, 1)), "holds bucket 10 at hand 0 (byte 0), not 0..9");
    writeSparse<uint8_t>(holdemPath(2, 0, 1), roundSizes[0]);
    EXPECT_EQ(problemOf(holdemPath(2, 0, 1)), "holds nothing but bucket 0");
    writeSparse<uint8_t>(holdemPath(2, 0, 0), 5);
    EXPECT_EQ(problemOf(holdemPath(2, 0, 0)), "has 5 bytes, not 169");
}

TEST_F(Check, PreflopIsTheMeanOfTheFlop) {
    // One flop of one starting hand counts: hand 0 of the flop's.
    writeSparse<double>(equityPath(2, 1), roundSizes[1], {1});
    const RoundIndexer flops(1);
    const RoundIndexer preflops(0);
    uint8_t hand[5];
    ASSERT_TRUE(hand_unindex(flops.get(), 1, 0, hand));
    const size_t start = hand_index_last(preflops.get(), hand);
    // How many of the start's flops are that one, by trying all of one pair of hole cards.
    double same = 0;
    double all = 0;
    uint8_t other[5] = {hand[0], hand[1]};
    for (uint8_t a = 0; a < 52; ++a)
        for (uint8_t b = 0; b < a; ++b)
            for (uint8_t c = 0; c < b; ++c) {
                const uint8_t cards[] = {hand[0], hand[1], a, b, c};
                if (std::set<uint8_t>(cards, cards + 5).size() < 5)
                    continue;
                std::copy_n(cards, 5, other);
                ++all;
                same += hand_index_last(flops.get(), other) == 0;
            }
    std::vector<double> mean(roundSizes[0]);
    mean[start] = same / all;
    writeSparse(equityPath(2, 0), roundSizes[0], mean);
    EXPECT_EQ(problemOf(equityPath(2, 0)), "");
    mean[168] += 0.5;
    writeSparse(equityPath(2, 0), roundSizes[0], mean);
    EXPECT_EQ(problemOf(equityPath(2, 0)), "is wrong at hand 168");
}

} // namespace
} // namespace tamarin::test
