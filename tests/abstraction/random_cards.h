// Random cards for this room's tests, by seed.
#pragma once

#include "abstraction/boards.h"

#include <algorithm>
#include <random>
#include <vector>

namespace tamarin::test {

inline std::vector<uint8_t> randomCards(std::mt19937& random, size_t count) {
    std::vector<uint8_t> cards;
    while (cards.size() < count) {
        const auto card = static_cast<uint8_t>(random() % deckCards);
        if (std::find(cards.begin(), cards.end(), card) == cards.end())
            cards.push_back(card);
    }
    return cards;
}

// The number of a holding among those on a board.
inline size_t holdingOn(const uint8_t* board, int boardCards, uint8_t a, uint8_t b) {
    uint8_t left[deckCards];
    const size_t count = cardsWithout(board, boardCards, left);
    const auto i = static_cast<size_t>(std::find(left, left + count, std::min(a, b)) - left);
    const auto j = static_cast<size_t>(std::find(left, left + count, std::max(a, b)) - left);
    return holdingNumber(i, j);
}

} // namespace tamarin::test
