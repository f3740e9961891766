// How often every pair of starting hands wins against the other, less how often it loses: exactly,
// over all boards of five cards.
//
// Boards that a renaming of the suits turns into each other are looked at once, 134,459 of
// 2,598,960. On each, all hands are ranked and every pair is compared; boards that stand for
// equally many are summed in 16 bits, so that one instruction serves many pairs.
#pragma once

#include "abstraction/work.h"
#include "response/public_deck.h"

#include <cstdint>
#include <vector>

namespace tamarin {

class PreflopMargins {
public:
    // The deck is full, and outlives the object. Sums are whole numbers: the same with any number
    // of threads. stopped() when work was stopped.
    static Result<PreflopMargins> count(const PublicDeck& deck, const Work& work);

    // Boards won less boards lost, of boards(); 0 for hands that share a card.
    int32_t net(size_t holding, size_t other) const;
    static constexpr int32_t boards() { return 1712304; } // 48 choose 5

private:
    explicit PreflopMargins(const PublicDeck& deck) : deck_(&deck) {}
    void finish(const std::vector<int64_t>& sums);

    const PublicDeck* deck_;
    std::vector<int32_t> net_; // of pairs, the higher number's row
};

} // namespace tamarin
