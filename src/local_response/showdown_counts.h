// One hand against many on many boards, counted in whole numbers: on each board the hand and the
// others are ranked once.
#pragma once

#include "eval/hand_evaluator.h"
#include "response/public_deck.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

inline CardSet setOfCards(std::span<const uint8_t> cards) {
    CardSet set = 0;
    for (const uint8_t card : cards)
        set |= cardBit(card);
    return set;
}

// By place among the other hands.
struct ShowdownCounts {
    std::vector<uint32_t> halfWins; // twice the boards that the hand wins, and those once that tie
    std::vector<uint32_t> boards;   // of those that were tried, without a card of the other hand

    double share(size_t place) const { return halfWins[place] / (2.0 * boards[place]); }
};

// Hands of seven cards, by the tables that stay in the cache.
struct SevenCardRanking {
    using Key = HandKey;
    static Key keyOf(CardSet cards) { return keyOfCards(cards); }
    static CardSet cardsOf(const Key& key) { return key.cards; }
    static Key joined(const Key& a, const Key& b) { return a + b; }
    uint32_t rank(const Key& hand) const { return evaluator.value<7>(hand); }
    const HandEvaluator& evaluator = HandEvaluator::shared();
};

// Hands of any number of cards, as short games have.
struct ShortHandRanking {
    using Key = CardSet;
    static Key keyOf(CardSet cards) { return cards; }
    static CardSet cardsOf(Key key) { return key; }
    static Key joined(Key a, Key b) { return a | b; }
    static uint32_t rank(Key hand) { return static_cast<uint32_t>(rankCardSet(hand)); }
};

// eachBoard(visit): calls visit(cards) for each full board, none of which has a card of the hole
// cards.
template <class Ranking, class EachBoard>
ShowdownCounts countRanked(const PublicDeck& deck, std::span<const uint8_t> hole,
                           std::span<const uint16_t> holdings, const EachBoard& eachBoard) {
    const Ranking ranking;
    const auto own = Ranking::keyOf(setOfCards(hole));
    std::vector<typename Ranking::Key> others;
    for (const uint16_t holding : holdings)
        others.push_back(Ranking::keyOf(setOfCards(deck.cardsOf(holding))));
    ShowdownCounts counts{std::vector<uint32_t>(others.size()),
                          std::vector<uint32_t>(others.size())};
    eachBoard([&](CardSet cards) {
        const auto board = Ranking::keyOf(cards);
        const uint32_t rank = ranking.rank(Ranking::joined(board, own));
        for (size_t i = 0; i < others.size(); ++i) {
            if ((Ranking::cardsOf(others[i]) & cards) != 0)
                continue;
            const uint32_t other = ranking.rank(Ranking::joined(board, others[i]));
            counts.halfWins[i] += (rank > other ? 1U : 0U) + (rank >= other ? 1U : 0U);
            ++counts.boards[i];
        }
    });
    return counts;
}

// boardCards: of a full board.
template <class EachBoard>
ShowdownCounts countShowdowns(const PublicDeck& deck, size_t boardCards,
                              std::span<const uint8_t> hole, std::span<const uint16_t> holdings,
                              const EachBoard& eachBoard) {
    return hole.size() + boardCards == 7
               ? countRanked<SevenCardRanking>(deck, hole, holdings, eachBoard)
               : countRanked<ShortHandRanking>(deck, hole, holdings, eachBoard);
}

} // namespace tamarin
