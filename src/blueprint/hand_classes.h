// The bucket of one hand in a card abstraction, with indexers of its own.
#pragma once

#include "clustering/card_abstraction.h"
#include "index/hand_indexer.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class HandClasses {
public:
    HandClasses();

    // cards: two hole cards, and then the public cards of the round.
    uint16_t of(const CardAbstraction& abstraction, int round,
                std::span<const uint8_t> cards) const;

private:
    std::vector<HandIndexer> indexers_; // of each round
};

} // namespace tamarin
