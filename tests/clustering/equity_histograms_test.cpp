#include "clustering/equity_histograms.h"

#include "abstraction/round_indexers.h"
#include "clustering/abstraction_check.h"
#include "clustering/equity_shares.h"
#include "clustering/plain_features.h"

#include <numeric>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const BoardSet& rivers() {
    static const BoardSet set(5);
    return set;
}
const EquityHistograms& histograms() {
    static const auto bins = riverBins(rivers(), {});
    static const EquityHistograms made(rivers(), *bins);
    return made;
}

TEST(EquityHistograms, TurnRowsAreThePlainOnes) {
    std::mt19937 random(8);
    for (int i = 0; i < 12; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 6);
        const std::vector<uint32_t> pots = plainPots(cards);
        ASSERT_EQ(pots.size(), turnRiverCount);
        const auto counts = plainCounts(pots);
        std::vector<HistogramRow> rows(numHoldings(48));
        histograms().turnRows(&cards[2], rows.data());
        const HistogramRow& row = rows[holdingOn(&cards[2], 4, cards[0], cards[1])];
        const HistogramRow single = histograms().turnRow(cards.data());
        const PlainEquities afresh = plainEquities(cards.data(), 4);
        for (size_t j = 0; j < histogramWidth; ++j) {
            EXPECT_EQ(row[j], counts[j]);
            EXPECT_EQ(single[j], counts[j]);
            EXPECT_EQ(afresh.row()[j], counts[j]);
        }
        EXPECT_EQ(afresh.sum, std::accumulate(pots.begin(), pots.end(), uint64_t{0}));
    }
}

TEST(EquityHistograms, FlopCountsAreThePlainOnes) {
    std::mt19937 random(9);
    for (int i = 0; i < 3; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 5);
        const std::vector<uint32_t> pots = plainPots(cards);
        ASSERT_EQ(pots.size(), flopRiverCount);
        const auto counts = plainCounts(pots);
        std::vector<EquityHistograms::Counts> rows(numHoldings(49));
        histograms().flopCounts(&cards[2], rows.data());
        const auto& row = rows[holdingOn(&cards[2], 3, cards[0], cards[1])];
        const HistogramRow scaled = scaledRow(row);
        const PlainEquities afresh = plainEquities(cards.data(), 3);
        for (size_t j = 0; j < histogramWidth; ++j) {
            EXPECT_EQ(row[j], counts[j]);
            EXPECT_EQ(scaled[j], scaledCount(counts[j], 1081));
            EXPECT_EQ(afresh.row()[j], scaled[j]);
        }
        EXPECT_EQ(afresh.sum, std::accumulate(pots.begin(), pots.end(), uint64_t{0}));
    }
}

TEST(EquityHistograms, EarlyOnesAddUp) {
    Work work;
    work.threads = 1;
    const auto one = earlyHistograms(histograms(), work);
    work.threads = 3;
    const auto early = earlyHistograms(histograms(), work);
    ASSERT_TRUE(early.ok());
    EXPECT_EQ(early->flop, one->flop);
    EXPECT_EQ(early->preflop, one->preflop);
    EXPECT_EQ(early->preflopStrength, one->preflopStrength);
    EXPECT_EQ(std::accumulate(early->flopHands.begin(), early->flopHands.end(), uint64_t{0}),
              25989600U);
    const RoundIndexer indexer(1);
    std::mt19937 random(10);
    for (int i = 0; i < 20; ++i) {
        const std::vector<uint8_t> cards = randomCards(random, 5);
        std::vector<EquityHistograms::Counts> rows(numHoldings(49));
        histograms().flopCounts(&cards[2], rows.data());
        EXPECT_EQ(early->flop[hand_index_last(indexer.get(), cards.data())],
                  scaledRow(rows[holdingOn(&cards[2], 3, cards[0], cards[1])]));
    }
    const auto hands = startingHandCounts();
    for (size_t hand = 0; hand < hands.size(); ++hand)
        EXPECT_EQ(early->preflopDeals[hand], uint64_t{hands[hand]} * 19600 * 1081);
    // Aces are the strongest, 32 of different suits the weakest; and in between.
    const auto ranks = ranksOfStartingHands(*early);
    const RoundIndexer preflop(0);
    const auto rankOf = [&](uint8_t a, uint8_t b) {
        const uint8_t cards[] = {a, b};
        return ranks[hand_index_last(preflop.get(), cards)];
    };
    EXPECT_EQ(rankOf(48, 49), 168);
    EXPECT_EQ(rankOf(44, 45), 167);
    EXPECT_EQ(rankOf(0, 5), 0);
    std::array<bool, 169> seen{};
    for (const uint16_t rank : ranks)
        seen[rank] = true;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), true), 169);
}

TEST(EquityHistograms, StartingHandsStandForTheDeck) {
    const auto hands = startingHandCounts();
    EXPECT_EQ(std::accumulate(hands.begin(), hands.end(), 0), 1326);
    EXPECT_EQ(std::count(hands.begin(), hands.end(), 6), 13);
    EXPECT_EQ(std::count(hands.begin(), hands.end(), 4), 78);
}

TEST(EquityShares, PotSumsAreThePlainOnes) {
    const auto pots = riverPotTable(rivers(), {});
    ASSERT_TRUE(pots.ok());
    std::mt19937 random(11);
    for (const size_t boardCards : {3U, 4U, 4U}) {
        const std::vector<uint8_t> cards = randomCards(random, boardCards + 2);
        const int count = static_cast<int>(boardCards);
        std::vector<uint32_t> sums(numHoldings(deckCards - boardCards));
        potSums(rivers(), *pots, &cards[2], count, sums.data());
        EXPECT_EQ(sums[holdingOn(&cards[2], count, cards[0], cards[1])],
                  plainEquities(cards.data(), count).sum);
    }
}

TEST(EquityHistograms, StopWhenAsked) {
    Work work;
    work.stop = [] { return true; };
    EXPECT_FALSE(riverBins(rivers(), work).ok());
    EXPECT_FALSE(earlyHistograms(histograms(), work).ok());
}

} // namespace
} // namespace tamarin::test
