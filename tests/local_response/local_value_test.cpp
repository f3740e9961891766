#include "local_response/local_value.h"

#include "local_response/plain_local.h"
#include "local_response/tree_opponent.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class LocalValues : public testing::Test {
protected:
    LocalValue value(uint64_t hands, uint64_t seed, const Work& work = {1, {}, {}}) const {
        return sampleLocalValue(table, hands, seed, work);
    }

    Measured measured{shortGame(2, 4, "2 2 2", "10 10 20", "0 1 1")};
    TreeOpponent opponent{*measured.game, measured.tree, *measured.strategy};
    BoardMargins margins{*measured.game, measured.deck};
    LocalGame table{*measured.game, measured.deck, opponent, margins, BetMenu::raise, 0};
};

TEST_F(LocalValues, DealDifferentCardsOfTheDeck) {
    std::set<std::vector<uint8_t>> seen;
    for (uint64_t i = 0; i < 200; ++i) {
        const LocalDeal deal = drawLocalDeal(measured.deck, *measured.game, 1, i);
        const std::vector<uint8_t> cards{deal.hole[0], deal.hole[1], deal.board[0], deal.board[1]};
        EXPECT_EQ(std::set(cards.begin(), cards.end()).size(), 4U);
        for (const uint8_t card : cards)
            EXPECT_TRUE(has(measured.deck.cards(), card));
        seen.insert(cards);
    }
    EXPECT_GT(seen.size(), 150U); // of 1,680
}

TEST_F(LocalValues, ThreadsChangeNothing) {
    const LocalValue one = value(1000, 7);
    EXPECT_EQ(one.hands, 1000U);
    for (const int threads : {2, 3}) {
        const LocalValue more = value(1000, 7, {threads, {}, {}});
        EXPECT_EQ(more.mean.mean, one.mean.mean);
        EXPECT_EQ(more.mean.halfWidth, one.mean.halfWidth);
        EXPECT_EQ(more.seats[0].mean, one.seats[0].mean);
        EXPECT_EQ(more.seats[1].halfWidth, one.seats[1].halfWidth);
    }
    EXPECT_NE(value(1000, 8).mean.mean, one.mean.mean);
    EXPECT_NE(value(999, 7).mean.mean, one.mean.mean);
}

// The interval holds the mean of all deals, and is not wide.
TEST_F(LocalValues, ComeToTheMeanOfAllDeals) {
    const auto exact = meanOfAllDeals(table);
    const LocalValue sampled = value(20000, 3);
    for (size_t seat = 0; seat < 2; ++seat) {
        EXPECT_NEAR(sampled.seats[seat].mean, exact[seat], 1.5 * sampled.seats[seat].halfWidth);
        EXPECT_LT(sampled.seats[seat].halfWidth, 0.5);
    }
    EXPECT_NEAR(sampled.mean.mean, (exact[0] + exact[1]) / 2, 1.5 * sampled.mean.halfWidth);
    EXPECT_GT(std::abs(exact[0] - exact[1]), 1);
}

// What was played before counts as it would have without the stop.
TEST_F(LocalValues, AreOfWhatWasPlayedBeforeAStop) {
    int asked = 0;
    uint64_t told = 0;
    const LocalValue stopped = value(
        1000, 7, {2, [&](uint64_t done, uint64_t) { told = done; }, [&] { return ++asked > 3; }});
    EXPECT_GT(stopped.hands, 0U);
    EXPECT_LT(stopped.hands, 1000U);
    EXPECT_EQ(told, stopped.hands);
    EXPECT_EQ(stopped.mean.mean, value(stopped.hands, 7).mean.mean);
}

} // namespace
} // namespace tamarin::test
