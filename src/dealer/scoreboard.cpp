#include "dealer/scoreboard.h"

#include <cassert>
#include <cmath>

namespace tamarin {

namespace {

// Pots are split into exact fractions, so sums carry rounding errors and no others.
constexpr double roundingPerHand = 1e-6;

} // namespace

Scoreboard::Scoreboard(size_t numPlayers, uint64_t unitHands)
    : players_(numPlayers), unitHands_(unitHands) {
    assert(unitHands > 0);
}

void Scoreboard::add(std::span<const double> chips) {
    assert(chips.size() == players_.size());
    double sum = 0;
    for (size_t player = 0; player < players_.size(); ++player) {
        players_[player].pending += chips[player];
        sum += chips[player];
    }
    assert(std::abs(sum) < roundingPerHand);
    if (++pendingHands_ < unitHands_)
        return;
    pendingHands_ = 0;
    ++units_;
    double total = 0;
    for (Score& score : players_) {
        score.chips += score.pending;
        score.perHand.add(score.pending / static_cast<double>(unitHands_));
        score.pending = 0;
        total += score.chips;
    }
    assert(std::abs(total) < roundingPerHand * static_cast<double>(hands()));
}

} // namespace tamarin
