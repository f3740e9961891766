#include "clustering/equity_shares.h"

#include "support/split_mix.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(EquityShares, HandsOfDifferentEquityAreSharedEvenly) {
    const std::vector<uint64_t> hands(100, 3);
    const auto limits = shareLimits(hands, 10);
    EXPECT_EQ(limits, (std::vector<uint64_t>{10, 20, 30, 40, 50, 60, 70, 80, 90, 100}));
    EXPECT_EQ(shareOf(limits, 0), 0U);
    EXPECT_EQ(shareOf(limits, 9), 0U);
    EXPECT_EQ(shareOf(limits, 10), 1U);
    EXPECT_EQ(shareOf(limits, 99), 9U);
    EXPECT_EQ(shareOf(limits, 1000), 9U);
}

TEST(EquityShares, HandsOfOneEquityStayTogether) {
    // Seven tenths of the hands have equity 2; their middle lies at 0.55.
    const std::vector<uint64_t> hands{1, 1, 7, 0, 1};
    const auto limits = shareLimits(hands, 4);
    EXPECT_EQ(shareOf(limits, 0), 0U);
    EXPECT_EQ(shareOf(limits, 1), 0U);
    EXPECT_EQ(shareOf(limits, 2), 2U);
    EXPECT_EQ(shareOf(limits, 4), 3U);
    EXPECT_EQ(limits[1], limits[0]); // an empty bucket
}

TEST(EquityShares, EveryEquityGoesWhereItsMiddleLies) {
    SplitMix random(3);
    for (const uint32_t buckets : {1U, 2U, 7U, 100U, 65535U}) {
        std::vector<uint64_t> hands(500);
        uint64_t total = 0;
        for (uint64_t& count : hands)
            total += count = random.below(4) == 0 ? 0 : random.below(1000);
        const auto limits = shareLimits(hands, buckets);
        ASSERT_EQ(limits.size(), buckets);
        uint64_t below = 0;
        for (size_t equity = 0; equity < hands.size(); ++equity) {
            if (hands[equity] != 0) {
                EXPECT_EQ(shareOf(limits, equity),
                          (2 * below + hands[equity]) * buckets / (2 * total));
            }
            below += hands[equity];
        }
    }
}

} // namespace
} // namespace tamarin::test
