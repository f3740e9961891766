// Whether a loaded strategy is one of the hold'em game that is to be played.
#pragma once

#include "game/game.h"
#include "strategy/node_store.h"

namespace tamarin {

// With two players, whether the nodes are exactly the game's information sets, each sound; with
// three, whose ten million sequences are not walked at every start, whether those are that a
// thousand random hands come to.
bool holdsHoldemGame(const NodeStore& nodes, const Game& game);

} // namespace tamarin
