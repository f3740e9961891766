#include "support/split_mix.h"

#include <cmath>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// The sequence that the algorithm's published implementations give for this seed.
TEST(SplitMix, GivesThePublishedNumbers) {
    SplitMix random(1234567);
    for (const uint64_t number : {6457827717110365317U, 3203168211198807973U, 9817491932198370423U,
                                  4593380528125082431U, 16408922859458223821U})
        EXPECT_EQ(random(), number);
}

// By the high half of the next number.
TEST(SplitMix, DrawsBelow) {
    SplitMix numbers(1234567);
    SplitMix random(1234567);
    for (const uint32_t range : {1U, 2U, 52U, 4'000'000'000U})
        EXPECT_EQ(random.below(range),
                  static_cast<uint32_t>((numbers() >> 32U) * static_cast<uint64_t>(range) >> 32U));
}

TEST(UnitInterval, TakesTheHighBits) {
    EXPECT_EQ(unitInterval(0), 0.0);
    EXPECT_EQ(unitInterval(2047), 0.0);
    EXPECT_EQ(unitInterval(uint64_t{1} << 63U), 0.5);
    EXPECT_EQ(unitInterval(~uint64_t{0}), 1.0 - 0x1p-53);
}

TEST(HandRandom, HandsShareNoNumbers) {
    std::set<double> seen;
    for (uint64_t seed = 0; seed < 10; ++seed)
        for (uint64_t hand = 0; hand < 1000; ++hand) {
            HandRandom random(seed, hand);
            for (int i = 0; i < 10; ++i) {
                const double number = random.next();
                EXPECT_GE(number, 0.0);
                EXPECT_LT(number, 1.0);
                EXPECT_TRUE(seen.insert(number).second) << seed << ' ' << hand << ' ' << i;
            }
        }
}

// The draw at one place of a hand says nothing about any place of the next hand.
TEST(HandRandom, NeighboursAreUncorrelated) {
    constexpr int hands = 20'000;
    for (int here = 0; here < 3; ++here)
        for (int there = 0; there < 3; ++there) {
            double sum = 0.0;
            for (uint64_t hand = 0; hand < hands; ++hand) {
                HandRandom a(1, hand);
                HandRandom b(1, hand + 1);
                double x = 0.0;
                double y = 0.0;
                for (int i = 0; i <= here; ++i)
                    x = a.next();
                for (int i = 0; i <= there; ++i)
                    y = b.next();
                sum += (x - 0.5) * (y - 0.5) * 12.0;
            }
            EXPECT_LT(std::abs(sum / std::sqrt(hands)), 4.5) << here << ' ' << there;
        }
}

} // namespace
} // namespace tamarin::test
