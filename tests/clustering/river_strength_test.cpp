#include "clustering/river_strength.h"

#include "abstraction/round_indexers.h"
#include "clustering/plain_features.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Clusters of uneven size; the aces' is a starting hand by itself, which cards can use up.
std::vector<uint8_t> unevenClusters() {
    std::vector<uint8_t> clusters(169);
    for (size_t hand = 0; hand < clusters.size(); ++hand)
        clusters[hand] = static_cast<uint8_t>(hand * hand % 7);
    clusters[90] = 7; // AA
    return clusters;
}

StrengthRow plainRow(const std::vector<uint8_t>& cards, const std::vector<uint8_t>& clusterOf,
                     uint32_t clusters) {
    const RoundIndexer indexer(0);
    const auto tallies = plainTallies(cards, [&](uint8_t a, uint8_t b) {
        const uint8_t hole[] = {a, b};
        return int{clusterOf[hand_index_last(indexer.get(), hole)]};
    });
    PlainTally all;
    for (const auto& [cluster, tally] : tallies) {
        all.wins += tally.wins;
        all.deals += tally.deals;
    }
    StrengthRow row{};
    for (uint32_t c = 0; c < clusters; ++c) {
        const auto found = tallies.find(static_cast<int>(c));
        const PlainTally own = found == tallies.end() ? all : found->second;
        // 255 x wins / (2 x deals), to the nearest, a half up.
        row[c] = static_cast<uint8_t>((2 * 255 * own.wins + 2 * own.deals) / (4 * own.deals));
    }
    return row;
}

// wins: in halves, of 2 x deals; as 0..255, rounded to the nearest, a half up.
uint32_t plainEquity(uint32_t wins, uint32_t deals) {
    return (255 * wins + deals) / (2 * deals);
}

TEST(RiverStrength, IsThePlainOne) {
    const RiverStrength strength(unevenClusters(), 8);
    std::mt19937 random(5);
    for (int i = 0; i < 30; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 7);
        const StrengthRow plain = plainRow(cards, unevenClusters(), 8);
        EXPECT_EQ(strength.row(cards.data()), plain);
        std::array<StrengthRow, riverHoldings> rows;
        strength.rows(&cards[2], rows.data());
        EXPECT_EQ(rows[holdingOn(&cards[2], 5, cards[0], cards[1])], plain);
    }
}

TEST(RiverStrength, RowsAndSingleHandsAgree) {
    const RiverStrength strength(unevenClusters(), 8);
    std::mt19937 random(6);
    for (int i = 0; i < 10; ++i) {
        const std::vector<uint8_t> board = randomCards(random, 5);
        std::array<StrengthRow, riverHoldings> rows;
        strength.rows(board.data(), rows.data());
        uint8_t left[deckCards];
        cardsWithout(board.data(), 5, left);
        for (size_t high = 1; high < 47; ++high)
            for (size_t low = 0; low < high; ++low) {
                uint8_t cards[7] = {left[high], left[low]};
                std::copy(board.begin(), board.end(), cards + 2);
                ASSERT_EQ(rows[holdingNumber(low, high)], strength.row(cards));
            }
    }
}

TEST(RiverStrength, AClusterThatIsUsedUpStandsForAllHands) {
    const RiverStrength strength(unevenClusters(), 8);
    // Three aces are seen, so that nobody has two of them.
    const std::vector<uint8_t> cards{48, 0, 49, 50, 13, 26, 39};
    const StrengthRow row = strength.row(cards.data());
    EXPECT_EQ(row, plainRow(cards, unevenClusters(), 8));
    EXPECT_EQ(row[7], plainEquity(plainPot(cards), 990));
}

TEST(RiverStrength, FewerClustersLeaveZeros) {
    std::vector<uint8_t> clusters = unevenClusters();
    for (uint8_t& cluster : clusters)
        cluster %= 3;
    const RiverStrength strength(clusters, 3);
    std::mt19937 random(7);
    for (int i = 0; i < 5; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 7);
        const StrengthRow row = strength.row(cards.data());
        EXPECT_EQ(row, plainRow(cards, clusters, 3));
        for (size_t c = 3; c < strengthWidth; ++c)
            EXPECT_EQ(row[c], 0);
    }
}

// The divisions of floating-point numbers give what whole numbers do, for every count there can be.
TEST(RiverStrength, EveryQuotientIsExact) {
    for (uint32_t deals = 1; deals <= 990; ++deals)
        for (uint32_t wins = 0; wins <= 2 * deals; ++wins) {
            const float quotient =
                scaledEquity(static_cast<int32_t>(wins), static_cast<int32_t>(deals));
            ASSERT_EQ(static_cast<uint32_t>(quotient), plainEquity(wins, deals));
        }
    EXPECT_EQ(plainEquity(990, 990), 128U); // 127.5
}

} // namespace
} // namespace tamarin::test
