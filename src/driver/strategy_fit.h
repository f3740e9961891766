// Whether a loaded strategy is one of the game that is to be played.
//
// A strategy file does not say which game it is for. That of another game may load and hold no
// state of this one, and a match is too late to find out.
#pragma once

#include "solver/cfr.h"

namespace tamarin {

// Whether the solver holds exactly the information sets of a game small enough to enumerate.
bool holdsSmallGame(const CFR& solver, Game& game);

// Whether the solver holds the states of a hold'em game: with two players it must hold as many as
// the game has, and always those that a thousand random hands reach. Leaves useCardAbstraction and
// useHoldemTables on.
bool holdsHoldemGame(CFR& solver, const Game& game);

} // namespace tamarin
