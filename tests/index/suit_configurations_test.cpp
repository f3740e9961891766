#include "index/suit_configurations.h"

#include <algorithm>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

using Structure = std::vector<uint8_t>;

std::vector<std::set<SuitWords>> configurations(const Structure& structure) {
    std::vector<std::set<SuitWords>> found(structure.size());
    forEachConfiguration(structure, [&](unsigned round, const SuitWords& words, unsigned equal) {
        EXPECT_TRUE(found[round].insert(words).second) << "visited twice";
        for (unsigned suit = 0; suit < 3; ++suit)
            EXPECT_EQ(equal >> suit & 1U, words[suit] == words[suit + 1] ? 1U : 0U);
    });
    return found;
}

} // namespace

TEST(SuitConfigurations, OfHoleCards) {
    EXPECT_EQ(configurations({2})[0], (std::set<SuitWords>{{1, 1, 0, 0}, {2, 0, 0, 0}}));
}

TEST(SuitConfigurations, OfTwoRoundsOfOneCard) {
    EXPECT_EQ(configurations({1, 1})[1],
              (std::set<SuitWords>{{0x10, 0x01, 0, 0}, {0x11, 0, 0, 0}}));
}

TEST(SuitConfigurations, SuitsHoldNoMoreThanThirteen) {
    EXPECT_EQ(configurations({52})[0], (std::set<SuitWords>{{13, 13, 13, 13}}));
    EXPECT_EQ(configurations({50})[0], (std::set<SuitWords>{{13, 13, 12, 12}, {13, 13, 13, 11}}));
    EXPECT_EQ(configurations({50, 2})[1],
              (std::set<SuitWords>{{0xD0, 0xD0, 0xC1, 0xC1}, {0xD0, 0xD0, 0xD0, 0xB2}}));
}

// Sorting the suits of every permutation gives exactly the configurations.
TEST(SuitConfigurations, AreTheSortedPermutations) {
    for (const Structure& structure :
         {Structure{2, 3, 1, 1}, {2, 5}, {7}, {0, 3}, {13, 2}, {40, 5}, {1, 1, 1, 1}}) {
        const auto found = configurations(structure);
        std::vector<Splits> splits;
        uint32_t bound = 1;
        std::vector<uint32_t> bounds;
        for (uint8_t n : structure) {
            splits.emplace_back(n);
            const uint32_t count = splits.back().count();
            splits.back().scale(bound);
            bounds.push_back(bound *= count);
        }
        std::vector<std::set<SuitWords>> sorted(structure.size());
        std::vector<std::set<uint32_t>> numbers(structure.size());
        forEachPermutation(structure, splits,
                           [&](unsigned round, uint32_t permutation, const SuitWords& words) {
                               EXPECT_TRUE(numbers[round].insert(permutation).second);
                               EXPECT_LT(permutation, bounds[round]);
                               SuitWords canonical = words;
                               std::sort(canonical.rbegin(), canonical.rend());
                               sorted[round].insert(canonical);
                           });
        EXPECT_EQ(found, sorted);
    }
}

TEST(Splits, AreNumberedDensely) {
    for (uint32_t n = 0; n <= 52; ++n) {
        const Splits splits(n);
        std::vector<int> seen(splits.count());
        for (uint64_t a = 0; a <= 13; ++a)
            for (uint64_t b = 0; b <= 13; ++b)
                for (uint64_t c = 0; c <= 13; ++c)
                    if (a + b + c <= n && n - a - b - c <= 13)
                        ++seen.at(splits.number(a | b << 16 | c << 32 | (n - a - b - c) << 48));
        EXPECT_EQ(seen, std::vector<int>(splits.count(), 1)) << n;
    }
}

TEST(Splits, CountsByHand) {
    EXPECT_EQ(Splits(0).count(), 1U);
    EXPECT_EQ(Splits(1).count(), 4U);
    EXPECT_EQ(Splits(2).count(), 10U);
    EXPECT_EQ(Splits(5).count(), 56U);
    EXPECT_EQ(Splits(14).count(), 680U - 4U); // without fourteen of one suit
    EXPECT_EQ(Splits(52).count(), 1U);
}

TEST(Splits, ScaleMultipliesTheNumbers) {
    Splits splits(5);
    const uint64_t lanes = 2 | 1ULL << 16 | 2ULL << 48;
    const uint32_t number = splits.number(lanes);
    splits.scale(10);
    EXPECT_NE(number, 0U);
    EXPECT_EQ(splits.number(lanes), 10 * number);
}

} // namespace tamarin::test
