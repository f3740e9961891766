#include "tree/deck.h"

#include <algorithm>

namespace tamarin {

std::vector<uint8_t> solverDeck(const Game& game) {
    std::vector<uint8_t> deck;
    for (int suit = 0; suit < game.numSuits; ++suit)
        for (int rank = 0; rank < game.numRanks; ++rank)
            deck.push_back(static_cast<uint8_t>(rank * MAX_SUITS + suit));
    return deck;
}

int boardCardsOf(const Game& game) {
    return sumBoardCards(&game, game.numRounds - 1);
}

int cardsNeeded(const Game& game) {
    return boardCardsOf(game) + game.numHoleCards * game.numPlayers;
}

uint64_t countDeals(const Game& game) {
    const int deckSize = game.numSuits * game.numRanks;
    uint64_t count = 1;
    for (int i = 0; i < cardsNeeded(game); ++i)
        if (__builtin_mul_overflow(count, static_cast<uint64_t>(deckSize - i), &count))
            return UINT64_MAX;
    return count;
}

int numCardFields(const Game& game) {
    return std::min<int>(game.numRanks, 9);
}

void placeCards(const Game& game, const uint8_t* cards, State* state) {
    for (int p = 0; p < game.numPlayers; ++p)
        for (int i = 0; i < game.numHoleCards; ++i)
            state->holeCards[p][i] = *cards++;
    std::copy_n(cards, boardCardsOf(game), state->boardCards);
}

DealWalk::DealWalk(const Game& game)
    : deck_(solverDeck(game)), indices_(static_cast<size_t>(cardsNeeded(game))),
      cards_(indices_.size()) {
    for (size_t i = 0; i < indices_.size(); ++i)
        indices_[i] = static_cast<int>(i);
}

bool DealWalk::next() {
    const int n = static_cast<int>(deck_.size());
    const int k = static_cast<int>(indices_.size());
    if (started_) {
        if (std::next_permutation(cards_.begin(), cards_.end()))
            return true;
        int i = k - 1;
        while (i >= 0 && indices_[static_cast<size_t>(i)] == n - k + i)
            --i;
        if (i < 0)
            return false;
        ++indices_[static_cast<size_t>(i)];
        for (int j = i + 1; j < k; ++j)
            indices_[static_cast<size_t>(j)] = indices_[static_cast<size_t>(j - 1)] + 1;
    }
    started_ = true;
    for (size_t i = 0; i < cards_.size(); ++i)
        cards_[i] = deck_[static_cast<size_t>(indices_[i])];
    std::sort(cards_.begin(), cards_.end());
    return true;
}

} // namespace tamarin
