// Exact pre-flop equity by classes of boards.
//
// Two hole cards leave 2,118,760 boards. Suits matter only where three or more board cards share
// one; all other boards rank by their ranks alone. So boards are counted in classes:
//
//   - Ranks alone: 6,175 multisets of five ranks. Each stands for the boards of these ranks that
//     have no suit three times.
//   - Ranks and one flush suit: the ranks of the board's cards in that suit (three to five) and the
//     ranks of the other cards, at most 36,608 classes a suit. Of suits that look alike to the
//     known hands, one is walked for all.
//
// On a board of a class, random opponents are counted by rank and by whether a card is of the flush
// suit, 91 pairs of ranks in place of 990 hands; opponent_tally.h does the rest.
#pragma once

#include "eval/equity.h"
#include "game/showdown.h"

#include <span>

namespace tamarin {

// The outcomes for hands[0] over every board against the other known hands and randomOpponents (0,
// 1 or 2) random ones. Hands are sets of two cards, all different; 1 to 10 hands. Some
// milliseconds for known hands alone, some 100 with random opponents.
DealCounts exactPreflopEquity(std::span<const CardSet> hands, int randomOpponents);

} // namespace tamarin
