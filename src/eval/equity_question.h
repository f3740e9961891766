// Equity of hands and ranges against each other and against random opponents, exact or sampled.
//
// A deal gives every player with a range one of its hands, all combinations without a common card
// being equally likely; then the random opponents and the rest of the board get cards from what is
// left.
#pragma once

#include "eval/equity.h"
#include "eval/hand_range.h"
#include "game/showdown.h"
#include "support/result.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace tamarin {

struct EquityQuestion {
    std::vector<HandRange> players; // the one whose equity is asked comes first; 1..10
    CardSet board = 0;              // 0, 3, 4 or 5 cards
    int randomOpponents = 0;        // players in all: 2..10
};

enum class EquityMethod {
    automatic, // exact where that takes five seconds of two cores at most, else sampled
    exact,     // refused for three or more random opponents, and for wide ranges of four players
    sampled,
};

struct EquityOptions {
    EquityMethod method = EquityMethod::automatic;
    uint64_t deals = 1000000; // of a sample; a multiple of sampleBlock is drawn
    uint64_t seed = 1;        // the same seed gives the same counts, whatever the threads
    int threads = 0;          // 0: all cores
    // Called from the calling thread with the work done and the whole, in steps (exact) or in
    // deals (sampled).
    std::function<void(uint64_t, uint64_t)> progress;
};

struct EquityAnswer {
    DealCounts counts;
    bool exact = false;
    // What counting every deal takes, in seconds of one core: an estimate. Infinite where it is not
    // known to be possible, or was not asked for.
    double exactSeconds = std::numeric_limits<double>::infinity();
};

// Errors: a card held twice, hands that cannot be held together, a board of another size, too many
// players, an exact answer that would take too long, an interrupt.
Result<EquityAnswer> answerEquity(const EquityQuestion& question, const EquityOptions& options);

} // namespace tamarin
