#include "index/hand_index_tables.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// What another file's static initialiser would see.
const unsigned setBeforeMain = handIndexTables.index_to_rank_set[rankSets - 1];

} // namespace

// Colexicographic order of sets of one size is the order of their masks as numbers.
TEST(HandIndexTables, RankSetsAreNumberedInAscendingOrder) {
    std::array<unsigned, 14> next{};
    for (unsigned set = 0; set < rankSets; ++set) {
        const auto count = static_cast<size_t>(std::popcount(set));
        ASSERT_EQ(handIndexTables.rank_set_to_index[set], next[count]);
        ASSERT_EQ(
            handIndexTables.index_to_rank_set[handIndexTables.rank_set_row[count] + next[count]],
            set);
        ++next[count];
    }
    for (size_t count = 0; count <= 13; ++count)
        EXPECT_EQ(next[count], handIndexTables.nCr_ranks[13][count]);
}

TEST(HandIndexTables, BinomialsFollowPascal) {
    const auto& nCr = handIndexTables.nCr_ranks;
    for (size_t n = 0; n <= 13; ++n)
        for (size_t r = 0; r <= 13; ++r) {
            const int expected = r == 0 || r == n ? 1
                                 : r > n          ? 0
                                                  : nCr[n - 1][r - 1] + nCr[n - 1][r];
            EXPECT_EQ(nCr[n][r], expected) << n << " " << r;
        }
    EXPECT_EQ(nCr[13][6], 1716);
}

TEST(HandIndexTables, CardsAndBitsBelongTogether) {
    for (unsigned card = 0; card < 256; ++card) {
        const uint64_t bit = handIndexTables.cardBit[card];
        const uint64_t lower = handIndexTables.lowerRanks[card];
        if (card >= 52) {
            EXPECT_EQ(bit, 0U);
            EXPECT_EQ(lower, 0U);
            continue;
        }
        const auto position = static_cast<size_t>(std::countr_zero(bit));
        EXPECT_EQ(bit, uint64_t{1} << (card % 4 * 16 + card / 4));
        EXPECT_EQ(handIndexTables.cardOfBit[position], card);
        // Lower and higher ranks make up the suit's thirteen.
        EXPECT_EQ(lower & handIndexTables.higherRanks[position], 0U);
        EXPECT_EQ(lower | handIndexTables.higherRanks[position], uint64_t{0x1FFF} << card % 4 * 16);
        EXPECT_EQ(static_cast<unsigned>(std::popcount(lower)), card / 4);
    }
}

TEST(HandIndexTables, EqualReadsTheFlagOfTheSuitBefore) {
    for (unsigned flags = 0; flags < 8; ++flags) {
        EXPECT_FALSE(handIndexTables.equal[flags][0]);
        for (unsigned suit = 1; suit < 4; ++suit)
            EXPECT_EQ(handIndexTables.equal[flags][suit], (flags & 1U << (suit - 1)) != 0);
    }
}

TEST(HandIndexTables, OrderingsAreAllAndAscend) {
    const auto& orders = handIndexTables.suit_permutations;
    EXPECT_TRUE(std::is_sorted(orders.begin(), orders.end()));
    EXPECT_EQ(std::set(orders.begin(), orders.end()).size(), 24U);
    for (auto order : orders) {
        std::sort(order.begin(), order.end());
        EXPECT_EQ(order, (std::array<uint8_t, 4>{0, 1, 2, 3}));
    }
}

TEST(HandIndexTables, StandBeforeOtherStaticInitialisers) {
    EXPECT_EQ(setBeforeMain, 0x1FFFU);
}

} // namespace tamarin::test
