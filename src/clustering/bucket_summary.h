// What the buckets of one round hold: how many hands, how often they are dealt, and how far their
// equities lie apart.
//
// Equities are counted in 65,536ths and summed as whole numbers, so that the answer is the same
// with any number of threads.
#pragma once

#include "abstraction/work.h"
#include "support/result.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

// The squares of all 2,809,475,760 river hands of the deck still have room in 64 bits.
inline constexpr uint64_t equitySteps = 65536;

struct BucketSummary {
    uint64_t hands = 0;     // distinct up to suits
    uint64_t deckHands = 0; // of the deck; only these are weighed below
    uint64_t equity = 0;    // sum, in equitySteps
    uint64_t square = 0;    // sum of their squares

    void add(const BucketSummary& other);
    double meanEquity() const; // 0 where nothing is in it
    double spread() const;     // standard deviation of the equity
};

// How well the buckets of a round tell equities apart. The deck's weight in each.
struct RoundSpread {
    double mean = 0;    // of all hands
    double all = 0;     // standard deviation of all hands
    double within = 0;  // mean of the buckets' standard deviations
    double between = 0; // standard deviation of the buckets' means
};
RoundSpread spreadOf(std::span<const BucketSummary> buckets);

// round: 0..3. table: the bucket of each of the round's hands, all below count. equities: of each
// of them, or none, which leaves the sums at 0. Refuses an equity that is none, naming its hand;
// the error stopped() where the work was stopped. Reported in boards.
Result<std::vector<BucketSummary>> summariseBuckets(int round, std::span<const uint16_t> table,
                                                    size_t count, std::span<const double> equities,
                                                    const Work& work);

// Hands of one bucket in the order of their equities (of their numbers where those are equal, or
// where there are none): the middle one of each of `most` equal parts, or all where there are no
// more. Equities as summariseBuckets found them good.
std::vector<uint64_t> handsSpreadOver(std::span<const uint16_t> table, uint16_t bucket,
                                      std::span<const double> equities, size_t most);

} // namespace tamarin
