// The average strategy of a training that goes on, as the measures take it.
#pragma once

#include "blueprint/blueprint_sets.h"
#include "blueprint/hand_classes.h"
#include "response/hand_strategy.h"

namespace tamarin {

class SetsPlay : public HandStrategy {
public:
    // Of the buckets of the abstraction; both must outlive the object, and rest while it is asked.
    SetsPlay(const BlueprintSets& sets, const CardAbstraction& abstraction)
        : sets_(sets), abstraction_(abstraction) {}

    size_t numClasses(int, int round) const override { return sets_.numBuckets(round); }
    uint16_t classOf(int, int round, std::span<const uint8_t> cards) const override {
        return classes_.of(abstraction_, round, cards);
    }
    ActionShares shares(int32_t node, size_t handClass) const override {
        return sets_.average(node, handClass);
    }

private:
    const BlueprintSets& sets_;
    const CardAbstraction& abstraction_;
    HandClasses classes_;
};

} // namespace tamarin
