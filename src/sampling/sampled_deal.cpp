#include "sampling/sampled_deal.h"

#include "support/split_mix.h"
#include "tree/deck.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <utility>

namespace tamarin {

DealSampler::DealSampler(const Game& game, const SeatBuckets& buckets)
    : game_(game), buckets_(buckets) {
    for (int rank = MAX_RANKS - game.numRanks; rank < MAX_RANKS; ++rank)
        for (int suit = MAX_SUITS - game.numSuits; suit < MAX_SUITS; ++suit)
            deck_.push_back(static_cast<uint8_t>(rank * MAX_SUITS + suit));
    const auto cards = static_cast<uint32_t>(cardsNeeded(game));
    assert(cards <= deck_.size());
    for (uint32_t i = 0; i < cards; ++i)
        draws_.add(static_cast<uint32_t>(deck_.size()) - i);
}

void DealSampler::draw(uint64_t seed, uint64_t number, State& state) const {
    SplitMix random(mixBits((mixBits(seed + splitMixStep) ^ number) + splitMixStep));
    std::array<uint32_t, BatchedDraws::most> drawn;
    draws_.draw(random, drawn.data());
    std::array<uint8_t, MAX_SUITS * MAX_RANKS> cards;
    std::ranges::copy(deck_, cards.begin());
    for (size_t i = 0; i < draws_.size(); ++i)
        std::swap(cards[i], cards[i + drawn[i]]);
    placeCards(game_, cards.data(), &state);
}

void DealSampler::lookUp(const State& state, SampledDeal& deal) const {
    for (int round = 0; round < game_.numRounds; ++round) {
        const std::span<const uint8_t> board(state.boardCards, sumBoardCards(&game_, round));
        for (size_t seat = 0; seat < game_.numPlayers; ++seat) {
            const std::span<const uint8_t> hole(state.holeCards[seat], game_.numHoleCards);
            deal.buckets[static_cast<size_t>(round)][seat] = buckets_.bucket(round, hole, board);
        }
    }
}

} // namespace tamarin
