// One deal of sampled training: all cards of a hand, drawn by a seed and a number, and what the
// seats know of them.
#pragma once

#include "game/game.h"
#include "sampling/seat_buckets.h"
#include "support/batched_draws.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tamarin {

struct SampledDeal {
    std::array<std::array<uint16_t, MAX_PLAYERS>, MAX_ROUNDS> buckets{}; // [round][seat]
    uint32_t outcome = 0;                                                // of the showdown
};

class DealSampler {
public:
    // Both must outlive the object.
    DealSampler(const Game& game, const SeatBuckets& buckets);

    // Fills the cards of a state: every deal is as likely as any other, and the one of a number
    // depends on the seed and the number alone. Any thread.
    void draw(uint64_t seed, uint64_t number, State& state) const;
    // Fills the buckets, from the state's cards. Any thread.
    void lookUp(const State& state, SampledDeal& deal) const;

private:
    const Game& game_;
    const SeatBuckets& buckets_;
    std::vector<uint8_t> deck_;
    BatchedDraws draws_;
};

} // namespace tamarin
