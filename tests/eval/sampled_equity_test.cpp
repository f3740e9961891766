#include "eval/sampled_equity.h"

#include "eval/exact_equity.h"
#include "eval/plain_equity.h"
#include "eval/ranges_of.h"
#include "support/split_mix.h"

#include <array>
#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

constexpr uint64_t deals = 400 * sampleBlock;

// Every count within 4.5 standard errors of the exact share; the seed is fixed, so this is no coin.
void expectNear(const DealCounts& sample, const DealCounts& exact) {
    for (size_t k = 0; k < exact.best.size(); ++k) {
        const double p = static_cast<double>(exact.best[k]) / static_cast<double>(exact.deals);
        const double n = static_cast<double>(sample.deals);
        EXPECT_NEAR(static_cast<double>(sample.best[k]) / n, p,
                    4.5 * std::sqrt(p * (1 - p) / n) + 1e-12)
            << k;
    }
}

} // namespace

TEST(SampledEquity, AgreesWithExactCounts) {
    for (int opponents = 1; opponents <= 2; ++opponents) {
        const std::vector<CardSet> hand{plain::cards("AsKd")};
        const CardSet flop = plain::cards("Qs8h3d");
        expectNear(sampledEquity(rangesOf({"AsKd"}), flop, opponents, deals, 7),
                   exactEquity(hand, flop, opponents));
        expectNear(sampledEquity(rangesOf({"AsKd"}), 0, opponents, deals, 8),
                   exactEquity(hand, 0, opponents));
    }
}

TEST(SampledEquity, RangesAreDrawnAsCombinations) {
    DealCounts exact;
    const auto ranges = rangesOf({"AK", "AA,AsQs"});
    for (const CardSet a : ranges[0].hands)
        for (const CardSet b : ranges[1].hands)
            if ((a & b) == 0) {
                const std::vector<CardSet> hands{a, b};
                exact += exactEquity(hands, 0, 0);
            }
    expectNear(sampledEquity(ranges, 0, 0, deals, 9), exact);
}

TEST(SampledEquity, SeedDecidesAndThreadsDoNot) {
    const auto ranges = rangesOf({"AKs", "22+"});
    const DealCounts one = sampledEquity(ranges, 0, 3, 50000, 5, 1);
    EXPECT_EQ(one.deals, 50176U); // whole blocks
    EXPECT_EQ(one, sampledEquity(ranges, 0, 3, 50000, 5, 4));
    EXPECT_NE(one, sampledEquity(ranges, 0, 3, 50000, 6, 1));
}

// What a seed gives is the same on every machine.
TEST(SampledEquity, SeedGivesTheseCounts) {
    const DealCounts two = sampledEquity(rangesOf({"AsKd"}), 0, 1, 4096, 5, 3);
    EXPECT_EQ(two.best[0], 2629U);
    EXPECT_EQ(two.best[1], 72U);
    const DealCounts three =
        sampledEquity(rangesOf({"A5s,77", "76s"}), plain::cards("Qs8h3d"), 1, 4096, 6, 1);
    EXPECT_EQ(three.best[0], 1807U);
    EXPECT_EQ(three.best[1], 71U);
}

// Hands, boards and numbers of opponents at random: all wins, ties and losses together as near to
// the exact shares as chance allows and no nearer, by chi-square. A card that came too often or
// never would be seen wherever it decides.
TEST(SampledEquity, WinsTiesAndLossesAreSpreadAsChanceDoes) {
    SplitMix random(43);
    double chiSquare = 0;
    double freedom = 0;
    for (int i = 0; i < 300; ++i) {
        std::vector<CardSet> cards;
        CardSet used = 0;
        while (cards.size() < 7) {
            const CardSet card = cardBit(static_cast<uint8_t>(random.below(52)));
            if ((used & card) == 0)
                cards.push_back(card);
            used |= card;
        }
        const CardSet hand = cards[0] | cards[1];
        CardSet board = cards[2] | cards[3] | cards[4] | cards[5];
        if (i % 2 == 0)
            board |= cards[6];
        const int opponents = 1 + i / 2 % 2;
        const DealCounts exact = exactEquity(std::span(&hand, 1), board, opponents);
        const std::vector<HandRange> range{{"some", {hand}}};
        const DealCounts sample =
            sampledEquity(range, board, opponents, 16 * sampleBlock, random(), 1);
        const auto shares = [](const DealCounts& counts) {
            const Equity equity = equityOf(counts);
            return std::array{equity.win, equity.tie, equity.loss};
        };
        for (size_t k = 0; k < 3; ++k) {
            const double expected = shares(exact)[k] * static_cast<double>(sample.deals);
            if (expected < 10)
                continue;
            const double off = shares(sample)[k] * static_cast<double>(sample.deals) - expected;
            chiSquare += off * off / expected;
            freedom += 1 - shares(exact)[k]; // on average over what was left out
        }
    }
    EXPECT_GT(freedom, 300);
    EXPECT_NEAR(chiSquare, freedom, 4 * std::sqrt(2 * freedom));
}

TEST(SampledEquity, NineOpponents) {
    const DealCounts counts = sampledEquity(rangesOf({"AA"}), 0, 9, 200000, 1);
    EXPECT_NEAR(equityOf(counts).pot, 0.31, 0.01); // aces hold up in three of ten full tables
}

TEST(SampledEquity, StopsWhenAsked) {
    const DealCounts counts =
        sampledEquity(rangesOf({"AA"}), 0, 9, 1000000000, 1, 1, {}, [] { return true; });
    EXPECT_EQ(counts.deals, sampleBlock);
}

// One that left the parallel region there would end the process, with a single thread too.
TEST(SampledEquity, AnExceptionOfACallbackReachesTheCaller) {
    const auto fails = [](auto&&...) -> bool { throw std::runtime_error("enough"); };
    EXPECT_THROW(sampledEquity(rangesOf({"AsKd"}), 0, 1, deals, 7, 1, fails), std::runtime_error);
    EXPECT_THROW(sampledEquity(rangesOf({"AsKd"}), 0, 1, deals, 7, 1, nullptr, fails),
                 std::runtime_error);
}

} // namespace tamarin::test
