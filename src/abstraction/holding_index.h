// The hand indices of all holdings on one board at once.
//
// For a fixed board only the suits of the hole cards change: of the ten choices of suits each has
// one configuration, whose index is linear in the suit indices of the suits that hold the hole
// cards (or a multiset of two where both suits hold as many board cards). So the indexer's work is
// done ten times a board instead of 1,081 times; about 1 ns a holding.
#pragma once

#include "abstraction/boards.h"
#include "abstraction/round_indexers.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

struct BoardSuit; // what one suit of the board contributes; in holding_index.cpp

class HoldingIndexer {
public:
    // round: 1, 2 or 3. The indexer is the round's (round_indexers.h); it may go afterwards.
    HoldingIndexer(int round, const hand_indexer_t& indexer);

    // out receives hand_index_last of {holding, board} for every holding, numbered as in boards.h.
    // board: different cards, in any order.
    void indices(const uint8_t* board, uint32_t* out) const;

private:
    struct Configuration {
        std::array<uint32_t, 4> words; // falling
        std::array<uint32_t, 4> suitSize;
        uint64_t offset;
    };
    const Configuration& find(std::array<uint32_t, 4> words) const;
    // The index of a holding with a card in suit s and one in t is base + factor x digit, summed
    // over the digits of s and t.
    struct Digits {
        uint64_t base;
        std::array<uint64_t, 4> factor; // of the digit that each suit is in
    };
    Digits digits(const std::array<BoardSuit, 4>& suits, size_t s, size_t t) const;

    int boardCards_;
    uint64_t size_;                             // indices of the round
    std::vector<Configuration> configurations_; // in ascending order of their words
};

} // namespace tamarin
