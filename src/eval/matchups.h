// The different ways in which players' ranges can meet.
#pragma once

#include "eval/hand_range.h"
#include "support/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tamarin {

// One hand a player, and how many combinations of hands come to the same by exchanging suits (in a
// way that leaves the board as it is) or opponents.
struct Matchup {
    std::vector<CardSet> hands;
    uint64_t times = 0;
};

// Combinations of hands beyond which matchups() gives up.
inline constexpr uint64_t mostCombinations = 4000000;

// All combinations of one hand of each range that share no card with each other or the board, those
// alike counted together, in a fixed order. Empty when the hands cannot be held together. Refused
// when the product of the ranges' sizes is above mostCombinations, and, as soon as they are found,
// when there are more different ones than most; "interrupted" where stop, which is asked now and
// then, says so.
Result<std::vector<Matchup>> matchups(std::span<const HandRange> ranges, CardSet board,
                                      size_t most = SIZE_MAX,
                                      const std::function<bool()>& stop = {});

// Whether there is any such combination.
bool canBeHeld(std::span<const HandRange> ranges, CardSet board);

} // namespace tamarin
