#include "blueprint/dealt_board.h"

#include "eval/hand_evaluator.h"
#include "game/showdown.h"
#include "support/split_mix.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <utility>

namespace tamarin {

BoardDealer::BoardDealer(const Game& game, const PublicDeck& deck, const HandBuckets& buckets)
    : deck_(deck), buckets_(buckets) {
    assert(game.numHoleCards == 2);
    size_t cards = 0;
    for (int round = 0; round < game.numRounds; ++round)
        boardCards_.push_back(cards += game.numBoardCards[round]);
}

size_t BoardDealer::numHands() const {
    return numHoldings(deck_.cards().size() - numBoardCards());
}

// The first cards of a shuffle. The start is mixed twice, so that neighbouring steps and seeds have
// nothing in common.
std::vector<uint8_t> BoardDealer::draw(uint64_t seed, uint64_t step) const {
    SplitMix random(mixBits((mixBits(seed + splitMixStep) ^ step) + splitMixStep));
    std::vector<uint8_t> cards = deck_.cards();
    for (size_t i = 0; i < numBoardCards(); ++i)
        std::swap(cards[i], cards[i + random.below(static_cast<uint32_t>(cards.size() - i))]);
    cards.resize(numBoardCards());
    return cards;
}

// Any numbers that compare as the hands do.
std::vector<int> BoardDealer::valuesOf(std::span<const uint8_t> cards,
                                       std::span<const HoleCards> holdings) const {
    std::vector<int> values;
    values.reserve(holdings.size());
    if (cards.size() != 5) {
        CardSet board = 0;
        for (const uint8_t card : cards)
            board |= cardBit(card);
        for (const HoleCards& hole : holdings)
            values.push_back(rankCardSet(board | cardBit(hole[0]) | cardBit(hole[1])));
        return values;
    }
    std::array<uint8_t, 7> hand{};
    std::ranges::copy(cards, hand.begin() + 2);
    const HandEvaluator& evaluator = HandEvaluator::shared();
    for (const HoleCards& hole : holdings) {
        std::ranges::copy(hole, hand.begin());
        values.push_back(static_cast<int>(evaluator.rank7(hand.data())));
    }
    return values;
}

DealtBoard BoardDealer::prepare(std::span<const uint8_t> cards) const {
    assert(cards.size() == numBoardCards());
    DealtBoard made;
    made.cards.assign(cards.begin(), cards.end());
    std::vector<HoleCards> holdings;
    for (size_t h = 0; h < deck_.holdings().size(); ++h) {
        const HoleCards hole = deck_.cardsOf(h);
        if (std::ranges::find_first_of(cards, hole) == cards.end())
            holdings.push_back(hole);
    }
    const std::vector<int> values = valuesOf(cards, holdings);
    std::vector<size_t> order(holdings.size());
    std::iota(order.begin(), order.end(), size_t{0});
    // Equal hands in no order, so that neighbours seldom have a card in common: sweeps add to the
    // sums of both cards, and would wait for the same one again and again.
    std::ranges::sort(order, {}, [&](size_t h) { return std::pair(values[h], mixBits(h)); });

    std::vector<HoleCards> sorted;
    for (size_t i = 0; i < order.size(); ++i) {
        const HoleCards& hole = holdings[order[i]];
        sorted.push_back(hole);
        made.hands.push_back({static_cast<uint8_t>(deck_.placeOf(hole[0])),
                              static_cast<uint8_t>(deck_.placeOf(hole[1]))});
        if (i + 1 == order.size() || values[order[i]] != values[order[i + 1]])
            made.groupEnds.push_back(i + 1);
    }
    constexpr uint16_t none = UINT16_MAX;
    for (size_t round = 0; round < boardCards_.size(); ++round) {
        DealtBoard::Buckets& buckets = made.rounds.emplace_back();
        buckets.places.resize(sorted.size());
        buckets_.fill(static_cast<int>(round), cards.first(boardCards_[round]), sorted,
                      buckets.places.data());
        std::vector<uint16_t> places(buckets_.numBuckets(static_cast<int>(round)), none);
        for (const uint16_t bucket : buckets.places)
            places.at(bucket) = 0;
        for (size_t bucket = 0; bucket < places.size(); ++bucket)
            if (places[bucket] != none) {
                places[bucket] = static_cast<uint16_t>(buckets.present.size());
                buckets.present.push_back(static_cast<uint16_t>(bucket));
            }
        for (uint16_t& each : buckets.places)
            each = places[each];
    }
    return made;
}

} // namespace tamarin
