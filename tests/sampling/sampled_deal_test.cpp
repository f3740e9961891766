#include "sampling/sampled_deal.h"

#include "sampling/small_training.h"

#include <map>
#include <set>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

TEST(SampledDeal, EveryDealIsAsLikelyAsAnyOther) {
    const GamePtr game = test::parseGame(test::leduc);
    const test::RankBuckets buckets;
    const DealSampler sampler(*game, buckets);
    std::map<std::array<uint8_t, 3>, int> counts;
    State state{};
    constexpr int deals = 120'000;
    for (uint64_t i = 0; i < deals; ++i) {
        sampler.draw(4, i, state);
        ++counts[{state.holeCards[0][0], state.holeCards[1][0], state.boardCards[0]}];
    }
    ASSERT_EQ(counts.size(), 120U);
    double chiSquare = 0;
    for (const auto& [cards, count] : counts) {
        EXPECT_GE(cards[0], (13 - 3) * 4); // the deck of the rules: its highest ranks
        chiSquare += (count - 1000.0) * (count - 1000.0) / 1000.0;
    }
    EXPECT_LT(chiSquare, 180); // 119 degrees of freedom: one seed in 4,000 is beyond
}

TEST(SampledDeal, DependsOnSeedAndNumber) {
    const GamePtr game = test::loadGameFile("holdem.limit.3p.game");
    const test::RankBuckets buckets;
    const DealSampler sampler(*game, buckets);
    const auto cards = [&](uint64_t seed, uint64_t number) {
        State state{};
        sampler.draw(seed, number, state);
        std::vector<int> all;
        for (size_t seat = 0; seat < 3; ++seat)
            all.insert(all.end(), {state.holeCards[seat][0], state.holeCards[seat][1]});
        all.insert(all.end(), state.boardCards, state.boardCards + 5);
        EXPECT_EQ(std::set<int>(all.begin(), all.end()).size(), 11U);
        return all;
    };
    EXPECT_EQ(cards(1, 7), cards(1, 7));
    EXPECT_NE(cards(1, 7), cards(1, 8));
    EXPECT_NE(cards(1, 7), cards(2, 7));
}

TEST(SampledDeal, LooksUpWhatEachSeatSees) {
    const GamePtr game = test::parseGame(test::leduc);
    const test::RankBuckets buckets;
    const DealSampler sampler(*game, buckets);
    State state{};
    const std::array<uint8_t, 3> cards{40, 49,
                                       45}; // queen and ace, in the hole; a king on the board
    placeCards(*game, cards.data(), &state);
    SampledDeal deal;
    sampler.lookUp(state, deal);
    EXPECT_EQ(deal.buckets[0][0], cardField(40));
    EXPECT_EQ(deal.buckets[0][1], cardField(49));
    EXPECT_EQ(deal.buckets[1][0], cardField(40) * 4 + cardField(45));
    EXPECT_EQ(deal.buckets[1][1], cardField(49) * 4 + cardField(45));
    EXPECT_NE(deal.buckets[1][0], deal.buckets[1][1]);
}

} // namespace
} // namespace tamarin
