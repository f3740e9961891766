#include "blueprint/hand_buckets.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

AbstractionBuckets::AbstractionBuckets(const CardAbstraction& abstraction)
    : abstraction_(abstraction), startingHands_(numHoldings(deckCards)) {
    const RoundIndexer preflop(0);
    for (uint8_t high = 1; high < deckCards; ++high)
        for (uint8_t low = 0; low < high; ++low) {
            const HoleCards cards{low, high};
            startingHands_[holdingNumber(low, high)] = abstraction.bucket(
                0, static_cast<size_t>(hand_index_last(preflop.get(), cards.data())));
        }
    for (int round = 1; round < holdemRounds; ++round)
        indexers_.emplace_back(round, *RoundIndexer(round).get());
}

uint32_t AbstractionBuckets::numBuckets(int round) const {
    return static_cast<uint32_t>(abstraction_.buckets(round));
}

void AbstractionBuckets::fill(int round, std::span<const uint8_t> board,
                              std::span<const HoleCards> holdings, uint16_t* out) const {
    assert(board.size() == static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]));
    if (round == 0) {
        for (size_t h = 0; h < holdings.size(); ++h)
            out[h] = startingHands_[holdingNumber(holdings[h][0], holdings[h][1])];
        return;
    }
    std::array<uint32_t, numHoldings(deckCards)> indices; // of all cards that this board leaves
    indexers_[static_cast<size_t>(round) - 1].indices(board.data(), indices.data());
    std::array<uint8_t, deckCards> left{};
    std::array<uint8_t, deckCards> place{};
    const size_t count = cardsWithout(board.data(), static_cast<int>(board.size()), left.data());
    for (size_t i = 0; i < count; ++i)
        place[left[i]] = static_cast<uint8_t>(i);
    for (size_t h = 0; h < holdings.size(); ++h)
        out[h] = abstraction_.bucket(
            round, indices[holdingNumber(place[holdings[h][0]], place[holdings[h][1]])]);
}

} // namespace tamarin
