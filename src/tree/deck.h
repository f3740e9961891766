// The solver's deck and its deals.
//
// The solver deals from ranks 0 up and suits 0 up, suit by suit; the rules engine deals a short
// deck from rank 12 down. Keys therefore count the ranks 9..12 as 0..3 (cardField).
#pragma once

#include "game/game.h"

#include <cstdint>
#include <vector>

namespace tamarin {

// All cards, in the order that training starts from.
std::vector<uint8_t> solverDeck(const Game& game);

// Board cards of a whole hand.
int boardCardsOf(const Game& game);
// Cards of a whole deal: everybody's hole cards, then the board.
int cardsNeeded(const Game& game);

// Ordered deals: n! / (n - cards)! for n cards; UINT64_MAX when that is more than fits.
uint64_t countDeals(const Game& game);

// What an information set's key says of a first hole card: its rank, with 9..12 as 0..3.
inline int cardField(uint8_t card) {
    const int rank = card / MAX_SUITS;
    return rank >= 9 ? rank - 9 : rank;
}

// One more than the largest cardField of the deck.
int numCardFields(const Game& game);

// Puts cards into the state in dealing order: every seat's hole cards, then the board.
void placeCards(const Game& game, const uint8_t* cards, State* state);

// Walks all ordered deals in the order in which values are summed: combinations of the deck in
// lexicographic order, and of each, sorted by card, every permutation in lexicographic order.
class DealWalk {
public:
    explicit DealWalk(const Game& game);
    // Moves to the first or the next deal; false at the end.
    bool next();
    // The current deal's cards, cardsNeeded() of them.
    const uint8_t* cards() const { return cards_.data(); }

private:
    std::vector<uint8_t> deck_;
    std::vector<int> indices_;
    std::vector<uint8_t> cards_;
    bool started_ = false;
};

} // namespace tamarin
