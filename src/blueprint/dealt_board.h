// One whole board, drawn for a step of training, and the hands that can be held on it.
//
// All rounds are walked over the holdings that the whole board leaves, weakest first. Those that
// the cards still to come take away are missing before these come, but over all boards each is
// missing as often as any other, so what is gathered is right on average.
#pragma once

#include "blueprint/hand_buckets.h"
#include "game/game.h"
#include "response/public_deck.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

struct DealtBoard {
    struct Hand {
        uint8_t low; // the places of its cards in the deck
        uint8_t high;
    };
    // The buckets that some hand is of, ascending, and each hand's place among them.
    struct Buckets {
        std::vector<uint16_t> present;
        std::vector<uint16_t> places;
    };

    std::vector<uint8_t> cards;
    std::vector<Hand> hands;       // weakest first
    std::vector<size_t> groupEnds; // of equal hands, in order
    std::vector<Buckets> rounds;
};

class BoardDealer {
public:
    // All must outlive the object. Two hole cards.
    BoardDealer(const Game& game, const PublicDeck& deck, const HandBuckets& buckets);

    // The board of a step: it depends on these two numbers alone.
    std::vector<uint8_t> draw(uint64_t seed, uint64_t step) const;
    // cards: as dealt, all of the board.
    DealtBoard prepare(std::span<const uint8_t> cards) const;

    size_t numBoardCards() const { return boardCards_.back(); }
    // Hands on every board.
    size_t numHands() const;

private:
    std::vector<int> valuesOf(std::span<const uint8_t> cards,
                              std::span<const HoleCards> holdings) const;

    const PublicDeck& deck_;
    const HandBuckets& buckets_;
    std::vector<size_t> boardCards_; // up to each round
};

} // namespace tamarin
