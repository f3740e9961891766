// The exact equities of every hand of every round, as counts of wins.
//
// Each of the 134,459 river boards that are distinct up to suits is swept once (river_sweep.h);
// turn, flop and pre-flop counts are sums of those (next_card.h). Whole numbers all the way, so the
// result does not depend on the number of threads, and an equity is one division of two exact
// numbers.
//
// About 746 MB: 581 for the river, 148 for the turn.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/large_buffer.h"
#include "abstraction/next_card.h"
#include "abstraction/round_indexers.h"
#include "abstraction/work.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tamarin {

inline constexpr std::array<size_t, 3> boardClasses{1755, 16432, 134459}; // of 3, 4, 5 cards

class EquityCounts {
public:
    // Some seconds of work, reported in river boards.
    static Result<EquityCounts> compute(const Work& work);

    // What compute() takes.
    static size_t memoryBytes();

    // By class of board (BoardSet) and holding (boards.h).
    const RiverWins* river(size_t board) const { return &river_[board * riverHoldings]; }
    const Wins* turn(size_t board) const { return &turn_[board * turnHoldings]; }
    const Wins* flop(size_t board) const { return &flop_[board * flopHoldings]; }

    // Of a starting hand: over every holding of the class, every flop, and every turn and river in
    // order.
    struct PreflopWins {
        uint64_t overOne = 0;
        uint64_t overTwo = 0;
        uint64_t flops = 0; // holdings x flops
    };
    const std::array<PreflopWins, roundSizes[0]>& preflop() const { return preflop_; }

    static constexpr size_t turnHoldings = numHoldings(48);
    static constexpr size_t flopHoldings = numHoldings(49);

private:
    EquityCounts() = default;
    void sumPreflop(const BoardSet& flops);

    LargeBuffer<RiverWins> river_; // [board][holding]
    LargeBuffer<Wins> turn_;
    LargeBuffer<Wins> flop_;
    std::array<PreflopWins, roundSizes[0]> preflop_{};
};

} // namespace tamarin
