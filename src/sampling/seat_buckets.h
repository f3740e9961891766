// The bucket of one seat's hand in a round: what sampled training and play ask of a card
// abstraction, a few hands at a time.
#pragma once

#include "clustering/card_abstraction.h"
#include "index/hand_indexer.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

class SeatBuckets {
public:
    virtual ~SeatBuckets() = default;

    // Of a round; 1 to 65,535. All seats have the same.
    virtual uint32_t numBuckets(int round) const = 0;

    // hole: the seat's cards; board: the public cards up to the round. Asked by many threads at
    // once.
    virtual uint16_t bucket(int round, std::span<const uint8_t> hole,
                            std::span<const uint8_t> board) const = 0;
};

// Those of a card abstraction, whose contents must have been checked, and which must outlive the
// object.
class AbstractionSeatBuckets : public SeatBuckets {
public:
    explicit AbstractionSeatBuckets(const CardAbstraction& abstraction);

    uint32_t numBuckets(int round) const override;
    uint16_t bucket(int round, std::span<const uint8_t> hole,
                    std::span<const uint8_t> board) const override;

private:
    const CardAbstraction& abstraction_;
    std::vector<HandIndexer> indexers_; // of each round
};

} // namespace tamarin
