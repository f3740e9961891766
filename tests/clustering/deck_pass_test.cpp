#include "clustering/deck_pass.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// A row is the hand's own index, found card by card.
void indexRows(const hand_indexer_t* indexer, const uint8_t* board, uint64_t* rows) {
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(board, 3, left);
    for (size_t high = 1; high < cardsLeft; ++high)
        for (size_t low = 0; low < high; ++low) {
            const uint8_t cards[] = {left[high], left[low], board[0], board[1], board[2]};
            rows[holdingNumber(low, high)] = hand_index_last(indexer, cards);
        }
}

TEST(DeckPass, EveryHandGetsItsOwnBucket) {
    const RoundIndexer indexer(1);
    std::vector<uint16_t> buckets(roundSizes[1]);
    std::atomic<uint64_t> chosen{0};
    Work work;
    work.threads = 2;
    const auto totals = passOverRound<uint64_t>(
        1, buckets, work,
        [&](const uint8_t* board, uint64_t* rows) { indexRows(indexer.get(), board, rows); },
        [&](uint64_t row) {
            ++chosen;
            return BucketChoice{static_cast<uint32_t>(row % 60013),
                                static_cast<uint32_t>(row % 17)};
        });
    ASSERT_TRUE(totals.has_value());
    for (size_t hand = 0; hand < buckets.size(); ++hand)
        ASSERT_EQ(buckets[hand], hand % 60013);
    EXPECT_EQ(chosen, roundSizes[1]); // each once, whatever renamings there are
    EXPECT_EQ(totals->hands, 25989600U);

    // The sum of distances, over every flop of the deck instead of one of each class.
    uint64_t distance = 0;
    std::vector<uint64_t> rows(numHoldings(49));
    for (uint8_t a = 2; a < deckCards; ++a)
        for (uint8_t b = 1; b < a; ++b)
            for (uint8_t c = 0; c < b; ++c) {
                const uint8_t board[] = {c, b, a};
                indexRows(indexer.get(), board, rows.data());
                for (const uint64_t row : rows)
                    distance += row % 17;
            }
    EXPECT_EQ(totals->distance, distance);
}

TEST(DeckPass, StopsWhenAsked) {
    std::vector<uint16_t> buckets(roundSizes[1]);
    Work work;
    work.stop = [] { return true; };
    const auto rows = [](const uint8_t*, uint64_t* own) { std::fill_n(own, numHoldings(49), 0); };
    const auto choose = [](uint64_t) { return BucketChoice{0, 0}; };
    EXPECT_FALSE(passOverRound<uint64_t>(1, buckets, work, rows, choose).has_value());
}

} // namespace
} // namespace tamarin::test
