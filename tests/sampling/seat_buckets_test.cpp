#include "sampling/seat_buckets.h"

#include "abstraction/round_indexers.h"
#include "abstraction/sparse_tables.h"
#include "clustering/sparse_abstraction.h"

#include <gtest/gtest.h>

namespace tamarin {
namespace {

using SeatBucketsTest = test::PlayingDirectory;

TEST_F(SeatBucketsTest, AreThoseOfTheAbstraction) {
    test::writeSparseAbstraction("few");
    const auto abstraction = CardAbstraction::open(".", "few");
    ASSERT_TRUE(abstraction.ok()) << abstraction.error();
    const AbstractionSeatBuckets buckets(*abstraction);
    const auto first = test::sparseFirstBuckets();
    for (int round = 0; round < holdemRounds; ++round) {
        const auto r = static_cast<size_t>(round);
        EXPECT_EQ(buckets.numBuckets(round), test::sparseCounts[r]);
        const RoundIndexer indexer(round);
        for (size_t hand = 0; hand < first[r].size(); ++hand) {
            std::array<uint8_t, 7> cards{};
            ASSERT_TRUE(hand_unindex(indexer.get(), lastIndexRound(round), hand, cards.data()));
            const std::span<const uint8_t> all(cards);
            const auto board = all.subspan(2, static_cast<size_t>(roundBoardCards[r]));
            EXPECT_EQ(buckets.bucket(round, all.first(2), board), first[r][hand])
                << round << ' ' << hand;
            const std::array<uint8_t, 2> swapped{cards[1], cards[0]};
            EXPECT_EQ(buckets.bucket(round, swapped, board), first[r][hand]);
        }
    }
}

} // namespace
} // namespace tamarin
