// Boards of three to five cards, up to a renaming of the suits: 1,755, 16,432 and 134,459 of them.
//
// Each class of boards has a number (the hand index of its cards as one group) and one
// representative: the board whose four rank masks fall from clubs to spades. Work that depends on
// the board is done for the representative and read back through the renaming that find() gives.
//
// The holdings of a board are numbered by the positions of their two cards among the cards left, in
// ascending order of the cards: holdingNumber(i, j) with i < j.
#pragma once

#include "index/hand_index.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamarin {

// Holdings of two cards out of n.
constexpr size_t numHoldings(size_t n) {
    return n * (n - 1) / 2;
}
// Of the cards at positions low < high; ascending in high first.
constexpr size_t holdingNumber(size_t low, size_t high) {
    return high * (high - 1) / 2 + low;
}

inline constexpr size_t deckCards = 52;

class BoardSet {
public:
    // cards: 3, 4 or 5.
    explicit BoardSet(int cards);
    ~BoardSet();
    BoardSet(const BoardSet&) = delete;
    BoardSet& operator=(const BoardSet&) = delete;

    int cards() const { return cards_; }
    size_t size() const { return boards_.size(); }
    // Cards that are not on the board, and holdings of two of them.
    size_t cardsLeft() const { return deckCards - static_cast<size_t>(cards_); }
    size_t holdings() const { return numHoldings(cardsLeft()); }

    // The representative's cards, ascending.
    const uint8_t* board(size_t number) const { return boards_[number].data(); }
    // How many boards of the deck are in the class; 4 to 24.
    unsigned multiplicity(size_t number) const { return multiplicities_[number]; }

    struct Place {
        size_t number;
        std::array<uint8_t, 4> suit; // each of the board's suits as the representative's
    };
    // The class of concrete cards (any order), and a renaming that makes the representative of
    // them.
    Place find(const uint8_t* cards) const;

private:
    int cards_;
    hand_indexer_t indexer_{};
    std::vector<std::array<uint8_t, 5>> boards_;
    std::vector<uint8_t> multiplicities_;
};

// The cards not among the given ones, ascending; returns how many.
size_t cardsWithout(const uint8_t* cards, int count, uint8_t* left);

} // namespace tamarin
