// What `player` does in hold'em where its strategy has no answer: a state outside its tree, such as
// every one after a raise in no-limit.
#pragma once

#include "game/game.h"

#include <cstdint>

namespace tamarin {

// What a seat must put in to call; 0 or less where nothing is owed.
int64_t priceOfCall(const Game& game, const State& state, int seat);

// Checks when nothing is owed; else calls when the hand is worth the price, equity * (pot + price)
// >= price, and folds when it is not. equity: the probability that the seat's hand beats random
// hands of all players still in. The equity tables count a tie as lost, which makes the rule a
// little tight.
ActionType playByPotOdds(const Game& game, const State& state, int seat, double equity);

} // namespace tamarin
