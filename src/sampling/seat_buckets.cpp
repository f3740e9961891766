#include "sampling/seat_buckets.h"

#include "abstraction/round_indexers.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

namespace tamarin {

// The numbering of round_indexers.h, by indexers that can be moved.
AbstractionSeatBuckets::AbstractionSeatBuckets(const CardAbstraction& abstraction)
    : abstraction_(abstraction) {
    for (const int cards : roundBoardCards) {
        const std::array<uint8_t, 2> groups{2, static_cast<uint8_t>(cards)};
        auto made = HandIndexer::make(std::span(groups).first(cards == 0 ? 1 : 2));
        assert(made);
        indexers_.push_back(std::move(*made));
    }
}

uint32_t AbstractionSeatBuckets::numBuckets(int round) const {
    return static_cast<uint32_t>(abstraction_.buckets(round));
}

uint16_t AbstractionSeatBuckets::bucket(int round, std::span<const uint8_t> hole,
                                        std::span<const uint8_t> board) const {
    assert(hole.size() == 2);
    assert(board.size() == static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]));
    std::array<uint8_t, 7> cards{};
    std::ranges::copy(hole, cards.begin());
    std::ranges::copy(board, cards.begin() + 2);
    const HandIndexer& indexer = indexers_[static_cast<size_t>(round)];
    return abstraction_.bucket(
        round, static_cast<size_t>(indexer.index(indexer.rounds() - 1, cards.data())));
}

} // namespace tamarin
