#include "support/split_mix.h"

#include <cmath>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

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
