// Whether a loaded strategy is one of the game that is to be played.
//
// A strategy file names no game. One of another game can read well and know nothing of this one,
// which would be noticed in the first hand and never mended.
#pragma once

#include "solver/cfr.h"

namespace tamarin {

// Whether the solver holds exactly the information sets of a game small enough to enumerate.
bool holdsSmallGame(const CFR& solver, Game& game);

// Whether the solver holds the states of a hold'em game: with two players as many as there are, and
// always those that a thousand random hands come to. Leaves useCardAbstraction and useHoldemTables
// on.
bool holdsHoldemGame(CFR& solver, const Game& game);

} // namespace tamarin
