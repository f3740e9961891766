#include "index/hand_indexer.h"

#include "index/hand_index_tables.h"
#include "index/multiset.h"

#include <algorithm>
#include <numeric>

namespace tamarin {

namespace {

// Whether some suit of `size` sets and `left` free ranks outgrows the bound when it takes its share
// of these rounds; the other three suits take the rest, up to 13 each.
bool outgrows(std::span<const uint8_t> rounds, uint64_t size, unsigned left, unsigned others) {
    if (size + indexSuits - 1 >= maxGroupIndex)
        return true;
    if (rounds.empty())
        return false;
    for (unsigned count = 0; count <= std::min<unsigned>(rounds[0], left); ++count) {
        const unsigned rest = others + rounds[0] - count;
        if (rest <= (indexSuits - 1) * indexRanks &&
            outgrows(rounds.subspan(1), size * handIndexTables.nCr_ranks[left][count], left - count,
                     rest))
            return true;
    }
    return false;
}

} // namespace

bool outgrowsSuits(std::span<const uint8_t> cardsPerRound) {
    return outgrows(cardsPerRound, 1, indexRanks, 0);
}

std::optional<HandIndexer> HandIndexer::make(std::span<const uint8_t> cardsPerRound) {
    // Before the question about suits, whose answer takes time that grows with the rounds.
    if (cardsPerRound.size() > 4 ||
        std::accumulate(cardsPerRound.begin(), cardsPerRound.end(), 0) > 52 ||
        outgrowsSuits(cardsPerRound))
        return std::nullopt;
    HandIndexer made;
    if (!hand_indexer_init(static_cast<unsigned>(cardsPerRound.size()), cardsPerRound.data(),
                           &made.indexer_))
        return std::nullopt;
    return made;
}

hand_index_t HandIndexer::index(unsigned round, const uint8_t cards[]) const {
    hand_indexer_state_t state;
    hand_indexer_state_init(&indexer_, &state);
    hand_index_t index = 0;
    for (unsigned r = 0; r <= round; ++r)
        index = hand_index_next_round(&indexer_, cards + indexer_.round_start[r], &state);
    return index;
}

std::optional<std::vector<uint8_t>> HandIndexer::unindex(unsigned round, hand_index_t index) const {
    if (round >= rounds())
        return std::nullopt;
    std::vector<uint8_t> cards(cardsThrough(round));
    if (!hand_unindex(&indexer_, round, index, cards.data()))
        return std::nullopt;
    return cards;
}

} // namespace tamarin
