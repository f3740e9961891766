// From the counts of a round to those of the round before: sums over the card still to come.
//
// Every next card leaves equally many deals to a holding, so the counts of a shorter board are the
// plain sums of those of the boards that it grows into, and a mean of equities needs no weights.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/river_sweep.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tamarin {

// Wins of a holding, summed over the cards to come in order of dealing: turn counts over 46 rivers,
// flop counts over 47 turns of 46 rivers. Both fit 32 bits.
struct Wins {
    uint32_t overOne = 0;
    uint32_t overTwo = 0;
    bool operator==(const Wins&) const = default;
};
inline constexpr uint32_t turnRivers = 46;
inline constexpr uint32_t flopRivers = 47 * 46; // turn and river in order
static_assert(uint64_t{flopRivers} * riverDeals3 < uint64_t{1} << 32U);

// sums receives one entry for each holding of the board, which has one card less than next's
// boards. row(number) is the counts of next's board of that number, numbered as in boards.h.
void sumNextCards(const BoardSet& next, const uint8_t* board,
                  const std::function<const RiverWins*(size_t)>& row, Wins* sums);
void sumNextCards(const BoardSet& next, const uint8_t* board,
                  const std::function<const Wins*(size_t)>& row, Wins* sums);

} // namespace tamarin
