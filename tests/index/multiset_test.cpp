#include "index/multiset.h"

#include <array>
#include <random>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// Four suits that could hold more rank sets than this would not fit 64 bits.
uint64_t largestSize(unsigned m) {
    return m == 4 ? 140000 : maxGroupIndex - 4;
}

} // namespace

// The rows of Pascal's triangle one after the other, modulo 2^64, for every n there can be.
TEST(GroupBinomials, AreThoseOfPascal) {
    std::array<uint64_t, 5> row = {1, 0, 0, 0, 0};
    uint64_t wrong = 0;
    for (uint64_t n = 0; n < maxGroupIndex; ++n) {
        for (unsigned k = 0; k <= 4; ++k)
            wrong += nCr_groups[n][k] != row[k];
        for (unsigned k = 4; k >= 1; --k)
            row[k] += row[k - 1];
    }
    EXPECT_EQ(wrong, 0U);
}

TEST(Multiset, CountsByHand) {
    EXPECT_EQ(multisetCount(13, 1), 13U);
    EXPECT_EQ(multisetCount(13, 2), 91U);
    EXPECT_EQ(multisetCount(1, 4), 1U);
    EXPECT_EQ(multisetCount(2, 3), 4U);
}

TEST(Multiset, RanksAreDenseInOrder) {
    const uint32_t size = 12;
    uint64_t next = 0;
    for (uint32_t d = 0; d < size; ++d)
        for (uint32_t c = 0; c <= d; ++c)
            for (uint32_t b = 0; b <= c; ++b)
                for (uint32_t a = 0; a <= b; ++a) {
                    const std::array<uint32_t, 4> x = {a, b, c, d};
                    ASSERT_EQ(multisetRank(x.data(), 4), next);
                    std::array<uint32_t, 4> back{};
                    multisetUnrank(next, 4, back.data());
                    ASSERT_EQ(back, x);
                    ++next;
                }
    EXPECT_EQ(next, multisetCount(size, 4));
}

// The first and the last multiset of every largest member, where an inexact root would show.
TEST(Multiset, PairRootsAreExactAtEveryStep) {
    uint64_t wrong = 0;
    for (uint64_t top = 0; top < maxGroupIndex; ++top) {
        wrong += pairTop(top * (top + 1) / 2) != top;
        wrong += pairTop((top + 1) * (top + 2) / 2 - 1) != top;
    }
    EXPECT_EQ(wrong, 0U);
}

TEST(Multiset, RootsAreExactAtEveryStep) {
    for (unsigned m = 3; m <= 4; ++m) {
        uint64_t wrong = 0;
        for (uint64_t top = 0; top < largestSize(m); ++top) {
            wrong += multisetTop(nCr_groups[top + m - 1][m], m) != top;
            wrong += multisetTop(nCr_groups[top + m][m] - 1, m) != top;
        }
        EXPECT_EQ(wrong, 0U) << m;
    }
}

TEST(Multiset, RandomRanksComeBack) {
    std::mt19937_64 random(1);
    for (unsigned m = 1; m <= 4; ++m)
        for (int i = 0; i < 100000; ++i) {
            const uint64_t rank = random() % multisetCount(largestSize(m), m);
            std::array<uint32_t, 4> x{};
            multisetUnrank(rank, m, x.data());
            for (unsigned k = 1; k < m; ++k)
                ASSERT_LE(x[k - 1], x[k]);
            ASSERT_EQ(multisetRank(x.data(), m), rank);
        }
}

} // namespace tamarin::test
