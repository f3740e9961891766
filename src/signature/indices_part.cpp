// Indices: some thousand of every round to hands and back, and random hands.
#include "index/hand_indexer.h"
#include "signature/parts.h"
#include "support/rng.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <numeric>
#include <vector>

namespace tamarin {

namespace {

constexpr uint64_t indicesOfRound = 2'000;
constexpr size_t indexedHands = 2'000;

void addRound(Fnv1a& hash, const HandIndexer& indexer, unsigned round) {
    const hand_index_t size = indexer.size(round);
    hash.add(size);
    const hand_index_t step = std::max<hand_index_t>(size / indicesOfRound, 1);
    for (hand_index_t index = 0; index < size; index += step) {
        const auto cards = indexer.unindex(round, index);
        assert(cards);
        for (const uint8_t card : *cards)
            hash.add(card);
        hash.add(indexer.index(round, cards->data()));
    }
}

void addHands(Fnv1a& hash, const HandIndexer& indexer, rng_state_t& generator) {
    std::array<uint8_t, 52> deck;
    std::iota(deck.begin(), deck.end(), uint8_t{0});
    const unsigned last = indexer.rounds() - 1;
    for (size_t h = 0; h < indexedHands; ++h) {
        for (size_t i = 0; i < indexer.cardsThrough(last); ++i)
            std::swap(deck[i], deck[i + genrand_int32(&generator) % (deck.size() - i)]);
        hand_index_t indices[4] = {};
        hash.add(hand_index_all(indexer.get(), deck.data(), indices));
        for (const hand_index_t index : indices)
            hash.add(index);
        hash.add(hand_index_last(indexer.get(), deck.data()));
        hand_indexer_state_t state;
        hand_indexer_state_init(indexer.get(), &state);
        for (unsigned round = 0; round <= last; ++round)
            hash.add(hand_index_next_round(
                indexer.get(), deck.data() + indexer.get()->round_start[round], &state));
    }
}

} // namespace

void addIndices(Fnv1a& hash) {
    // The tables' four, boards of three to five cards, whole deals, and what Kuhn poker would need.
    const std::vector<std::vector<uint8_t>> structures{
        {2}, {2, 3}, {2, 4}, {2, 5}, {3}, {4}, {5}, {2, 3, 1, 1}, {1}, {3, 2, 2}};
    rng_state_t generator;
    init_genrand(&generator, 11);
    for (const std::vector<uint8_t>& cardsPerRound : structures) {
        const auto indexer = HandIndexer::make(cardsPerRound);
        assert(indexer);
        for (unsigned round = 0; round < indexer->rounds(); ++round)
            addRound(hash, *indexer, round);
        addHands(hash, *indexer, generator);
    }
}

} // namespace tamarin
