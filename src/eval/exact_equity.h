// Exact equity of a hand at any point of a deal.
//
// Boards are completed in every way; random opponents are counted per board and not enumerated
// (opponent_tally.h), and before the flop boards are counted in classes (preflop_equity.h).
#pragma once

#include "eval/equity.h"
#include "game/showdown.h"

#include <cstdint>
#include <span>

namespace tamarin {

// The outcomes for hole (two cards) on board (0, 3, 4 or 5 cards) against opponents (0, 1 or 2)
// random hands. Card bytes 0..51, all different. Microseconds on the river, some 3 ms on the
// flop, some 100 ms before it; no table on disk is needed, nothing is drawn, any thread may call
// it.
DealCounts exactEquity(std::span<const uint8_t> hole, std::span<const uint8_t> board,
                       int opponents);

// The same for hands[0] against the other known hands and randomOpponents random ones. Hands are
// sets of two cards, the board one of 0, 3, 4 or 5, all different.
DealCounts exactEquity(std::span<const CardSet> hands, CardSet board, int randomOpponents);

} // namespace tamarin
