// Opponents that do not look at their cards.
#pragma once

#include "game/game.h"

namespace tamarin {

// A check or a call.
Action alwaysCall();

// A raise when the rules allow one, else a call. A no-limit raise is the least one allowed: the
// largest would make every hand a coin toss for the stacks.
Action alwaysRaise(const Game* game, const State* state);

} // namespace tamarin
