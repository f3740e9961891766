// A hand indexer that releases itself, and refuses by value every structure that cannot be indexed.
#pragma once

#include "index/hand_index.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tamarin {

// Whether one suit could hold 2^20 - 3 or more rank sets in these rounds: such a structure ends
// hand_indexer_init by assertion. Rounds of 3, 3, 3 and 3 cards do; 2, 3, 1 and 1 do not.
bool outgrowsSuits(std::span<const uint8_t> cardsPerRound);

// Read-only once made; any number of threads may use it at once.
class HandIndexer {
public:
    // Empty when there are no rounds or more than four, more than 52 cards, a suit of too many rank
    // sets, more hands than 64 bits number, or too little memory.
    static std::optional<HandIndexer> make(std::span<const uint8_t> cardsPerRound);

    HandIndexer(HandIndexer&& other) noexcept : indexer_(other.indexer_) { other.indexer_ = {}; }
    HandIndexer& operator=(HandIndexer&&) = delete;
    ~HandIndexer() { hand_indexer_free(&indexer_); }

    const hand_indexer_t* get() const { return &indexer_; }
    unsigned rounds() const { return static_cast<unsigned>(indexer_.rounds); }
    unsigned cardsIn(unsigned round) const { return indexer_.cards_per_round[round]; }
    // Cards of the rounds up to this one.
    unsigned cardsThrough(unsigned round) const {
        return indexer_.round_start[round] + cardsIn(round);
    }
    hand_index_t size(unsigned round) const { return hand_indexer_size(&indexer_, round); }

    // Index in that round of a hand with at least the cards of the rounds up to it.
    hand_index_t index(unsigned round, const uint8_t cards[]) const;
    // A hand with that index; empty when the round has no such index.
    std::optional<std::vector<uint8_t>> unindex(unsigned round, hand_index_t index) const;

private:
    HandIndexer() = default;

    hand_indexer_t indexer_ = {};
};

} // namespace tamarin
