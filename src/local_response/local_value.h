// What a local responder wins from a strategy, from sampled deals.
#pragma once

#include "abstraction/work.h"
#include "local_response/local_play.h"
#include "support/statistics.h"

#include <array>
#include <cstdint>

namespace tamarin {

// In chips a hand, 95 %. Every deal is played in both seats with the same cards.
struct LocalValue {
    uint64_t hands = 0; // deals that were played
    std::array<Interval, 2> seats{};
    Interval mean{}; // of both seats: at most the exploitability, on average
};

// The deal of a number, from a seed: cards of the deck, all different.
LocalDeal drawLocalDeal(const PublicDeck& deck, const Game& game, uint64_t seed, uint64_t number);

// Plays the deals from number 0 on, until there are so many or work is stopped: what was played
// until then counts. The numbers depend on the seed and the number of deals alone.
LocalValue sampleLocalValue(const LocalGame& game, uint64_t hands, uint64_t seed, const Work& work);

} // namespace tamarin
