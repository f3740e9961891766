// What a strategy does at one decision, hand by hand: before the flop, or on a board.
#pragma once

#include "game/game.h"
#include "report/decision_tree.h"
#include "response/public_deck.h"
#include "support/result.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

struct DecisionView {
    struct Hand {
        HoleCards cards; // the lower one first
        uint16_t known;  // the class by which the strategy knows it here
        double reach;    // the probability with which it comes here, as far as its seat decides
        std::vector<double> shares; // of the edges
    };
    // Hands together, weighed with their reach.
    struct Total {
        double hands = 0;
        double reach = 0;           // of all of them
        std::vector<double> shares; // of the edges; the sum is 1 where the reach is above 0

        void add(const Hand& hand);
        void finish(); // after the last hand
    };

    std::string actions; // before it, "rc/c"
    int seat = 0;
    int round = 0;
    std::vector<uint8_t> board;
    std::vector<DecisionEdge> edges;
    std::vector<std::string> next; // what follows each edge
    std::vector<Hand> hands;       // that the board leaves, in the deck's order

    Total total() const;
};

// board: as many cards as the round of the node has; an error for another number, for a card that
// stands twice and for one that the game's deck lacks. The game has two hole cards.
Result<DecisionView> viewDecision(const Game& game, const DecisionTree& tree,
                                  const DecisionWay& way, const std::vector<uint8_t>& board);

// The shares of the actions, and the grid of the 169 classes of starting hands, each with its
// likeliest action and that action's percentage, all raises taken together; a class that does not
// come here has a point.
std::string decisionText(const DecisionView& view);
// All shares of the classes too, and behind a board those of every hand.
nlohmann::ordered_json decisionJson(const DecisionView& view);

} // namespace tamarin
