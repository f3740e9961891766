// An opponent that draws its actions.
#pragma once

#include "game/game.h"
#include "support/rng.h"

namespace tamarin {

// Fold, call or raise, each as likely among those that are legal. The total of a no-limit raise is
// log-uniform between the least and the most allowed, so that small and large raises both occur:
// half the raises lie below the geometric mean of the two. One draw an action, and one more for a
// no-limit raise.
Action randomChoice(const Game* game, const State* state, rng_state_t* generator);

} // namespace tamarin
