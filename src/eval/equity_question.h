// Equity of hands and ranges against each other and against random opponents, exact or sampled.
//
// A deal gives every player with a range one of its hands, all combinations without a common card
// being equally likely; then the random opponents and the rest of the board get cards from what is
// left.
#pragma once

#include "eval/equity.h"
#include "eval/hand_range.h"
#include "game/showdown.h"
#include "support/interrupt.h"
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
    exact,     // whatever it takes, where it is possible at all
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
    // Asked now and then, on any thread; once it is true it stays so, and the work ends with the
    // error "interrupted".
    std::function<bool()> stop = interrupted;
};

struct EquityAnswer {
    DealCounts counts;
    bool exact = false;
    // What counting every deal takes, in seconds of one core: an estimate. Infinite where that is
    // impossible or was not asked for, and where four or more players' hands meet in so many ways
    // that the automatic choice did not look for them all.
    double exactSeconds = std::numeric_limits<double>::infinity();
};

// Errors: a board of another size, fewer than two players or more than ten, hands that nobody can
// hold on the board or that cannot be held together, an interrupt. Of exact answers besides: three
// or more random opponents, and, of four or more players, ranges that meet in more than
// mostCombinations (matchups.h).
Result<EquityAnswer> answerEquity(const EquityQuestion& question, const EquityOptions& options);

} // namespace tamarin
