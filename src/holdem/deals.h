// The random deals of hold'em training and valuing.
//
// The cards of deal t of a stream depend on the seed, the stream and t alone. Streams have no deals
// in common, so that no strategy is valued on the deals that it learned from.
#pragma once

#include "holdem/batch.h"
#include "holdem/buckets.h"

#include <cstdint>
#include <span>

namespace tamarin {

enum class DealStream : uint32_t { training, values, response };

void drawDeal(const Game& game, uint64_t seed, DealStream stream, uint64_t t, State* state);

// Deals first .. first + deals.size() - 1 of a stream with their buckets, by so many threads.
void fillBatch(const Game& game, const HoldemBuckets& buckets, uint64_t seed, DealStream stream,
               uint64_t first, int threads, std::span<BatchDeal> deals);

// A hash of the buckets of some fixed deals: other tables give another one. For telling whether
// numbers were trained over the buckets that are there.
uint64_t fingerprintOf(const Game& game, const HoldemBuckets& buckets);

// The number itself, or all cores for 0.
int threadsOf(int threads);

} // namespace tamarin
