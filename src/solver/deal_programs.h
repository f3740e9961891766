// One deal's walk, resolved to straight-line steps.
//
// For given cards every visit of the tree is fixed in advance: which information set it touches,
// where its children's values are, whose reach weighs the update. A program lists the visits in
// depth-first order, leaving out what lies below actions that the sets have lost. The forward pass
// over it matches regrets and multiplies reaches, the backward pass adds up values.
//
// Programs of a small game are made once and kept; those of a larger one are made for each deal.
#pragma once

#include "solver/information_sets.h"
#include "tree/payoffs.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tamarin {

// 80 bytes. Arrays are indexed by the set's valid actions, 0..count - 1.
struct Step {
    SetNumbers* numbers;
    const double* ownReach;    // of the player to act, at this node
    const double* parentReach; // of the player who acted before (the root: 1)
    double* reachBelow;        // [0..2] the actor's reach below each action, [3..5] the strategy
    double* value;             // one value a seat
    const double* childValue[numAbstractedActions];
    uint8_t count;
    uint8_t player;
};

class DealPrograms {
public:
    // All arguments must outlive the object; numbers are read and written through the steps.
    DealPrograms(const Game& game, const CompiledTree& tree, Payoffs& payoffs,
                 InformationSets& sets);

    // The program for the deal in the front of deck (positions in solverDeck, cardsNeeded of them).
    // Good until the next call.
    std::span<const Step> program(const uint32_t* positions) {
        if (cache_.empty())
            return {scratchProgram(positions), scratch_.size()};
        size_t index = 0;
        for (size_t i = numCards_; i-- > 0;)
            index = index * deck_.size() + positions[i];
        const Cached& cached = cache_[index];
        if (cached.steps == nullptr) [[unlikely]]
            return keep(index, positions);
        return {cached.steps.get(), cached.count};
    }

    // The root's values after a walk.
    const double* rootValue() const { return values_.data(); }

private:
    struct Cached {
        std::unique_ptr<Step[]> steps;
        size_t count = 0;
    };

    const Step* scratchProgram(const uint32_t* positions);
    std::span<const Step> keep(size_t index, const uint32_t* positions);

    const Game& game_;
    const CompiledTree& tree_;
    Payoffs& payoffs_;
    InformationSets& sets_;
    std::vector<uint8_t> deck_;
    size_t numCards_;
    std::vector<Cached> cache_; // by the positions as digits; empty when programs are not kept
    State state_{};
    std::vector<Step> scratch_;
    std::vector<double> values_;           // [node][stride]
    std::vector<double> reaches_;          // [node][6]
    std::vector<const double*> edgeReach_; // [edge]; null below an action that the set has lost
    std::vector<size_t> bucketStart_;      // [slot]
};

} // namespace tamarin
