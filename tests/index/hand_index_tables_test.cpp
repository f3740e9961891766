#include "index/hand_index_tables.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <set>

#include <gtest/gtest.h>

using namespace tamarin;

namespace {

// What another file's static initialiser would see.
const unsigned setBeforeMain = handIndexTables.index_to_rank_set[13][0];

} // namespace

// Colexicographic order of sets of one size is the order of their masks as numbers.
TEST(HandIndexTables, RankSetsAreNumberedInAscendingOrder) {
    std::array<unsigned, 14> next{};
    for (unsigned set = 0; set < rankSets; ++set) {
        const auto count = static_cast<size_t>(std::popcount(set));
        ASSERT_EQ(handIndexTables.rank_set_to_index[set], next[count]);
        ASSERT_EQ(handIndexTables.index_to_rank_set[count][next[count]], set);
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

TEST(HandIndexTables, NthUnsetIsTheNthZeroBit) {
    for (unsigned set = 0; set < rankSets; ++set)
        for (unsigned n = 0; n < 13; ++n) {
            const unsigned position = handIndexTables.nth_unset[set][n];
            ASSERT_FALSE(set >> position & 1U);
            const unsigned below = set & ((1U << position) - 1);
            ASSERT_EQ(position - static_cast<unsigned>(std::popcount(below)), n);
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
