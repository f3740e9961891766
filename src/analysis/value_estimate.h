// What a hand may be worth to one player while it goes on: a guess that takes luck out of results
// (luck_free.h). Any guess will do; the better it is, the less luck is left.
#pragma once

#include "analysis/played_hand.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tamarin {

class ValueEstimate {
public:
    // All that is known but the own hand.
    struct View {
        int seat;        // whose value it is
        HoleCards other; // the opponent's
        std::span<const uint8_t> board;
    };

    virtual ~ValueEstimate() = default;

    // What the estimate wants to work out once for a view, by holding. Asked by many threads.
    virtual std::vector<double> rowOf(const View& view) const = 0;
    // Of a holding, by its number in the deck, that shares no card with the view, at a decision
    // node, in chips. A board that is shorter than that of the node's round stands for the mean
    // over what may come: over all the cards of the next round that neither player holds. The luck
    // of the cards is what the value moves by when they come, so this mean must be exact.
    virtual double at(const View& view, const std::vector<double>& row, int32_t node,
                      size_t holding) const = 0;
    // The mean over all pairs of hands at the first node.
    virtual double meanOfDeals(int seat) const = 0;
};

} // namespace tamarin
