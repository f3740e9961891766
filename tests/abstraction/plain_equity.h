// Equity counted the plain way, from the rules engine's ranking: the oracle for the exact tables.
#pragma once

#include "abstraction/next_card.h"
#include "game/showdown.h"

#include <vector>

namespace tamarin::test {

// Wins of {a, b} on a river board over one opponent, and over ordered pairs of two.
inline Wins plainRiver(const uint8_t* board, uint8_t a, uint8_t b) {
    CardSet onBoard = 0;
    for (int i = 0; i < 5; ++i)
        onBoard |= cardBit(board[i]);
    const CardSet own = cardBit(a) | cardBit(b);
    const int rank = rankCardSet(onBoard | own);
    std::vector<CardSet> beaten;
    for (uint8_t c = 1; c < deckCards; ++c)
        for (uint8_t d = 0; d < c; ++d) {
            const CardSet other = cardBit(c) | cardBit(d);
            if ((other & (onBoard | own)) == 0 && rankCardSet(onBoard | other) < rank)
                beaten.push_back(other);
        }
    Wins wins{static_cast<uint32_t>(beaten.size()), 0};
    for (const CardSet first : beaten)
        for (const CardSet second : beaten)
            wins.overTwo += (first & second) == 0;
    return wins;
}

// The same on a shorter board: over every order in which the missing cards can come.
inline Wins plainWins(std::vector<uint8_t> board, uint8_t a, uint8_t b) {
    if (board.size() == 5)
        return plainRiver(board.data(), a, b);
    Wins sum;
    board.push_back(0);
    for (uint8_t card = 0; card < deckCards; ++card) {
        if (card == a || card == b ||
            std::find(board.begin(), board.end() - 1, card) != board.end() - 1)
            continue;
        board.back() = card;
        const Wins wins = plainWins(board, a, b);
        sum.overOne += wins.overOne;
        sum.overTwo += wins.overTwo;
    }
    return sum;
}

} // namespace tamarin::test
