// The deck of a game for two, its holdings of two cards, and its boards up to a renaming of the
// suits.
//
// The board comes in steps: the cards of one round as a set, then those of the next. A strategy
// that plays hands alike which a renaming turns into each other makes boards alike, too, that one
// turns into another step by step: one of them is looked at, for as many as it stands for. The
// renamings that leave a board as it is make some of the next cards alike, and so on down.
#pragma once

#include "game/game.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

using HoleCards = std::array<uint8_t, 2>;

// What each suit becomes.
using SuitRenaming = std::array<uint8_t, MAX_SUITS>;

inline uint8_t renamed(uint8_t card, const SuitRenaming& suits) {
    return static_cast<uint8_t>((card & ~3U) | suits[card & 3U]);
}

// Two cards that somebody may hold, by their places in the deck.
struct Holding {
    uint8_t low;
    uint8_t high;
};

struct PublicBoard {
    std::vector<uint8_t> cards;         // as dealt; those of one step ascending
    std::vector<SuitRenaming> symmetry; // that leave every step as it is; the plain one first
    unsigned weight = 1;                // boards that it stands for, of those that its parent has
};

class PublicDeck {
public:
    explicit PublicDeck(const Game& game);

    // Ascending.
    const std::vector<uint8_t>& cards() const { return cards_; }
    // The place of a card in cards().
    size_t placeOf(uint8_t card) const { return places_[card]; }

    // All pairs of cards, ascending by the higher card first.
    const std::vector<Holding>& holdings() const { return holdings_; }
    size_t numberOf(uint8_t card, uint8_t other) const;
    // The hole cards of a holding, lower first.
    HoleCards cardsOf(size_t holding) const; // the lower one first

    // Holdings that a renaming of the suits turns into each other are a class of starting hands.
    // Classes are numbered in the order of their first holdings.
    size_t numHandClasses() const { return handClassSizes_.size(); }
    size_t handClassOf(size_t holding) const { return handClasses_[holding]; }
    unsigned handClassSize(size_t handClass) const { return handClassSizes_[handClass]; }

    // The board before the first card.
    PublicBoard empty() const;
    // The boards that so many cards more make of a board, up to a renaming, in ascending order.
    std::vector<PublicBoard> extend(const PublicBoard& board, unsigned count) const;

    // Puts the mean over all renamings that leave the board as it is in place of each entry of a
    // row by holding: what the boards that were looked at stand for.
    template <class Row>
    void symmetrise(const PublicBoard& board, Row* rows) const;

private:
    std::vector<uint8_t> cards_;
    std::array<uint8_t, MAX_SUITS * MAX_RANKS> places_{};
    std::vector<Holding> holdings_;
    std::vector<SuitRenaming> renamings_;
    std::vector<size_t> handClasses_;
    std::vector<unsigned> handClassSizes_;
};

// The orbit of each holding is visited once, at its first holding. Row: has add(), and
// scale(double).
template <class Row>
void PublicDeck::symmetrise(const PublicBoard& board, Row* rows) const {
    if (board.symmetry.size() == 1)
        return;
    std::vector<size_t> images(board.symmetry.size());
    std::vector<bool> done(holdings_.size());
    for (size_t h = 0; h < holdings_.size(); ++h) {
        if (done[h])
            continue;
        const auto cards = cardsOf(h);
        Row sum{};
        for (size_t i = 0; i < images.size(); ++i) {
            const SuitRenaming& suits = board.symmetry[i];
            images[i] = numberOf(renamed(cards[0], suits), renamed(cards[1], suits));
            sum.add(rows[images[i]]);
        }
        sum.scale(1.0 / static_cast<double>(images.size()));
        for (const size_t image : images) {
            rows[image] = sum;
            done[image] = true;
        }
    }
}

} // namespace tamarin
