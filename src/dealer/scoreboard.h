// Who won how much, over hands or over duplicate blocks.
#pragma once

#include "dealer/latency_histogram.h"
#include "support/statistics.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

// Counts whole units of unitHands hands each: single hands, or blocks in which every player has
// played the same cards from every seat. A block's luck is one draw, so the interval is taken over
// units; hands of a unit that never became whole count for nothing.
class Scoreboard {
public:
    Scoreboard(size_t numPlayers, uint64_t unitHands);

    // What every player won in one finished hand, in chips; the sum must be zero.
    void add(std::span<const double> chips);

    uint64_t hands() const { return units_ * unitHands_; } // in whole units
    uint64_t units() const { return units_; }
    uint64_t unitHands() const { return unitHands_; }
    uint64_t handsLeftOver() const { return pendingHands_; }

    double chips(size_t player) const { return players_[player].chips; }
    // Chips a hand, with the interval.
    Interval perHand(size_t player) const { return interval95(players_[player].perHand); }

private:
    struct Score {
        double chips = 0;
        double pending = 0;     // of the unit under way
        RunningMoments perHand; // one number a unit
    };
    std::vector<Score> players_;
    uint64_t unitHands_;
    uint64_t units_ = 0;
    uint64_t pendingHands_ = 0;
};

} // namespace tamarin
