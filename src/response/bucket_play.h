// A strategy over ten buckets a round, as `player` plays it, in the real game's terms.
#pragma once

#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "response/hand_strategy.h"

namespace tamarin {

class BucketPlay : public HandStrategy {
public:
    // The average strategy of the sets, of a game for two. Both must outlive the object; the sets'
    // tree is the one whose nodes are asked for.
    BucketPlay(const HoldemSets& sets, const HoldemBuckets& buckets)
        : sets_(sets), buckets_(buckets) {}

    size_t numClasses(int seat, int round) const override;
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override;
    ActionShares shares(int32_t node, size_t handClass) const override;

private:
    const HoldemSets& sets_;
    const HoldemBuckets& buckets_;
};

} // namespace tamarin
