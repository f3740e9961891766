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
#include <vector>

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

// The ways to split a round's cards over the four suits, numbered densely.
//
// Splits come as a lane word: suit s's count at bit 16 s. One multiplication turns it into a key in
// base most + 1 of the first three counts (the fourth follows), and a small table turns the key
// into the split's number.
class Splits {
public:
    Splits() = default;
    explicit Splits(unsigned cards);

    uint32_t count() const { return count_; }
    // For a word whose counts add up to the round's cards, none above 13.
    uint32_t number(uint64_t lanes) const { return numbers_[lanes * factor_ >> 48U]; }

    // Folds a round's place value into the table: number() times multiplier from now on.
    void scale(uint32_t multiplier);

private:
    uint64_t factor_ = 0;
    uint32_t count_ = 0;
    std::vector<uint32_t> numbers_;
};

// Calls visit(round, permutation, words, lanes) for every permutation of every round that a deck
// can deal: splits[0] to splits[rounds - 1], scaled, give the terms of its number.
void forEachPermutation(
    std::span<const uint8_t> cardsPerRound, std::span<const Splits> splits,
    const std::function<void(unsigned round, uint32_t permutation, const SuitWords& words)>& visit);

} // namespace tamarin
