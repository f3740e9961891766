// What a hold'em strategy is worth in the game of ten buckets, by sampled deals.
#pragma once

#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "support/result.h"

#include <cstdint>
#include <functional>

namespace tamarin {

// Means over sampled deals and their standard errors, for each seat, in chips a hand.
struct SampledValue {
    double mean[MAX_PLAYERS] = {};
    double error[MAX_PLAYERS] = {};
    uint64_t deals = 0;
};

// How values are sampled.
struct ValueSampling {
    uint64_t deals = 100'000;
    uint64_t responseDeals = 300'000; // that a response learns from
    uint64_t seed = 1;                // the deals are others than those of training with that seed
    int threads = 0;                  // 0: all cores; the numbers do not depend on it
    // Told how many deals are done, on the calling thread; false ends the work with what there is.
    std::function<bool(uint64_t done)> goOn;
};

// The value of the abstract game to each seat when all follow the average strategy of sets: exact
// over betting, sampled over cards. Training never saw these deals.
SampledValue sampleValues(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                          const ValueSampling& sampling);

// What a seat gains by leaving the average strategy while the others keep to it. A response learns
// against it by counterfactual regrets (linear weights) and is valued on other deals, the same for
// both strategies, so that the gain's error is that of a difference. As the response is found by
// sampling it is at most as good as a best response that knows the present bucket and the betting:
// the gain is a lower bound, in expectation, of what that one gains in the abstract game. It says
// nothing of responses that see more than ten buckets.
struct ResponseValue {
    SampledValue value; // to each seat, with the response
    double gain = 0.0;  // the seat's
    double error = 0.0; // of the gain
};
ResponseValue sampleResponse(const Game& game, const HoldemBuckets& buckets, HoldemSets& sets,
                             int seat, const ValueSampling& sampling);

// The same values by playing hands out: betting is sampled, too, so that nodes need only be found,
// not walked (a walk of the three-player tree takes a good part of a second, a hand some
// microseconds). strategy: nodes of the game, wherever they are kept. A node that it
// lacks, or that allows what the game does not, is an error. hands counts in place of
// sampling.deals.
Result<SampledValue> samplePlay(const Game& game, const HoldemBuckets& buckets,
                                const NodeStore& strategy, uint64_t hands,
                                const ValueSampling& sampling);

} // namespace tamarin
