#include "eval/equity.h"

#include "eval/opponent_tally.h"

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(Equity, SharesFollowFromCounts) {
    DealCounts counts;
    counts.best[0] = 50;
    counts.best[1] = 10;
    counts.best[2] = 6;
    counts.deals = 100;
    const Equity equity = equityOf(counts);
    EXPECT_DOUBLE_EQ(equity.win, 0.5);
    EXPECT_DOUBLE_EQ(equity.tie, 0.16);
    EXPECT_DOUBLE_EQ(equity.loss, 0.34);
    EXPECT_DOUBLE_EQ(equity.pot, 0.5 + 0.05 + 0.02);
}

TEST(Equity, OfNoDealsIsZero) {
    const Equity equity = equityOf({});
    EXPECT_EQ(equity.win + equity.tie + equity.loss + equity.pot, 0);
    EXPECT_EQ(standardErrorOfPot({}), 0);
}

TEST(Equity, StandardErrorOfACoin) {
    DealCounts counts;
    counts.best[0] = 5000;
    counts.deals = 10000;
    EXPECT_NEAR(standardErrorOfPot(counts), 0.005, 1e-6);
    counts.best[0] = 10000;
    EXPECT_EQ(standardErrorOfPot(counts), 0);
}

TEST(Equity, CountsAddUp) {
    DealCounts counts;
    counts.best[1] = 3;
    counts.deals = 5;
    DealCounts twice = counts;
    twice += counts;
    EXPECT_EQ(twice, counts *= 2);
    EXPECT_EQ(twice.best[1], 6U);
    EXPECT_EQ(twice.deals, 10U);
}

TEST(OpponentTally, DealsInOrder) {
    EXPECT_EQ(opponentDeals(45, 0), 1U);
    EXPECT_EQ(opponentDeals(45, 1), 990U);
    EXPECT_EQ(opponentDeals(45, 2), 990U * 903U);
}

} // namespace tamarin::test
