#include "index/suit_configurations.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include <gtest/gtest.h>

using namespace tamarin;

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
        std::vector<std::set<SuitWords>> sorted(structure.size());
        std::vector<std::set<uint64_t>> numbers(structure.size());
        std::vector<uint64_t> bounds;
        for (uint8_t n : structure)
            bounds.push_back(compositionCount(n) * (bounds.empty() ? 1 : bounds.back()));
        forEachPermutation(structure,
                           [&](unsigned round, uint64_t permutation, const SuitWords& words) {
                               EXPECT_TRUE(numbers[round].insert(permutation).second);
                               EXPECT_LT(permutation, bounds[round]);
                               SuitWords canonical = words;
                               std::sort(canonical.rbegin(), canonical.rend());
                               sorted[round].insert(canonical);
                           });
        EXPECT_EQ(found, sorted);
    }
}

TEST(SuitConfigurations, CompositionNumbersAreDense) {
    for (uint32_t n = 0; n <= 52; ++n) {
        std::set<uint32_t> numbers;
        for (uint32_t a = 0; a <= n; ++a)
            for (uint32_t b = 0; a + b <= n; ++b)
                for (uint32_t c = 0; a + b + c <= n; ++c)
                    numbers.insert(compositionIndex(a, b, c));
        EXPECT_EQ(numbers.size(), compositionCount(n));
        EXPECT_EQ(*numbers.rbegin(), compositionCount(n) - 1);
    }
}
