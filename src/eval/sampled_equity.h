// Equity by sampled deals, for what cannot be counted: many random opponents, very wide ranges.
//
// Unlike the evaluateHand families this sampler tells ties from losses and draws every deal afresh
// and uniformly. Each block of deals has a generator of its own, seeded by the seed and the block's
// number, so that the counts depend on the seed and the number of deals and not on the threads.
#pragma once

#include "eval/equity.h"
#include "eval/hand_range.h"
#include "support/split_mix.h"

#include <cstdint>
#include <functional>
#include <span>

namespace tamarin {

inline constexpr uint64_t sampleBlock = 1024; // deals

// At least `deals` deals (whole blocks) for ranges[0] against the other ranges and randomOpponents
// random hands on the board; 10 players at most. There must be a choice of one hand of each range
// in which no card is there twice. progress, if given, is called from the calling thread with the
// deals done; the sample ends early, with the deals done so far, when stop, if given, returns true.
DealCounts sampledEquity(std::span<const HandRange> ranges, CardSet board, int randomOpponents,
                         uint64_t deals, uint64_t seed, int threads = 0,
                         const std::function<void(uint64_t)>& progress = {},
                         const std::function<bool()>& stop = {});

} // namespace tamarin
