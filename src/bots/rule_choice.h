// An opponent that plays its cards by a fixed rule.
//
// It looks at its own cards, the board and what is owed, and at nothing else; it never bluffs. That
// beats everybody who does not look at the cards and nobody who thinks.
#pragma once

#include "game/game.h"

namespace tamarin {

// How good a hand looks, from nothing to a hand worth raising again and again.
enum class HandClass {
    weak,   // folds when something is owed
    fair,   // calls a small bet
    good,   // calls any bet, and opens the betting in a round
    strong, // raises as often as it may
};

// One card and no board: the deck's best card is strong, the one below it good, the rest weak.
// Otherwise, before the flop a score of ranks, pair, suit and distance; after it, what the hand
// adds to the board: two pair or more is strong, top pair or an overpair good, another pair or four
// cards to a flush fair.
HandClass classifyHand(const Game* game, const MatchState* state);

// The action of the seat to act, whose hand looks so good.
Action ruleChoiceWith(const Game* game, const State* state, HandClass hand);

// The action for the seat that views the state, which must be the one to act. No-limit raises are
// of the size of the pot.
Action ruleChoice(const Game* game, const MatchState* state);

} // namespace tamarin
