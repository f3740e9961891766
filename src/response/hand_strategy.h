// What a strategy does with every hand, in the terms of the real game: cards, not buckets.
//
// A strategy need not tell all hands apart. What it knows a hand by is its class: the bucket of a
// card abstraction, or one class for all hands of a simple rule. All that measures ask of a
// strategy is in these three functions, whatever kind it is.
#pragma once

#include "tree/abstracted_actions.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tamarin {

using ActionShares = std::array<double, numAbstractedActions>;

class HandStrategy {
public:
    virtual ~HandStrategy() = default;

    // How many classes of hands the seat tells apart in a round, 1 to 65,536.
    virtual size_t numClasses(int seat, int round) const = 0;

    // The class of a seat's hand: two hole cards and then the public cards of a round. Hands that a
    // renaming of the suits turns into each other must be of one class. Asked by many threads at
    // once.
    virtual uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const = 0;

    // The probabilities of fold, call and raise at a decision node of the game's betting tree
    // (CompiledTree); their sum is 1, and what the rules do not allow has 0.
    virtual ActionShares shares(int32_t node, size_t handClass) const = 0;
};

} // namespace tamarin
