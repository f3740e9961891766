// Which flops a measure looks at: all of them, or a sample from which the whole can be estimated.
#pragma once

#include "response/public_deck.h"
#include "support/result.h"
#include "support/statistics.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

// Flops drawn in pairs from layers of equal weight (stratified sampling). Flops of a layer are
// alike: suits first, then pairs, then ranks; so a sample has something of every kind, and the two
// of a pair tell how much the draw matters. A flop may be drawn more than once.
struct FlopSample {
    // The places in a list of flops, by layer. What the first of all pairs hold is one half of the
    // sample, what the second ones hold the other.
    std::vector<std::array<size_t, 2>> pairs;

    // The flops that occur, each once, ascending.
    std::vector<size_t> distinct() const;
};

// count: flops to draw, an even number. Equal seeds draw equal flops.
FlopSample drawFlops(const std::vector<PublicBoard>& flops, size_t count, uint64_t seed);

// What one number of each flop of a sample, by layer, says of the mean of all flops.
Interval intervalOf(const std::vector<std::array<double, 2>>& pairs);

// The place of the flop that some cards are, up to suits; an error where they are no flop.
Result<size_t> findFlop(const PublicDeck& deck, const std::vector<PublicBoard>& flops,
                        const std::vector<uint8_t>& cards);

} // namespace tamarin
