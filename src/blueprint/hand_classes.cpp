#include "blueprint/hand_classes.h"

#include <array>
#include <cassert>
#include <utility>

namespace tamarin {

// The numbering of round_indexers.h, by indexers that can be moved.
HandClasses::HandClasses() {
    for (const int cards : roundBoardCards) {
        const std::array<uint8_t, 2> groups{2, static_cast<uint8_t>(cards)};
        auto made = HandIndexer::make(std::span(groups).first(cards == 0 ? 1 : 2));
        assert(made);
        indexers_.push_back(std::move(*made));
    }
}

uint16_t HandClasses::of(const CardAbstraction& abstraction, int round,
                         std::span<const uint8_t> cards) const {
    assert(cards.size() == 2 + static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]));
    const HandIndexer& indexer = indexers_[static_cast<size_t>(round)];
    return abstraction.bucket(
        round, static_cast<size_t>(indexer.index(indexer.rounds() - 1, cards.data())));
}

} // namespace tamarin
