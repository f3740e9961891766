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
#include <cstdint>
#include <vector>

namespace tamarin {

class HoldingIndexer {
public:
    // round: 1, 2 or 3. The indexer is the round's (round_indexers.h) and must outlive the object.
    HoldingIndexer(int round, const hand_indexer_t& indexer);

    // indices receives hand_index_last of {holding, board} for every holding, numbered as in
    // boards.h. board: ascending.
    void indices(const uint8_t* board, uint32_t* out) const;

private:
    struct Configuration {
        std::array<uint32_t, 4> words; // falling
        std::array<uint32_t, 4> suitSize;
        uint64_t offset;
    };
    const Configuration& find(std::array<uint32_t, 4> words) const;

    int boardCards_;
    std::vector<Configuration> configurations_; // in ascending order of their words
};

} // namespace tamarin
