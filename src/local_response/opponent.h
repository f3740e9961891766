// The known strategy that a local response plays against, in the terms of the rules: states with
// bets of any size, and cards.
//
// A strategy of the game's betting tree (hand_strategy.h) answers at the nodes of that tree. In
// no-limit a responder's bets lead out of it; what is asked here must be answered everywhere.
#pragma once

#include "game/game.h"
#include "response/public_deck.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

// What an opponent knows the hands of a board by; in the order of some list of holdings. It fills
// what it needs.
struct SeenHands {
    std::vector<uint16_t> classes;
    std::vector<double> equities;
};

// What an opponent may do at a state.
struct RangeAnswer {
    std::vector<Action> actions; // which the rules allow
    // The probability of each action for each hand, [action][place in the list of holdings]; over
    // the actions their sum is 1.
    std::vector<std::vector<double>> shares;
};

class Opponent {
public:
    virtual ~Opponent() = default;

    // Looks at the seat's holdings (numbers in the deck) on the board of a round. None of them may
    // have a card of the board. Asked by many threads at once.
    virtual void look(const PublicDeck& deck, int seat, int round, std::span<const uint8_t> board,
                      std::span<const uint16_t> holdings, SeenHands& seen) const = 0;

    // What the seat to act does at a state, with the hands that it has looked at in the state's
    // round. Asked by many threads at once.
    virtual void answer(const State& state, size_t hands, const SeenHands& seen,
                        RangeAnswer& answer) const = 0;
};

} // namespace tamarin
