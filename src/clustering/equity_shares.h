// Hands cut by their pot equity alone into shares of equally many hands of the deck: the percentile
// abstraction, for comparison.
#pragma once

#include "abstraction/boards.h"
#include "clustering/river_equities.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

// hands: how many hands of the deck have each equity, by equity. Hands of one equity stay together:
// they go where the middle of them lies. Returns each bucket's limit: the equities of bucket b are
// those below limit b that are in no bucket before it.
std::vector<uint64_t> shareLimits(std::span<const uint64_t> hands, uint32_t buckets);

// The bucket of an equity. Above all limits it is the last one.
uint32_t shareOf(const std::vector<uint64_t>& limits, uint64_t equity);

// The pot equity of every holding of a board of three or four cards, in halves, summed over the
// rivers that it can meet: at most 1,081 or 46 times riverPotMost.
void potSums(const BoardSet& rivers, const RiverTable<uint16_t>& pots, const uint8_t* board,
             int cards, uint32_t* sums);

} // namespace tamarin
