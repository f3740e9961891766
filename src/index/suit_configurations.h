// How many cards of each round fall in each suit: the ways this can happen up to the order of the
// suits (configurations), and as dealt (permutations).
//
// One suit's counts are packed into a word, four bits a round, the first round in the highest field
// used: round r of rounds is at bit 4 * (rounds - 1 - r), and rounds not yet dealt are zero. A
// configuration has its four words in falling order.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>

namespace tamarin {

using SuitWords = std::array<uint32_t, 4>;

// Bit at which a round's count starts in a word.
constexpr unsigned wordShift(unsigned rounds, unsigned round) {
    return 4 * (rounds - 1 - round);
}

// Calls visit(round, words, equal) for every configuration of every round; bit i of equal says that
// suits i and i + 1 have equal words. Depth first, rounds in order, each suit's count upwards.
void forEachConfiguration(
    std::span<const uint8_t> cardsPerRound,
    const std::function<void(unsigned round, const SuitWords& words, unsigned equal)>& visit);

// Calls visit(round, permutation, words) for every permutation of every round that a deck can deal.
// permutation is the number that counts as dealt have: composition numbers of the rounds, the first
// round fastest.
void forEachPermutation(
    std::span<const uint8_t> cardsPerRound,
    const std::function<void(unsigned round, uint64_t permutation, const SuitWords& words)>& visit);

// How many ways n cards can be split over four suits: C(n + 3, 3).
constexpr uint64_t compositionCount(uint64_t n) {
    return (n + 1) * (n + 2) * (n + 3) / 6;
}

// C(n + 2, 3) for every number of cards.
inline constexpr auto tetrahedral = [] {
    std::array<uint16_t, 53> table{};
    for (uint32_t n = 0; n < table.size(); ++n)
        table[n] = static_cast<uint16_t>(n * (n + 1) * (n + 2) / 6);
    return table;
}();

// Dense number of a split, below compositionCount(n), from the counts of the first three suits (the
// fourth takes the rest): the combinatorial number of the three partial sums.
constexpr uint32_t compositionIndex(uint32_t first, uint32_t second, uint32_t third) {
    const uint32_t two = first + second;
    return tetrahedral[two + third] + two * (two + 1) / 2 + first;
}

} // namespace tamarin
