// What a strategy is worth in the real game, from what its flops are worth.
//
// Gains are those of both seats together, in chips a hand: what best responses win more than the
// strategy does against itself, which over both seats is nothing. Half of them is what is published
// as exploitability.
#pragma once

#include "response/flop_sample.h"
#include "response/preflop_response.h"
#include "support/statistics.h"

#include <array>
#include <functional>
#include <vector>

namespace tamarin {

// The values of the flop at a place of the list.
using ValuesOfFlop = std::function<const FlopValues&(size_t place)>;

// Over all flops: exact.
struct RealValue {
    std::array<double, 2> value;                    // [seat], when both play the strategy
    std::array<double, 2> best;                     // [seat], of a best response
    std::array<std::vector<double>, 2> gainOfClass; // [seat][class of starting hands]
    double gains() const { return best[0] - value[0] + best[1] - value[1]; }
};
RealValue realValue(const MeasuredGame& game, const std::vector<PublicBoard>& flops,
                    const ValuesOfFlop& values);

// From a sample of flops, with intervals of 95 %.
struct SampledGains {
    // The strategy's own play before the flop, and the best from it on: right on average, and a
    // lower bound of the whole.
    Interval afterFlop;
    // The best before the flop, too, chosen by one half of the sample and valued on the other: on
    // average at most the whole.
    Interval crossed;
    // Chosen and valued on the same flops: on average at least the whole, since the choice fits
    // these flops.
    Interval biased;
};
SampledGains sampledGains(const MeasuredGame& game, const FlopSample& sample,
                          const ValuesOfFlop& values);

// Of one flop, with the strategy's own play before it.
double gainsAfterFlop(const MeasuredGame& game, const FlopValues& values);

} // namespace tamarin
