// The hands that can be held on one board, and what the walks of its betting ask of them.
#pragma once

#include "response/hand_strategy.h"
#include "response/public_deck.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tamarin {

struct BoardHands {
    struct Hand {
        uint16_t number; // of the holding, in the deck's numbering
        uint8_t low;     // the places of its cards in the deck
        uint8_t high;
    };
    std::vector<Hand> hands;        // in the last round weakest first
    std::vector<uint16_t> groupEnd; // where the equals of each hand end; last round
    // The classes that some hand of the board is of, by seat; and each hand's place among them.
    std::array<std::vector<uint16_t>, 2> present;
    std::array<std::vector<uint16_t>, 2> classes;

    size_t size() const { return hands.size(); }
};

// ranked: whether to sort by what wins a showdown.
BoardHands handsOnBoard(const PublicDeck& deck, const HandStrategy& strategy, int round,
                        const PublicBoard& board, bool ranked);

} // namespace tamarin
