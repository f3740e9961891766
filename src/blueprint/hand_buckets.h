// The buckets of all holdings of a board: what training over a card abstraction asks of it.
#pragma once

#include "abstraction/holding_index.h"
#include "clustering/card_abstraction.h"
#include "response/public_deck.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class HandBuckets {
public:
    virtual ~HandBuckets() = default;

    // Of a round; 1 to 65,535. Both seats have the same.
    virtual uint32_t numBuckets(int round) const = 0;

    // The bucket of each holding, its lower card first, with the public cards of a round, which no
    // holding has. Asked by many threads at once.
    virtual void fill(int round, std::span<const uint8_t> board,
                      std::span<const HoleCards> holdings, uint16_t* out) const = 0;
};

// Those of a card abstraction, whose contents must have been checked.
class AbstractionBuckets : public HandBuckets {
public:
    explicit AbstractionBuckets(const CardAbstraction& abstraction);

    uint32_t numBuckets(int round) const override;
    void fill(int round, std::span<const uint8_t> board, std::span<const HoleCards> holdings,
              uint16_t* out) const override;

private:
    const CardAbstraction& abstraction_;
    std::vector<uint16_t> startingHands_;  // the bucket of each pair of cards, as in boards.h
    std::vector<HoldingIndexer> indexers_; // of the rounds from the flop on
};

} // namespace tamarin
