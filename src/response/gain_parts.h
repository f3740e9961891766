// Where a best response makes its gain: in which round, after which first decision, with which
// starting hands. Each of the three adds up to the whole.
//
// By round: let G(r) be the gain of a responder that plays as the strategy does before round r, and
// best from r on. It grows from the last round, G(last), to the first, G(0), which is the whole
// gain; what round r makes is G(r) - G(r + 1): what there is to be won by better play in it, where
// the play before it is the strategy's, and the play after it the best. Counted from the first
// round on, other numbers would come of it.
//
// By first decision: all that comes before it is the strategy's doing, so its deals are the same
// for the best response and for the strategy, and what either wins in them can be compared. They
// are told apart by what the best response does there.
//
// From a sample of flops the parts are those of SampledGains::crossed, chosen before the flop by
// one half and valued on the other: they may fall below 0, and their whole is on average at most
// the true one. Of the rounds after the first they are right on average, since nothing is chosen
// there by the sample.
#pragma once

#include "response/real_value.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tamarin {

// All in chips a hand, with intervals of 95 %, which are 0 wide where all flops were looked at.
struct GainParts {
    // Of both seats together, and of each.
    struct Part {
        Interval both;
        std::array<double, 2> seat;
    };
    struct First {
        int seat;
        int32_t node;
        size_t action;   // of the best response
        double hands;    // how often the seat comes there and does it
        double ownHands; // how often it does by the strategy's own play
        Interval gain;   // of the seat: what such hands give of its gain
    };
    struct Hand {
        size_t handClass; // of starting hands
        double dealt;     // how often a seat has it
        Part gain;        // a hand that it is dealt
    };

    Part whole;
    std::vector<Part> rounds; // the first round first; empty where some flop has no later values
    std::vector<First> first; // by seat, node and action, of every one that the rules allow
    std::vector<Hand> hands;  // by class
};

// Of all flops.
GainParts gainParts(const MeasuredGame& game, const std::vector<PublicBoard>& flops,
                    const ValuesOfFlop& values);
GainParts gainParts(const MeasuredGame& game, const FlopSample& sample, const ValuesOfFlop& values);

} // namespace tamarin
