#include "response/flop_sample.h"

#include "game/games.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

struct Limit {
    GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    PublicDeck deck{*game};
    std::vector<PublicBoard> flops = deck.extend(deck.empty(), 3);

    std::vector<uint8_t> cards(const std::string& text) const {
        std::vector<uint8_t> read(text.size() / 2);
        int consumed = 0;
        EXPECT_EQ(readCards(text.c_str(), static_cast<int>(read.size()), read.data(), &consumed),
                  static_cast<int>(read.size()));
        return read;
    }
};

// Over many draws each flop comes as often as the deck deals it.
TEST(FlopSample, DrawsByWeight) {
    const Limit limit;
    std::map<unsigned, double> drawn; // by weight
    size_t all = 0;
    for (uint64_t seed = 0; seed < 60; ++seed)
        for (const auto& pair : drawFlops(limit.flops, 100, seed).pairs)
            for (const size_t place : pair) {
                ++drawn[limit.flops[place].weight];
                ++all;
            }
    std::map<unsigned, double> expected;
    for (const PublicBoard& flop : limit.flops)
        expected[flop.weight] += flop.weight / 22100.0;
    EXPECT_EQ(all, 6'000U);
    ASSERT_EQ(drawn.size(), expected.size());
    for (const auto& [weight, share] : expected)
        EXPECT_NEAR(drawn[weight] / 6'000, share, 0.02) << weight;
}

// Pairs come from layers: as many of one suit as there should be, give or take a layer.
TEST(FlopSample, HasSomeOfEveryKind) {
    const Limit limit;
    for (uint64_t seed = 0; seed < 20; ++seed) {
        std::map<size_t, int> suits;
        for (const auto& pair : drawFlops(limit.flops, 200, seed).pairs)
            for (const size_t place : pair) {
                std::set<int> different;
                for (const uint8_t card : limit.flops[place].cards)
                    different.insert(card % 4);
                ++suits[different.size()];
            }
        EXPECT_NEAR(suits[1], 200 * 1144 / 22100.0, 2) << seed; // of one suit 5.2 %
        EXPECT_NEAR(suits[2], 200 * 12168 / 22100.0, 2) << seed;
    }
}

TEST(FlopSample, SeedsTellDrawsApart) {
    const Limit limit;
    EXPECT_EQ(drawFlops(limit.flops, 20, 5).pairs, drawFlops(limit.flops, 20, 5).pairs);
    EXPECT_NE(drawFlops(limit.flops, 20, 5).pairs, drawFlops(limit.flops, 20, 6).pairs);
    const FlopSample sample{{{4, 9}, {9, 2}}};
    EXPECT_EQ(sample.distinct(), (std::vector<size_t>{2, 4, 9}));
}

// Two layers: half the mean distance of a pair is what a layer's mean is off by.
TEST(FlopSample, PairsSayHowSurelyAMeanIsKnown) {
    const Interval interval = intervalOf({{{1, 3}, {2, 8}}});
    EXPECT_DOUBLE_EQ(interval.mean, 3.5);
    EXPECT_NEAR(interval.halfWidth, 4.30265 * std::sqrt(10) / 2, 1e-3);
    EXPECT_EQ(intervalOf({{{5, 5}, {7, 7}}}).halfWidth, 0);
}

TEST(FlopSample, FindsFlopsUpToSuits) {
    const Limit limit;
    const auto place = findFlop(limit.deck, limit.flops, limit.cards("2c7dKh"));
    ASSERT_TRUE(place.ok());
    EXPECT_EQ(limit.flops[*place].weight, 24U);
    EXPECT_EQ(*findFlop(limit.deck, limit.flops, limit.cards("Ks7h2d")), *place);
    EXPECT_NE(*findFlop(limit.deck, limit.flops, limit.cards("Ks7s2d")), *place);
    for (const char* none : {"2c7d", "2c7dKhAs", "2c2c7d"}) {
        const auto refused = findFlop(limit.deck, limit.flops, limit.cards(none));
        ASSERT_FALSE(refused.ok()) << none;
        EXPECT_EQ(refused.error(), "not a flop of this game");
    }
}

} // namespace
} // namespace tamarin::test
