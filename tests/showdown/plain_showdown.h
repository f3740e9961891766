// Boards and showdowns one by one: what counts over many of them are compared with.
#pragma once

#include "game/games.h"
#include "game/showdown.h"
#include "response/public_deck.h"

#include <algorithm>
#include <span>
#include <vector>

namespace tamarin::test {

using Cards = std::vector<uint8_t>;

inline bool has(std::span<const uint8_t> cards, uint8_t card) {
    return std::ranges::find(cards, card) != cards.end();
}

// All boards without the cards, each step a set; visit(board).
template <class Visit>
void eachBoard(const Game& game, const PublicDeck& deck, const Cards& without, const Visit& visit) {
    Cards board;
    const auto extend = [&](const auto& self, int round, size_t from, int more) -> void {
        while (more == 0) {
            if (++round == game.numRounds) {
                visit(board);
                return;
            }
            more = game.numBoardCards[round];
            from = 0;
        }
        for (size_t i = from; i < deck.cards().size(); ++i) {
            const uint8_t card = deck.cards()[i];
            if (has(without, card) || has(board, card))
                continue;
            board.push_back(card);
            self(self, round, i + 1, more - 1);
            board.pop_back();
        }
    };
    extend(extend, 0, 0, game.numBoardCards[0]);
}

inline int showdown(const Cards& hand, const Cards& other, const Cards& board) {
    const auto rank = [&](const Cards& cards) {
        CardSet set = 0;
        for (const uint8_t card : cards)
            set |= cardBit(card);
        for (const uint8_t card : board)
            set |= cardBit(card);
        return rankCardSet(set);
    };
    const int difference = rank(hand) - rank(other);
    return difference > 0 ? 1 : difference < 0 ? -1 : 0;
}

} // namespace tamarin::test
